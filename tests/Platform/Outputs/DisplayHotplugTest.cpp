// Displays that come and go, on Xorg with the dummy driver: RandR outputs
// switched off and on with xrandr, as a cable pulled and plugged back. The
// real output manager, Qt's screens and OpenGL windows; what the audience
// sees is read from screenshots of the root window.

#include "OutputsTestSupport.h"
#include "PrivateXServer.h"
#include "RealTimeScheduler.h"

#include "LiveEngine/ScreenOutputManager.h"
#include "Platform/Outputs/QtOutputDisplays.h"
#include "Platform/Outputs/QtScreenPictures.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>

namespace velarion::testing {

PrivateXServer* hotplugServer = nullptr;

namespace {

template <typename Done>
bool spinUntil(RealTimeScheduler& scheduler, Done done, double seconds = 10) {
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < seconds * 1000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        scheduler.runFor(0.01);
    }
    return done();
}

QScreen* screenNamed(const char* name) {
    for (QScreen* screen : QGuiApplication::screens())
        if (screen->name() == QLatin1String(name)) return screen;
    return nullptr;
}

QRgb centreOf(const char* display) {
    QScreen* screen = screenNamed(display);
    if (!screen) return 0;
    const QImage shot = screen->grabWindow(0).toImage().convertToFormat(QImage::Format_ARGB32);
    return shot.isNull() ? 0 : shot.pixel(shot.width() / 2, shot.height() / 2);
}

SceneLayer colorLayer(SceneColor color) {
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneColorContent{color};
    return layer;
}

bool plugIn() {
    return hotplugServer->xrandr({"--output", "DUMMY1", "--mode", "640x360", "--right-of", "DUMMY0"});
}

TEST(DisplayHotplug, AScreenWhoseDisplayGoesComesBackWithItsPicture) {
    RealTimeScheduler scheduler;
    QtOutputDisplays displays([&scheduler] { return scheduler.now(); });
    QtScreenPictures pictures(scheduler.calendar());
    ScreenOutputManager manager(scheduler, displays, pictures, [] { return false; });
    ASSERT_TRUE(hotplugServer->xrandr({"--addmode", "DUMMY1", "640x360"}));
    ASSERT_TRUE(plugIn());
    ASSERT_TRUE(spinUntil(scheduler, [] { return QGuiApplication::screens().size() == 2; }));

    OutputSetup setup;
    setup.usesLogicalScreens = true;
    for (const char* display : {"DUMMY0", "DUMMY1"}) {
        LogicalScreen screen;
        screen.id = display;
        screen.name = display;
        screen.destination = destination::Display{display};
        setup.screens.push_back(screen);
    }
    manager.configure(setup);
    const SceneLayer red = colorLayer({1, 0, 0, 1}), blue = colorLayer({0, 0, 1, 1});
    OutputScene scene;
    scene.layers = {red, blue};
    const LayerRoutes routes{{red.id, {"DUMMY0"}}, {blue.id, {"DUMMY1"}}};
    manager.apply(scene, {}, {}, routes, {}, std::nullopt);
    // Each display shows only the layer routed to it.
    EXPECT_TRUE(spinUntil(scheduler, [] { return centreOf("DUMMY0") == qRgb(255, 0, 0); }));
    EXPECT_TRUE(spinUntil(scheduler, [] { return centreOf("DUMMY1") == qRgb(0, 0, 255); }));

    // A slow dissolve to green on the first display; mid-way the second
    // display is unplugged.
    SceneLayer green = colorLayer({0, 1, 0, 1});
    green.dissolveSeconds = 3;
    scene.layers = {red, green, blue};
    manager.apply(scene, {}, {}, routes, {}, std::nullopt);
    ASSERT_TRUE(hotplugServer->xrandr({"--output", "DUMMY1", "--off"}));
    ASSERT_TRUE(spinUntil(scheduler, [&] { return manager.openWindowIDs() == std::vector<std::string>{"DUMMY0"}; }));
    EXPECT_EQ(manager.health()[1].detail, std::optional<std::string>("The selected display is disconnected."));
    EXPECT_TRUE(manager.health()[0].isConnected);
    // The other display goes on: its dissolve keeps moving towards green.
    const int greenBefore = qGreen(centreOf("DUMMY0"));
    EXPECT_TRUE(spinUntil(scheduler, [&] { return qGreen(centreOf("DUMMY0")) > greenBefore + 20; }, 5));

    // Plugged back: window and picture return, nothing in the setup changed.
    ASSERT_TRUE(plugIn());
    ASSERT_TRUE(spinUntil(scheduler, [&] { return manager.openWindowIDs().size() == 2; }));
    EXPECT_TRUE(spinUntil(scheduler, [] { return centreOf("DUMMY1") == qRgb(0, 0, 255); }));
    EXPECT_TRUE(manager.health()[1].isConnected);
    manager.closeAll();
}

} // namespace
} // namespace velarion::testing

int main(int argc, char** argv) {
    std::string whyNot;
    const auto server = velarion::testing::PrivateXServer::startWithDisplaysThatComeAndGo(whyNot);
    if (!server) {
        std::fprintf(stderr, "DisplayHotplugTests skipped: %s\n", whyNot.c_str());
        return 77;
    }
    velarion::testing::hotplugServer = server.get();
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
