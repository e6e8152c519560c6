#pragma once
// ApplicationControl: what the application model asks of the running
// application itself: to end the process, and to come back after it ended.
//
// Contract.
// - Main thread only.
// - `terminate` asks the application to quit through its normal path, which
//   calls AppModel's `finishQuit` (the last save, the session key removed,
//   the engine shut down) before the process ends. It returns at once; the
//   quit happens on the main loop later.
// - `relaunchAfterExit` arranges, before a `terminate`, for the application
//   to start again once this process has died, opening `package` when one is
//   given. The waiting happens in a separate, detached process that polls
//   for this process's death. Throws std::exception when that process can't
//   be started; the caller ignores it and quits anyway.
//
// Implementations: the Qt application; RecordingApplicationControl in tests.

#include <filesystem>
#include <optional>

namespace velarion {

class ApplicationControl {
public:
    virtual ~ApplicationControl() = default;

    virtual void terminate() = 0;
    virtual void relaunchAfterExit(const std::optional<std::filesystem::path>& package) = 0;
};

} // namespace velarion
