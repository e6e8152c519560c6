#include "LiveAgentKit/DetachedLaunch.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern char** environ;

namespace velarion {

namespace {

// What the children send back through the pipe: the program's process id
// from the middle child, or the error of the step that failed.
struct Report {
    pid_t pid = 0;
    int error = 0;
};

// Async-signal-safe: called between fork and exec.
[[noreturn]] void reportAndExit(int pipe, Report report, int status) {
    if (::write(pipe, &report, sizeof report) < 0) {
        // Nothing more to do: the parent then sees no process id.
    }
    ::_exit(status);
}

[[noreturn]] void throwError(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

// Above the standard streams, so that putting /dev/null on 0, 1 and 2 in the
// child can't land on one of these.
UniqueFd aboveStandardStreams(int fd, const char* what) {
    if (fd < 0)
        throwError(errno, what);
    UniqueFd original(fd);
    UniqueFd moved(::fcntl(original.get(), F_DUPFD_CLOEXEC, 3));
    if (!moved.isOpen())
        throwError(errno, what);
    return moved;
}

// Everything the program's child needs, made before fork, since the child
// may not allocate.
struct ExecPlan {
    std::vector<char*> arguments;
    std::vector<char*> environment;
    sigset_t noSignals{};
    struct sigaction byDefault {};
};

[[noreturn]] void runProgram(const std::string& program, ExecPlan& plan, int devNull, int pipe) {
    for (int stream = 0; stream < 3; ++stream) {
        if (::dup2(devNull, stream) < 0)
            reportAndExit(pipe, {0, errno}, 127);
    }
    // Ignored signals and a blocked mask survive exec; the program should
    // start as from a login shell, not with the bridge's settings.
    ::sigprocmask(SIG_SETMASK, &plan.noSignals, nullptr);
    for (int signal = 1; signal < NSIG; ++signal)
        ::sigaction(signal, &plan.byDefault, nullptr);
    // The bridge's descriptors (the MCP pipes, the socket) are none of its
    // business; the pipe closes at exec, which tells the parent it worked.
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    ::execve(program.c_str(), plan.arguments.data(), plan.environment.data());
    reportAndExit(pipe, {0, errno}, 127);
}

} // namespace

bool DetachedProcess::hasEnded() const {
    if (endedAlready_)
        return true;
    if (!pidFd_.isOpen())
        return false;
    pollfd polled{pidFd_.get(), POLLIN, 0};
    return ::poll(&polled, 1, 0) > 0;
}

DetachedProcess launchDetached(const std::string& program,
                               const std::vector<std::string>& environment) {
    std::vector<std::string> environmentCopy = environment;
    std::string name = program;
    ExecPlan plan;
    plan.arguments = {name.data(), nullptr};
    for (std::string& entry : environmentCopy)
        plan.environment.push_back(entry.data());
    plan.environment.push_back(nullptr);
    sigemptyset(&plan.noSignals);
    plan.byDefault.sa_handler = SIG_DFL;
    sigemptyset(&plan.byDefault.sa_mask);

    const UniqueFd devNull =
        aboveStandardStreams(::open("/dev/null", O_RDWR | O_CLOEXEC), "/dev/null");
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throwError(errno, "pipe");
    const UniqueFd readEnd = aboveStandardStreams(ends[0], "pipe");
    UniqueFd writeEnd = aboveStandardStreams(ends[1], "pipe");

    const pid_t middle = ::fork();
    if (middle < 0)
        throwError(errno, "fork");
    if (middle == 0) {
        // A session of its own; the middle child then exits at once, so the
        // program's parent becomes the system's reaper, not the bridge.
        if (::setsid() < 0)
            reportAndExit(writeEnd.get(), {0, errno}, 127);
        const pid_t child = ::fork();
        if (child < 0)
            reportAndExit(writeEnd.get(), {0, errno}, 127);
        if (child > 0)
            reportAndExit(writeEnd.get(), {child, 0}, 0);
        runProgram(program, plan, devNull.get(), writeEnd.get());
    }
    writeEnd.reset();
    int status = 0;
    while (::waitpid(middle, &status, 0) < 0 && errno == EINTR) {
    }

    // End of file comes when the middle child has gone and the program has
    // either been executed or reported why not.
    pid_t pid = 0;
    int error = 0;
    Report report;
    std::size_t got = 0;
    for (;;) {
        const ssize_t count = ::read(readEnd.get(), reinterpret_cast<char*>(&report) + got,
                                     sizeof report - got);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        got += static_cast<std::size_t>(count);
        if (got < sizeof report)
            continue;
        got = 0;
        if (report.pid > 0)
            pid = report.pid;
        else if (report.error != 0)
            error = report.error;
    }
    if (error != 0)
        throwError(error, program);
    if (pid <= 0)
        throwError(ECHILD, program);

    // Debian 12's <sys/pidfd.h> lacks C linkage for C++, hence the system call.
    UniqueFd pidFd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
    const bool endedAlready = !pidFd.isOpen() && errno == ESRCH;
    return DetachedProcess(pid, std::move(pidFd), endedAlready);
}

std::vector<std::string> environmentWith(const std::string& name, const std::string& value) {
    const std::string prefix = name + "=";
    std::vector<std::string> result;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        if (std::strncmp(*entry, prefix.c_str(), prefix.size()) != 0)
            result.emplace_back(*entry);
    }
    result.push_back(prefix + value);
    return result;
}

} // namespace velarion
