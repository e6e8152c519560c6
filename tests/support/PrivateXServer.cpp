#include "PrivateXServer.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

extern char** environ;

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
    std::vector<char*> argv;
    for (const std::string& part : command) argv.push_back(const_cast<char*>(part.c_str()));
    argv.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawnp(&process, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return false;
    int status = 0;
    waitpid(process, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::unique_ptr<PrivateXServer> PrivateXServer::launch(std::vector<std::string> serverCommand, std::string& whyNot) {
    int channel[2];
    if (pipe(channel) != 0) {
        whyNot = "no pipe for the X server";
        return nullptr;
    }
    std::vector<std::string> command{"setpriv", "--pdeathsig", "KILL", "--"};
    command.insert(command.end(), serverCommand.begin(), serverCommand.end());
    command.insert(command.end(), {"-displayfd", "3"});
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
