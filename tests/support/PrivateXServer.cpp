#include "PrivateXServer.h"

#include "ChildProcess.h"

#include <poll.h>
#include <unistd.h>

#include <cstdlib>

namespace velarion::testing {

std::unique_ptr<PrivateXServer> PrivateXServer::start(const std::vector<std::string>& screens, std::string& whyNot) {
    std::vector<std::string> command{"Xvfb", "-nolisten", "tcp", "+extension", "GLX", "-noreset"};
    for (std::size_t i = 0; i < screens.size(); ++i) {
        command.insert(command.end(), {"-screen", std::to_string(i), screens[i] + "x24"});
    }
    return launch(std::move(command), whyNot);
}

std::unique_ptr<PrivateXServer> PrivateXServer::launch(std::vector<std::string> serverCommand, std::string& whyNot) {
    int channel[2];
    if (pipe(channel) != 0) {
        whyNot = "no pipe for the X server";
        return nullptr;
    }
    serverCommand.insert(serverCommand.end(), {"-displayfd", "3"});
    auto server = std::unique_ptr<PrivateXServer>(new PrivateXServer);
    server->process_ = spawnBeside(serverCommand, "/dev/null", channel[1]);
    close(channel[1]);
    if (server->process_ < 0) {
        close(channel[0]);
        whyNot = serverCommand.front() + " couldn't start";
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
        whyNot = serverCommand.front() + " didn't report its display";
        return nullptr;
    }
    server->display_ = ":" + number;
    setenv("DISPLAY", server->display_.c_str(), 1);
    return server;
}

PrivateXServer::~PrivateXServer() {
    endProcess(process_);
}

} // namespace velarion::testing
