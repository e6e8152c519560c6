#pragma once
// OutputDisplays: the displays of this computer and the windows the output
// manager opens on them, as the manager needs them. The platform's version
// opens full-screen windows drawn on render threads; tests use a double that
// records what each window was given.
//
// Contract.
// - Main thread only; the change callback runs on the main loop whenever a
//   display comes, goes or changes its size, never inside a call.
// - `open` with a display gives a borderless full-screen window on it; with
//   none it gives the audience test window, an ordinary window. Never null.
// - OutputWindow::show hands over a whole scene as a value, with the moment
//   of the change on the Scheduler's clock; the window draws the latest one
//   by itself and never calls back. Destroying the window closes it.
// - OutputWindow::failure is a sentence when the window could not draw as
//   it should (no graphics context, a shader the driver refused) and fell
//   back to a slower way that still shows the picture; any thread may have
//   set it, the manager reads it on the main thread. `isClosed` likewise.
// - Ownership: the manager owns its windows; the displays object outlives
//   every manager that uses it.

#include "LiveEngine/DisplayInfo.h"
#include "ShowStage/OutputScene.h"
#include "ShowStage/SceneVideoSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velarion {

class OutputWindow {
public:
    virtual ~OutputWindow() = default;
    virtual void show(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) = 0;
    virtual std::optional<std::string> failure() const = 0;
    // The operator closed it (an ordinary window's close button).
    virtual bool isClosed() const = 0;
};

class OutputDisplays {
public:
    virtual ~OutputDisplays() = default;

    // The connected displays, the main one flagged.
    virtual std::vector<DisplayInfo> displays() const = 0;
    virtual void setOnChange(std::function<void()> callback) = 0;
    virtual std::unique_ptr<OutputWindow> open(const std::optional<DisplayInfo>& display,
                                               const std::string& title) = 0;
};

} // namespace velarion
