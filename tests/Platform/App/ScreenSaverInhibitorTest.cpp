// Keeping awake through a screen-saver service on a private session bus,
// and nothing at all where no service answers.

#include "Platform/App/ScreenSaverInhibitor.h"

#include "ChildProcess.h"
#include "ScopedEnvironment.h"
#include "TempFolder.h"

#include <QDBusConnection>
#include <QEventLoop>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <thread>
#include <unistd.h>

namespace velarion {

// The service a desktop would offer, counting what it was asked.
class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    std::atomic<int> inhibits{0};
    std::atomic<int> releases{0};
    std::atomic<uint> lastReleased{0};
public slots:
    uint Inhibit(const QString&, const QString& reason) {
        lastReason = reason.toStdString();
        return static_cast<uint>(40 + ++inhibits);
    }
    void UnInhibit(uint cookie) {
        lastReleased = cookie;
        ++releases;
    }

public:
    std::string lastReason;
};

namespace {

void spinUntil(const std::function<bool()>& done) {
    for (int i = 0; i < 100 && !done(); ++i) {
        QEventLoop loop;
        QTimer::singleShot(10, &loop, &QEventLoop::quit);
        loop.exec();
    }
}

TEST(ScreenSaverInhibitorTest, InhibitsThroughTheServiceAndReleasesOnEnd) {
    testing::TempFolder folder("velarion-dbus");
    const std::string address = "unix:path=" + (folder / "bus").string();
    {
        std::ofstream config(folder / "bus.conf");
        config << "<busconfig><type>session</type><listen>" << address
               << "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
                  "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
    }
    testing::ChildProcess daemon("/usr/bin/dbus-daemon",
                                 {"--nofork", "--nopidfile", "--config-file=" + (folder / "bus.conf").string()});
    for (int i = 0; i < 100 && !std::filesystem::exists(folder / "bus"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(std::filesystem::exists(folder / "bus")) << "dbus-daemon did not start";

    // The service lives on its own thread and connection, so that the
    // adapter's blocking call is answered while the test's thread waits.
    QThread serviceThread;
    serviceThread.start();
    FakeScreenSaver service;
    service.moveToThread(&serviceThread);
    QDBusConnection serviceBus = QDBusConnection::connectToBus(QString::fromStdString(address), "service");
    ASSERT_TRUE(serviceBus.registerObject("/org/freedesktop/ScreenSaver", &service,
                                          QDBusConnection::ExportAllSlots));
    ASSERT_TRUE(serviceBus.registerService("org.freedesktop.ScreenSaver"));

    const testing::ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS", address);
    {
        ScreenSaverInhibitor inhibitor;
        ASSERT_TRUE(inhibitor.begin("A Velarion show is open"));
        EXPECT_TRUE(inhibitor.begin("again")) << "already active: nothing more";
        EXPECT_EQ(service.inhibits.load(), 1);
        EXPECT_EQ(service.lastReason, "A Velarion show is open");
        inhibitor.end();
        spinUntil([&] { return service.releases.load() == 1; });
        EXPECT_EQ(service.releases.load(), 1);
        EXPECT_EQ(service.lastReleased.load(), 41u) << "the cookie the service gave";
        ASSERT_TRUE(inhibitor.begin("A Velarion show is open"));
    }
    spinUntil([&] { return service.releases.load() == 2; });
    EXPECT_EQ(service.releases.load(), 2) << "destruction ends the activity";

    serviceBus.unregisterService("org.freedesktop.ScreenSaver");
    spinUntil([] { return false; });
    ScreenSaverInhibitor withoutService;
    EXPECT_FALSE(withoutService.begin("A Velarion show is open")) << "no service: nothing, and no error";

    QDBusConnection::disconnectFromBus("service");
    serviceThread.quit();
    serviceThread.wait();
}

} // namespace
} // namespace velarion

#include "ScreenSaverInhibitorTest.moc"
