#include "PrivateJackServer.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace velarion::testing {

namespace {

// Dies with this process (setpriv), like the other servers the tests start.
pid_t spawnQuietly(std::vector<std::string> command) {
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL", "--"});
    std::vector<char*> argv;
    for (std::string& part : command) argv.push_back(part.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    if (posix_spawnp(&process, argv[0], &actions, nullptr, argv.data(), environ) != 0) process = -1;
    posix_spawn_file_actions_destroy(&actions);
    return process;
}

bool answers() {
    const pid_t probe = spawnQuietly({"jack_lsp"});
    int status = 0;
    return probe > 0 && waitpid(probe, &status, 0) == probe && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

std::unique_ptr<PrivateJackServer> PrivateJackServer::start(std::string& whyNot) {
    std::unique_ptr<PrivateJackServer> server(new PrivateJackServer());
    server->name_ = "velarion-test-" + std::to_string(getpid());
    setenv("JACK_DEFAULT_SERVER", server->name_.c_str(), 1);
    setenv("JACK_NO_START_SERVER", "1", 1);
    // A short period, so that MIDI crosses the server quickly.
    server->server_ = spawnQuietly({"jackd", "--no-realtime", "--name", server->name_, "-d", "dummy",
                                    "--rate", "48000", "--period", "128", "--wait", "2667"});
    if (server->server_ < 0) {
        whyNot = "no process could be started for the JACK server";
        return nullptr;
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (answers()) return server;
        int status = 0;
        if (waitpid(server->server_, &status, WNOHANG) == server->server_) {
            server->server_ = -1;
            whyNot = WIFEXITED(status) && WEXITSTATUS(status) == 127
                         ? "jackd is not installed (scripts/install-deps installs jackd2)"
                         : "jackd exited at start";
            return nullptr;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    whyNot = "the JACK server did not answer within 5 seconds";
    return nullptr;
}

PrivateJackServer::~PrivateJackServer() {
    if (server_ > 0) {
        kill(server_, SIGTERM);
        bool ended = false;
        for (int i = 0; i < 100 && !ended; ++i) {
            ended = waitpid(server_, nullptr, WNOHANG) == server_;
            if (!ended) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        if (!ended) {
            kill(server_, SIGKILL);
            waitpid(server_, nullptr, 0);
        }
    }
    unsetenv("JACK_DEFAULT_SERVER");
    unsetenv("JACK_NO_START_SERVER");
}

} // namespace velarion::testing
