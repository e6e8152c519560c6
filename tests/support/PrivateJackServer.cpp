#include "PrivateJackServer.h"

#include "ChildProcess.h"

#include <chrono>
#include <cstdlib>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velarion::testing {

std::unique_ptr<PrivateJackServer> PrivateJackServer::start(std::string& whyNot) {
    std::unique_ptr<PrivateJackServer> server(new PrivateJackServer());
    server->name_ = "velarion-test-" + std::to_string(getpid());
    setenv("JACK_DEFAULT_SERVER", server->name_.c_str(), 1);
    setenv("JACK_NO_START_SERVER", "1", 1);
    // A short period, so that MIDI crosses the server quickly.
    server->server_ = spawnBeside({"jackd", "--no-realtime", "--name", server->name_, "-d", "dummy",
                                   "--rate", "48000", "--period", "128", "--wait", "2667"});
    if (server->server_ < 0) {
        whyNot = "no process could be started for the JACK server";
        return nullptr;
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (runToEnd({"jack_lsp"}) == 0) return server;
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
    endProcess(server_);
    unsetenv("JACK_DEFAULT_SERVER");
    unsetenv("JACK_NO_START_SERVER");
}

} // namespace velarion::testing
