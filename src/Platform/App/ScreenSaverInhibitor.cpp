#include "Platform/App/ScreenSaverInhibitor.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusReply>

namespace velarion {

namespace {

const QString service = QStringLiteral("org.freedesktop.ScreenSaver");
const QString path = QStringLiteral("/org/freedesktop/ScreenSaver");
constexpr int callTimeoutMilliseconds = 500;

} // namespace

ScreenSaverInhibitor::~ScreenSaverInhibitor() { end(); }

bool ScreenSaverInhibitor::begin(const std::string& reason) {
    if (cookie_) return true;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || bus.interface() == nullptr || !bus.interface()->isServiceRegistered(service))
        return false;
    QDBusInterface screenSaver(service, path, service, bus);
    screenSaver.setTimeout(callTimeoutMilliseconds);
    const QDBusReply<std::uint32_t> reply =
        screenSaver.call(QStringLiteral("Inhibit"), QStringLiteral("Velarion"), QString::fromStdString(reason));
    if (!reply.isValid()) return false;
    cookie_ = reply.value();
    return true;
}

void ScreenSaverInhibitor::end() {
    if (!cookie_) return;
    QDBusInterface screenSaver(service, path, service, QDBusConnection::sessionBus());
    screenSaver.setTimeout(callTimeoutMilliseconds);
    screenSaver.call(QDBus::NoBlock, QStringLiteral("UnInhibit"), *cookie_);
    cookie_.reset();
}

} // namespace velarion
