#pragma once
// ProcessControl: ending this process through Qt's event loop, and starting
// it again after it ended.
//
// Contract: as ApplicationControl. Main thread.
// - `terminate` quits the event loop on its next turn; the caller of
//   `exec` then finishes the quit (the model's last save and so on).
// - `relaunchAfterExit` starts a detached shell that polls every 0.2 s
//   until this process is gone, then starts this same executable again with
//   `relaunchArguments` and the package. Throws when the shell can't start.

#include "Live/ports/ApplicationControl.h"

#include <string>
#include <vector>

namespace velarion {

class ProcessControl final : public ApplicationControl {
public:
    // `relaunchArguments` come before the package, e.g. {"--headless"}.
    explicit ProcessControl(std::vector<std::string> relaunchArguments);

    void terminate() override;
    void relaunchAfterExit(const std::optional<std::filesystem::path>& package) override;

private:
    std::vector<std::string> relaunchArguments_;
};

} // namespace velarion
