#pragma once
// GlOutputWindow: one output window drawn with OpenGL on its own render
// thread. The main loop hands it each scene as a value (OutputWindow::show);
// the render thread applies the scenes in order to its own layer tree and
// draws the latest moment at every vsync, taking times from the clock it was
// given, the Scheduler's monotonic clock. A main loop that is busy for a
// while therefore never stops a dissolve on the audience's screen.
//
// Contract.
// - Made, shown and destroyed on the main thread, after the GUI application.
//   Destruction stops the render thread, frees its GL objects and closes the
//   window.
// - `clock` is called on the render thread and must be safe there.
// - Where the driver doesn't wait for vsync (a virtual X server), the render
//   thread paces itself to the screen's refresh rate on the same clock.
// - `setFrameObserver` is called on the render thread after each frame with
//   its moment and what was drawn; for tests and diagnostics.

#include "LiveEngine/ports/OutputDisplays.h"
#include "Platform/Outputs/CpuCompositor.h"

#include <QWindow>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

class QScreen;

namespace velarion {

class GlOutputWindow final : public OutputWindow {
public:
    using Clock = std::function<double()>;
    using FrameObserver = std::function<void(double atSeconds, const SceneFrame& frame)>;
    enum class Drawing { openGL, software };
    static constexpr const char* fallbackSentence =
        "Graphics acceleration failed on this screen; its picture is drawn in software.";

    // On `screen` full screen and frameless; with none, an ordinary window
    // of 960 by 540 titled `title`.
    GlOutputWindow(QScreen* screen, const std::string& title, Clock clock, Drawing drawing = Drawing::openGL);
    ~GlOutputWindow() override;

    void show(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) override;
    std::optional<std::string> failure() const override;
    bool isClosed() const override { return closed_.load(); }

    void setFrameObserver(FrameObserver observer);
    void setVideoFrames(VideoFrameLookup lookup);
    std::uint64_t framesDrawn() const { return framesDrawn_.load(); }
    QWindow& window();
    // A copy of the last frame as drawn, read back from GL when `readBack`
    // was asked for it before; for tests.
    void setReadBack(bool enabled) { readBack_.store(enabled); }
    RasterImage lastReadBack() const;

private:
    struct Pending {
        OutputScene scene;
        SceneSurfaces surfaces;
        double atSeconds = 0;
    };
    class Surface;
    void run();
    void fallBack(const char* why);
    void presentSoftware(const SceneFrame& frame, int width, int height, const VideoFrameLookup& videoFrames);

    Clock clock_;
    Drawing drawing_;
    std::unique_ptr<Surface> window_;
    double refreshSeconds_ = 1.0 / 60;

    mutable std::mutex lock_;
    std::condition_variable wake_;
    std::vector<Pending> pending_;
    int widthPixels_ = 0;
    int heightPixels_ = 0;
    FrameObserver observer_;
    VideoFrameLookup videoFrames_;
    RasterImage readBackImage_;
    std::optional<std::string> failure_;
    std::atomic<bool> readBack_{false};
    std::atomic<bool> stopping_{false};
    std::atomic<bool> closed_{false};
    std::atomic<std::uint64_t> framesDrawn_{0};
    std::thread thread_;
};

} // namespace velarion
