#pragma once
// ScreenSaverInhibitor: keeps the computer and its displays awake while a
// show is open, through the freedesktop screen-saver service on the session
// bus (org.freedesktop.ScreenSaver, Inhibit and UnInhibit).
//
// Contract.
// - Main thread. `begin` while active does nothing; `end` while inactive
//   does nothing. Destruction ends an activity still running.
// - Where the session bus or the service is missing, `begin` answers false
//   and nothing else happens: keeping awake is a courtesy, never a failure.
// - The calls wait at most 500 ms for the service.

#include <QString>

#include <cstdint>
#include <optional>
#include <string>

namespace velarion {

class ScreenSaverInhibitor {
public:
    ScreenSaverInhibitor() = default;
    ~ScreenSaverInhibitor();
    ScreenSaverInhibitor(const ScreenSaverInhibitor&) = delete;
    ScreenSaverInhibitor& operator=(const ScreenSaverInhibitor&) = delete;

    bool begin(const std::string& reason);
    void end();
    bool isActive() const { return cookie_.has_value(); }

private:
    std::optional<std::uint32_t> cookie_;
};

} // namespace velarion
