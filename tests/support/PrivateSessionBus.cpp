#include "PrivateSessionBus.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace velarion::testing {

std::unique_ptr<PrivateSessionBus> PrivateSessionBus::start(std::string& whyNot) {
    std::unique_ptr<PrivateSessionBus> bus(new PrivateSessionBus);
    const std::filesystem::path socket = bus->folder_ / "bus";
    std::filesystem::create_directories(bus->servicesFolder());
    bus->address_ = "unix:path=" + socket.string();
    std::ofstream(bus->folder_ / "bus.conf")
        << "<busconfig><type>session</type><listen>" << bus->address_
        << "</listen><servicedir>" << bus->servicesFolder().string() << "</servicedir><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
           "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
    bus->daemon_ = std::make_unique<ChildProcess>(
        "/usr/bin/dbus-daemon",
        std::vector<std::string>{"--nofork", "--nopidfile", "--config-file=" + (bus->folder_ / "bus.conf").string()});
    for (int i = 0; i < 250 && !std::filesystem::exists(socket); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (!std::filesystem::exists(socket)) {
        whyNot = "dbus-daemon did not start";
        return nullptr;
    }
    bus->environment_ = std::make_unique<ScopedEnvironment>("DBUS_SESSION_BUS_ADDRESS", bus->address_);
    return bus;
}

} // namespace velarion::testing
