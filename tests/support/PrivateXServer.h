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
    ~PrivateXServer();
    PrivateXServer(const PrivateXServer&) = delete;
    PrivateXServer& operator=(const PrivateXServer&) = delete;

    const std::string& display() const { return display_; }

private:
    PrivateXServer() = default;
    static std::unique_ptr<PrivateXServer> launch(std::vector<std::string> command, std::string& whyNot);
    pid_t process_ = -1;
    std::string display_;
};

} // namespace velarion::testing
