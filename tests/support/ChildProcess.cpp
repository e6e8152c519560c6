#include "ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <exception>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <thread>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace velarion::testing {

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           const Environment& changes) {
    // Everything the child needs is built before the fork: after it, only
    // async-signal-safe calls.
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        bool changed = false;
        for (const auto& change : changes) changed = changed || change.first == name;
        if (!changed) variables.push_back(text);
    }
    for (const auto& [name, value] : changes)
        if (value) variables.push_back(name + "=" + *value);
    std::vector<char*> argv, envp;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    for (std::string& variable : variables) envp.push_back(variable.data());
    envp.push_back(nullptr);
    start([&] {
        ::execve(program.c_str(), argv.data(), envp.data());
        ::_exit(127);
    });
}

ChildProcess::ChildProcess(const std::function<int(int output)>& body) {
    start([&] {
        int result = 1;
        try {
            result = body(STDOUT_FILENO);
        } catch (...) {
        }
        ::_exit(result);
    });
}

void ChildProcess::start(const std::function<void()>& inChild) {
    // A child that died shows as a failed write, not as a signal.
    std::signal(SIGPIPE, SIG_IGN);
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    if (::pipe2(out, O_CLOEXEC) != 0) {
        ::close(in[0]);
        ::close(in[1]);
        throw std::runtime_error("pipe failed");
    }
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) ::_exit(126);
        ::dup2(in[0], STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        inChild();
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    input_ = in[1];
    output_ = out[0];
    if (pid_ < 0) {
        closeInput();
        ::close(output_);
        throw std::runtime_error("fork failed");
    }
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    closeInput();
    if (output_ >= 0) ::close(output_);
}

void ChildProcess::writeLine(const std::string& line) {
    const std::string bytes = line + "\n";
    if (::write(input_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("write failed");
}

void ChildProcess::closeInput() {
    if (input_ >= 0) ::close(input_);
    input_ = -1;
}

std::optional<std::string> readLineFrom(int fd, std::string& buffer, double timeoutSeconds) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration<double>(timeoutSeconds);
    for (;;) {
        if (const auto end = buffer.find('\n'); end != std::string::npos) {
            std::string line = buffer.substr(0, end);
            buffer.erase(0, end + 1);
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd ready{fd, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&ready, 1, static_cast<int>(left.count())) <= 0) return std::nullopt;
        char chunk[65536];
        const ssize_t count = ::read(fd, chunk, sizeof chunk);
        if (count <= 0) return std::nullopt;
        buffer.append(chunk, static_cast<std::size_t>(count));
    }
}

std::optional<std::string> ChildProcess::readLine(double timeoutSeconds) {
    std::optional<std::string> line = readLineFrom(output_, pending_, timeoutSeconds);
    if (line) lines_.push_back(*line);
    return line;
}

std::string ChildProcess::transcript() const {
    std::string all;
    for (const std::string& line : lines_) all += line + "\n";
    return all;
}

void ChildProcess::signal(int number) {
    if (pid_ > 0) ::kill(pid_, number);
}

int ChildProcess::wait() {
    closeInput();
    // To the end of its output, so that its last words are in `lines()`.
    while (readLine(10)) {
    }
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string runInForkedChild(const std::function<std::string()>& body) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) return "(no pipe)";
    const pid_t child = ::fork();
    if (child < 0) return "(no fork)";
    if (child == 0) {
        ::close(pipeEnds[0]);
        std::string text;
        try {
            text = body();
        } catch (const std::exception& error) {
            text = std::string("(threw) ") + error.what();
        }
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t wrote = ::write(pipeEnds[1], text.data() + sent, text.size() - sent);
            if (wrote <= 0) break;
            sent += static_cast<std::size_t>(wrote);
        }
        ::_exit(0);
    }
    ::close(pipeEnds[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = ::read(pipeEnds[0], buffer, sizeof buffer)) != 0;) {
        if (got < 0) {
            if (errno == EINTR) continue;
            break;
        }
        text.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(pipeEnds[0]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return "(child died) " + text;
    return text;
}

void limitFileSizeBytes(long bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

ScopedFileSizeLimit::ScopedFileSizeLimit(long bytes) : savedHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &saved_);
    const rlimit limit{static_cast<rlim_t>(bytes), saved_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

ScopedFileSizeLimit::~ScopedFileSizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &saved_);
    std::signal(SIGXFSZ, savedHandler_);
}

pid_t spawnBeside(const std::vector<std::string>& command, const std::filesystem::path& output, int passedFd) {
    std::vector<std::string> words{"setpriv", "--pdeathsig", "KILL", "--"};
    words.insert(words.end(), command.begin(), command.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (passedFd >= 0) posix_spawn_file_actions_adddup2(&actions, passedFd, 3);
    pid_t process = -1;
    if (::posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ) != 0) process = -1;
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

int runToEnd(const std::vector<std::string>& command, const std::filesystem::path& output) {
    const pid_t process = spawnBeside(command, output);
    int status = 0;
    if (process <= 0 || ::waitpid(process, &status, 0) != process) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void endProcess(pid_t process) {
    if (process <= 0) return;
    ::kill(process, SIGTERM);
    for (int i = 0; i < 100; ++i) {
        if (::waitpid(process, nullptr, WNOHANG) == process) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
}

} // namespace velarion::testing
