#include "PrivateXServer.h"

#include "ChildProcess.h"

#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace velarion::testing {

std::unique_ptr<PrivateXServer> PrivateXServer::start(const std::vector<std::string>& screens, std::string& whyNot) {
    std::vector<std::string> command{"Xvfb", "-nolisten", "tcp", "+extension", "GLX", "-noreset"};
    for (std::size_t i = 0; i < screens.size(); ++i) {
        command.insert(command.end(), {"-screen", std::to_string(i), screens[i] + "x24"});
    }
    return launch(std::move(command), whyNot);
}

std::unique_ptr<PrivateXServer> PrivateXServer::startWithDisplaysThatComeAndGo(std::string& whyNot) {
    char folderTemplate[] = "/tmp/velarion-xorg-XXXXXX";
    const char* folder = mkdtemp(folderTemplate);
    if (folder == nullptr) {
        whyNot = "no folder for the X server's configuration";
        return nullptr;
    }
    const std::string config = std::string(folder) + "/xorg.conf";
    std::ofstream(config) << R"(Section "Device"
  Identifier "dummy"
  Driver "dummy"
  VideoRam 65536
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5.0 - 1000.0
  VertRefresh 5.0 - 200.0
  Modeline "640x360" 18.75 640 664 728 816 360 363 368 384 -hsync +vsync
EndSection
Section "Screen"
  Identifier "screen"
  Device "dummy"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Virtual 1920 720
    Modes "640x360"
  EndSubSection
EndSection
)";
    auto server = launch({"Xorg", "-config", config, "-configdir", std::string(folder) + "/none", "-logfile",
                          std::string(folder) + "/log", "-noreset", "-nolisten", "tcp"},
                         whyNot);
    if (!server) {
        std::filesystem::remove_all(folder);
        whyNot = "Xorg with the dummy driver couldn't start (install xserver-xorg-core and "
                 "xserver-xorg-video-dummy; Xorg runs for root here)";
        return nullptr;
    }
    server->folder_ = folder;
    return server;
}

bool PrivateXServer::xrandr(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"xrandr", "-display", display_};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runToEnd(command) == 0;
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
    if (!folder_.empty()) std::filesystem::remove_all(folder_);
    endProcess(process_);
}

} // namespace velarion::testing
