#pragma once
// A private X server for window tests: Xvfb with Mesa's software OpenGL, on
// a display number the server picks itself (-displayfd), so parallel tests
// never collide. While it lives, DISPLAY names it. It dies with the test
// process. `start` answers null with the reason when none can run here.

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace velarion::testing {

class PrivateXServer {
public:
    // Each entry is one X screen, "WIDTHxHEIGHT".
    static std::unique_ptr<PrivateXServer> start(const std::vector<std::string>& screens, std::string& whyNot);
    // Xorg with the dummy video driver: RandR outputs DUMMY0, DUMMY1, … that
    // `xrandr` switches on and off as if displays were plugged in and out.
    // Only DUMMY0 is on at first, at 640x360. Xorg must be allowed to run
    // for this user (it is for root).
    static std::unique_ptr<PrivateXServer> startWithDisplaysThatComeAndGo(std::string& whyNot);

    // Runs xrandr on this server; true when it succeeded.
    bool xrandr(const std::vector<std::string>& arguments) const;
    ~PrivateXServer();
    PrivateXServer(const PrivateXServer&) = delete;
    PrivateXServer& operator=(const PrivateXServer&) = delete;

    const std::string& display() const { return display_; }

private:
    PrivateXServer() = default;
    static std::unique_ptr<PrivateXServer> launch(std::vector<std::string> command, std::string& whyNot);
    pid_t process_ = -1;
    std::string display_;
    std::string folder_; // the configuration and log, removed at the end
};

} // namespace velarion::testing
