#include "Platform/Outputs/QtOutputDisplays.h"

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QScreen>
#include <QTimer>

namespace velarion {

QtOutputDisplays::QtOutputDisplays(GlOutputWindow::Clock clock) : clock_(std::move(clock)) {
    for (QScreen* screen : QGuiApplication::screens()) watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
        watch(screen);
        changed();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this](QScreen*) { changed(); });
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this](QScreen*) { changed(); });
}

QtOutputDisplays::~QtOutputDisplays() = default;

void QtOutputDisplays::watch(QScreen* screen) {
    connect(screen, &QScreen::geometryChanged, this, [this](const QRect&) { changed(); });
}

void QtOutputDisplays::changed() {
    // Qt sends several signals for one plug; the manager rebuilds once.
    if (changePending_) return;
    changePending_ = true;
    QTimer::singleShot(0, this, [this] {
        changePending_ = false;
        if (onChange_) onChange_();
    });
}

std::vector<DisplayInfo> QtOutputDisplays::connected() {
    std::vector<DisplayInfo> result;
    const QScreen* primary = QGuiApplication::primaryScreen();
    for (QScreen* screen : QGuiApplication::screens()) {
        const qreal ratio = screen->devicePixelRatio();
        DisplayInfo info;
        info.id = screen->name().toStdString();
        const QString model = (screen->manufacturer() + " " + screen->model()).trimmed();
        info.name = model.isEmpty() ? info.id : model.toStdString();
        info.pixelWidth = qRound(screen->geometry().width() * ratio);
        info.pixelHeight = qRound(screen->geometry().height() * ratio);
        info.isMain = screen == primary;
        result.push_back(std::move(info));
    }
    return result;
}

void QtOutputDisplays::setOnChange(std::function<void()> callback) { onChange_ = std::move(callback); }

std::unique_ptr<OutputWindow> QtOutputDisplays::open(const std::optional<DisplayInfo>& display,
                                                     const std::string& title) {
    QScreen* on = nullptr;
    if (display)
        for (QScreen* screen : QGuiApplication::screens())
            if (screen->name().toStdString() == display->id) on = screen;
    // VELARION_SOFTWARE_OUTPUTS=1 skips OpenGL on a machine whose driver is known to misdraw.
    const bool software = qEnvironmentVariableIntValue("VELARION_SOFTWARE_OUTPUTS") == 1;
    return std::make_unique<GlOutputWindow>(on, title, clock_,
                                            software ? GlOutputWindow::Drawing::software
                                                     : GlOutputWindow::Drawing::openGL);
}

bool QtOutputDisplays::canOpenWindows() {
    const QString platform = QGuiApplication::platformName();
    // Without OpenGL the windows draw in software, so a display server is enough.
    return platform != "offscreen" && platform != "minimal" && !QGuiApplication::screens().isEmpty();
}

} // namespace velarion
