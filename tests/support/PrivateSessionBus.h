#pragma once
// A private D-Bus session bus for tests: its own dbus-daemon on a socket in
// a fresh folder, which anyone may own names on. While it lives,
// DBUS_SESSION_BUS_ADDRESS points at it (set before any connection is made,
// since a process keeps the session bus it first connected to).

#include "ChildProcess.h"
#include "ScopedEnvironment.h"
#include "TempFolder.h"

#include <memory>
#include <string>

namespace velarion::testing {

class PrivateSessionBus {
public:
    // None, with the reason, when the daemon didn't come up.
    static std::unique_ptr<PrivateSessionBus> start(std::string& whyNot);
    const std::string& address() const { return address_; }
    // Where `.service` files make names the bus may start on demand.
    std::filesystem::path servicesFolder() const { return folder_ / "services"; }

private:
    PrivateSessionBus() = default;
    TempFolder folder_{"velarion-bus"};
    std::string address_;
    std::unique_ptr<ChildProcess> daemon_;
    std::unique_ptr<ScopedEnvironment> environment_;
};

} // namespace velarion::testing
