#pragma once
// QtOutputDisplays: the displays Qt reports (a display's id is its
// connector name, QScreen::name(), "HDMI-1") and GlOutputWindows on them.
//
// Contract: as OutputDisplays. Made on the main thread after the GUI
// application and destroyed there after every window it opened. A screen
// added or removed, or one changing its geometry, reaches the change
// callback once per turn of the event loop. `clock` is the Scheduler's
// monotonic clock and is called from render threads.

#include "LiveEngine/ports/OutputDisplays.h"
#include "Platform/Outputs/GlOutputWindow.h"

#include <QObject>

namespace velarion {

class QtOutputDisplays final : public QObject, public OutputDisplays {
public:
    explicit QtOutputDisplays(GlOutputWindow::Clock clock);
    ~QtOutputDisplays() override;

    std::vector<DisplayInfo> displays() const override { return connected(); }
    static std::vector<DisplayInfo> connected();
    void setOnChange(std::function<void()> callback) override;
    std::unique_ptr<OutputWindow> open(const std::optional<DisplayInfo>& display, const std::string& title) override;

    // True when Qt runs on a platform that can show windows (not offscreen
    // or minimal); without OpenGL the windows draw in software.
    static bool canOpenWindows();

private:
    void watch(QScreen* screen);
    void changed();

    GlOutputWindow::Clock clock_;
    std::function<void()> onChange_;
    bool changePending_ = false;
};

} // namespace velarion
