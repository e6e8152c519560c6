#include "Platform/App/FreedesktopServices.h"

#include "Platform/App/ScreenSaverInhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QUrl>

#include <unistd.h>

namespace velarion {

namespace {

class InhibitedScreenSaver final : public AwakeActivity {
public:
    ScreenSaverInhibitor inhibitor;
};

} // namespace

std::unique_ptr<AwakeActivity> FreedesktopServices::beginAwakeActivity(const std::string& reason) {
    auto activity = std::make_unique<InhibitedScreenSaver>();
    if (!activity->inhibitor.begin(reason)) return nullptr;
    return activity;
}

void FreedesktopServices::beep() {
    if (isatty(STDERR_FILENO) != 0) {
        const char bell = '\a';
        [[maybe_unused]] const auto written = write(STDERR_FILENO, &bell, 1);
    }
}

void FreedesktopServices::reveal(const std::filesystem::path& item) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(QString::fromStdString(item.string())).toString()} << QString();
    bus.call(call, QDBus::NoBlock);
}

} // namespace velarion
