// OpenGL output windows under a private Xvfb (Mesa llvmpipe): the GL back
// end against the CPU compositor on the golden scenes, a decoded video's
// frame on a window, a dissolve that keeps going while the main loop is
// blocked, and the output manager opening a real window on the display Qt
// reports.

#include "GeneratedVideo.h"
#include "GoldenScenes.h"
#include "TempFolder.h"
#include "OutputsTestSupport.h"

#include "LiveEngine/ScreenOutputManager.h"
#include "Platform/Outputs/GlOutputWindow.h"
#include "Platform/Outputs/GlSceneDrawer.h"
#include "Platform/Outputs/QtOutputDisplays.h"
#include "Platform/Outputs/QtScreenPictures.h"
#include "Platform/Video/GstVideoSurface.h"
#include "RealTimeScheduler.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QScreen>

#include <chrono>
#include <mutex>
#include <thread>

namespace velarion::testing {
namespace {

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Runs the event loop until `done` or about `seconds` have passed.
template <typename Done>
bool spinUntil(Done done, double seconds = 10) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < seconds * 1000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return done();
}

TEST(GlOutput, DrawsTheGoldenScenesAsTheCpuCompositorDoes) {
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    ASSERT_TRUE(context.create());
    ASSERT_TRUE(context.makeCurrent(&surface));
    GlSceneDrawer drawer;
    for (const GoldenScene& scene : goldenScenes()) {
        SCOPED_TRACE(scene.name);
        QOpenGLFramebufferObject target(scene.width, scene.height);
        target.bind();
        const SceneFrame frame = scene.frame();
        drawer.draw(frame, scene.width, scene.height);
        drawer.draw(frame, scene.width, scene.height); // a second time, from its kept textures
        RasterImage gl(scene.width, scene.height);
        context.functions()->glReadPixels(0, 0, scene.width, scene.height, GL_BGRA, GL_UNSIGNED_BYTE,
                                          gl.bgra.data());
        target.release();
        RasterImage cpu(scene.width, scene.height);
        CpuCompositor::draw(frame, cpu);
        const QImage fromGL = toImage(gl).mirrored();
        const PictureDifference found =
            difference(fromGL, toImage(cpu), scene.surfaces.empty() ? parityLevels : videoParityLevels);
        if (found.differing != 0) fromGL.save(QString::fromStdString("/tmp/velarion-gl-" + scene.name + ".png"));
        EXPECT_EQ(found.differing, 0) << "worst " << found.worst << " at " << found.first.x() << ","
                                      << found.first.y();
    }
    drawer.release();
}

TEST(GlOutput, AWindowShowsTheFrameItsVideoSurfaceHasDecoded) {
    TempFolder media("velarion-gl-video");
    ASSERT_TRUE(writeCodedVideo(media / "coded.mkv", {.soundAmplitude = 0}));
    RealTimeScheduler scheduler;
    auto video = GstVideoSurface::make(scheduler, nullptr, Uuid::random(), media / "coded.mkv");
    bool ready = false, sought = false;
    video->prepare(5, [&](VideoPreparation result) { ready = std::holds_alternative<VideoSurfaceInfo>(result); });
    video->seek(1.3, [&] { sought = true; });
    ASSERT_TRUE(spinUntil([&] {
        scheduler.runFor(0.005);
        return ready && sought;
    }));
    ASSERT_TRUE(video->latestVideoFrame()) << "decoded into planes";

    GlOutputWindow window(QGuiApplication::primaryScreen(), "Video", steadySeconds);
    window.setReadBack(true);
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneVideoContent{video->id()};
    OutputScene scene;
    scene.layers = {layer};
    window.show(scene, {{video->id(), video}}, steadySeconds());
    int shown = -1;
    EXPECT_TRUE(spinUntil([&] {
        const RasterImage drawn = window.lastReadBack();
        shown = drawn.width > 0 ? frameCode(StillPixels{drawn.width, drawn.height, drawn.bgra}) : -1;
        return shown == 13;
    }, 5)) << "frame " << shown << " on the window";
}

TEST(GlOutput, DissolveKeepsAdvancingWhileTheMainLoopIsBlocked) {
    QScreen* screen = QGuiApplication::primaryScreen();
    GlOutputWindow window(screen, "Dissolve", steadySeconds);
    struct Drawn {
        double at;
        float opacity; // of the layer dissolving in, 0 before it appears
    };
    std::mutex lock;
    std::vector<Drawn> frames;
    const StillImage page = generatedStill(160, 90);
    SceneLayer incoming = stillLayer(generatedStill(160, 90));
    incoming.dissolveSeconds = 1;
    window.setFrameObserver([&](double at, const SceneFrame& frame) {
        float opacity = 0;
        for (const SceneDrawOperation& operation : frame.operations)
            if (operation.layerID == incoming.id) opacity = operation.opacity;
        std::lock_guard guard(lock);
        frames.push_back(Drawn{at, opacity});
    });
    OutputScene scene;
    scene.layers = {stillLayer(page)};
    window.show(scene, {}, steadySeconds());
    ASSERT_TRUE(spinUntil([&] { return window.framesDrawn() > 3; }));
    scene.layers.push_back(incoming);
    const double start = steadySeconds();
    window.show(scene, {}, start);
    spinUntil([&] { return steadySeconds() > start + 0.3; });
    // The main loop stops for 200 ms in the middle of the dissolve.
    const double blockedFrom = steadySeconds();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const double blockedUntil = steadySeconds();
    spinUntil([&] { return steadySeconds() > start + 1.2; });

    std::lock_guard guard(lock);
    std::vector<float> whileBlocked;
    for (const Drawn& frame : frames)
        if (frame.at >= blockedFrom && frame.at <= blockedUntil) whileBlocked.push_back(frame.opacity);
    // At 60 Hz a 200 ms block spans about 12 frames; a loaded machine may
    // draw fewer, but never none, and each one further into the dissolve.
    EXPECT_GE(whileBlocked.size(), 3u);
    for (std::size_t i = 1; i < whileBlocked.size(); ++i) EXPECT_GT(whileBlocked[i], whileBlocked[i - 1]);
    ASSERT_FALSE(whileBlocked.empty());
    EXPECT_GT(whileBlocked.front(), 0.2f);
    EXPECT_LT(whileBlocked.back(), 0.8f);
}

TEST(GlOutput, TheManagerPutsTheIdentificationPictureOnTheDisplayQtReports) {
    RealTimeScheduler scheduler;
    QtOutputDisplays displays([&scheduler] { return scheduler.now(); });
    QtScreenPictures pictures(scheduler.calendar());
    ScreenOutputManager manager(scheduler, displays, pictures, [] { return false; });
    const auto available = manager.availableDisplays();
    ASSERT_FALSE(available.empty());
    EXPECT_EQ(available.front().id, QGuiApplication::primaryScreen()->name().toStdString());
    EXPECT_TRUE(available.front().isMain);

    OutputSetup setup;
    setup.usesLogicalScreens = true;
    LogicalScreen screen;
    screen.id = "main";
    screen.name = "Main";
    screen.destination = destination::Display{available.front().id};
    setup.screens = {screen};
    manager.configure(setup);
    ASSERT_EQ(manager.openWindowIDs(), std::vector<std::string>{"main"});
    EXPECT_TRUE(manager.health().front().isConnected);
    EXPECT_EQ(manager.identify("main"), std::nullopt);
    const auto identification = pictures.identify("Main", ScreenRole::audience);
    ASSERT_TRUE(identification);
    // The picture's corner is the role's fill: a screenshot of the root
    // window must show it where the audience would look.
    const std::uint8_t* fill = identification->bgra().data() + (20 * identification->width() + 20) * 4;
    const QRgb expected = qRgb(fill[2], fill[1], fill[0]);
    QScreen* display = QGuiApplication::primaryScreen();
    const auto shown = [&] {
        const QImage shot = display->grabWindow(0).toImage().convertToFormat(QImage::Format_ARGB32);
        return !shot.isNull() && channelDifference(shot.pixel(6, 6), expected) <= parityLevels;
    };
    EXPECT_TRUE(spinUntil(shown, 5));
    // Without OpenGL (run again with QT_XCB_GL_INTEGRATION=none) the window
    // draws in software, and its health row says so within the second.
    QOpenGLContext probe;
    const std::optional<std::string> why =
        probe.create() ? std::nullopt : std::optional<std::string>(GlOutputWindow::fallbackSentence);
    EXPECT_TRUE(spinUntil([&] {
        scheduler.runFor(0.01);
        return manager.health().front().detail == why;
    }, 3));
    EXPECT_TRUE(manager.health().front().isConnected);
    manager.closeAll();
    EXPECT_TRUE(manager.openWindowIDs().empty());
}

} // namespace
} // namespace velarion::testing
