#include "PrivateXServer.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

extern char** environ;

namespace velarion::testing {

std::unique_ptr<PrivateXServer> PrivateXServer::start(const std::vector<std::string>& screens, std::string& whyNot) {
    int channel[2];
    if (pipe(channel) != 0) {
        whyNot = "no pipe for the X server";
        return nullptr;
    }
    std::vector<std::string> command{"setpriv", "--pdeathsig", "KILL", "--", "Xvfb", "-displayfd", "3",
                                     "-nolisten", "tcp", "+extension", "GLX", "-noreset"};
    for (std::size_t i = 0; i < screens.size(); ++i) {
        command.insert(command.end(), {"-screen", std::to_string(i), screens[i] + "x24"});
    }
    std::vector<char*> argv;
    for (const std::string& part : command) argv.push_back(const_cast<char*>(part.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, channel[1], 3);
    auto server = std::unique_ptr<PrivateXServer>(new PrivateXServer);
    const int spawned = posix_spawnp(&server->process_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(channel[1]);
    if (spawned != 0) {
        close(channel[0]);
        server->process_ = -1;
        whyNot = "Xvfb couldn't start (install xvfb)";
        return nullptr;
    }
    std::string number;
    pollfd ready{channel[0], POLLIN, 0};
    while (poll(&ready, 1, 10'000) > 0) {
        char c = 0;
        if (read(channel[0], &c, 1) != 1 || c == '\n') break;
        number += c;
    }
    close(channel[0]);
    if (number.empty()) {
        whyNot = "Xvfb didn't report its display";
        return nullptr;
    }
    server->display_ = ":" + number;
    setenv("DISPLAY", server->display_.c_str(), 1);
    return server;
}

PrivateXServer::~PrivateXServer() {
    if (process_ <= 0) return;
    kill(process_, SIGTERM);
    for (int i = 0; i < 100; ++i) {
        if (waitpid(process_, nullptr, WNOHANG) == process_) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

} // namespace velarion::testing
