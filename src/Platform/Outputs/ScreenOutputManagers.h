#pragma once
// ScreenOutputManagers: a ScreenOutputManager on this computer's displays
// for each show the application loads, with OpenGL windows timed by the
// Scheduler's clock and pictures drawn by Qt.
//
// Contract: as OutputManagers. Main thread, after the GUI application, on a
// platform that can open windows (QtOutputDisplays::canOpenWindows). The
// scheduler's now() must be safe to call from render threads (QtScheduler's
// is). `coverIsActive` says whether Safe Slide or Panic is on, for the
// refusals of identification and test patterns.

#include "Live/ports/OutputManagers.h"
#include "LiveEngine/ScreenOutputManager.h"
#include "Platform/Outputs/QtOutputDisplays.h"
#include "Platform/Outputs/QtScreenPictures.h"

#include <memory>
#include <vector>

namespace velarion {

class ScreenOutputManagers final : public OutputManagers {
public:
    ScreenOutputManagers(Scheduler& scheduler, std::function<bool()> coverIsActive)
        : scheduler_(scheduler), coverIsActive_(std::move(coverIsActive)), pictures_(scheduler.calendar()) {}

    std::unique_ptr<OutputManager> make() override {
        // Each manager watches the displays for itself.
        auto& displays = displays_.emplace_back(
            std::make_unique<QtOutputDisplays>([this] { return scheduler_.now(); }));
        auto manager = std::make_unique<ScreenOutputManager>(scheduler_, *displays, pictures_, coverIsActive_);
        if (prepareManager) prepareManager(*manager);
        return manager;
    }

    std::vector<DisplayInfo> displays() const { return QtOutputDisplays::connected(); }
    // Finishes each new manager, e.g. with the network feeds' factories.
    std::function<void(ScreenOutputManager&)> prepareManager;

private:
    Scheduler& scheduler_;
    std::function<bool()> coverIsActive_;
    QtScreenPictures pictures_;
    std::vector<std::unique_ptr<QtOutputDisplays>> displays_;
};

} // namespace velarion
