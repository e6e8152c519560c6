// Keeping awake through a screen-saver service on a private session bus,
// and nothing at all where no service answers.

#include "Platform/App/ScreenSaverInhibitor.h"

#include "PrivateSessionBus.h"

#include <QDBusConnection>
#include <QEventLoop>
#include <QObject>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdio>
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
    std::string whyNot;
    const auto bus = testing::PrivateSessionBus::start(whyNot);
    ASSERT_TRUE(bus) << whyNot;
    const std::string& address = bus->address();

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
