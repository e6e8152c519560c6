#pragma once
// A private JACK server on the dummy driver, for MIDI tests: no sound card,
// a name of its own so it never meets anyone else's server. While it lives,
// JACK_DEFAULT_SERVER points this process's JACK clients at it and
// JACK_NO_START_SERVER keeps them from starting another.
//
// `start` answers null with the reason when no server can run here. Start
// it once per test program; it dies with the process.

#include <memory>
#include <string>
#include <sys/types.h>

namespace velarion::testing {

class PrivateJackServer {
public:
    static std::unique_ptr<PrivateJackServer> start(std::string& whyNot);
    ~PrivateJackServer();
    PrivateJackServer(const PrivateJackServer&) = delete;
    PrivateJackServer& operator=(const PrivateJackServer&) = delete;

    const std::string& name() const { return name_; }

private:
    PrivateJackServer() = default;
    std::string name_;
    pid_t server_ = -1;
};

} // namespace velarion::testing
