#include "Console/ProgramPreview.h"

#include "Console/ConsoleTheme.h"
#include "Live/AppModel.h"
#include "LiveEngine/ScreenOutputManager.h"
#include "Platform/App/HeadlessOutputs.h"
#include "Platform/Outputs/CpuSceneMirror.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

namespace velarion::console {

namespace {

// Long enough for a dissolve or a fade to play out in the preview after the
// scene changed.
constexpr double animationSeconds = 3.0;

QImage toImage(const RasterImage& raster) {
    QImage image(raster.bgra.data(), raster.width, raster.height, raster.width * 4,
                 QImage::Format_ARGB32_Premultiplied);
    return image.copy();
}

} // namespace

ProgramPreview::ProgramPreview(AppModel& model, std::function<double()> now, QWidget* parent)
    : QWidget(parent), model_(model), now_(std::move(now)) {
    setMinimumSize(240, 135 + 24);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

// The manager holds its mirrors weakly: ours goes with us.
ProgramPreview::~ProgramPreview() = default;

void ProgramPreview::attach() {
    OutputManager* manager = model_.outputManager();
    if (manager == attachedTo_) return;
    // A new show: a fresh mirror, so nothing of the old show's picture stays.
    mirror_ = std::make_shared<CpuSceneMirror>(previewWidth, previewHeight);
    attachedTo_ = manager;
    headlessScenes_ = 0;
    scenesDrawn_ = -1;
    if (auto* screens = dynamic_cast<ScreenOutputManager*>(manager)) screens->addMirror(mirror_);
}

void ProgramPreview::refresh() {
    attach();
    if (!mirror_) return;
    const double now = now_();
    if (auto* headless = dynamic_cast<HeadlessOutputs*>(attachedTo_);
        headless && headless->scenesApplied() != headlessScenes_) {
        headlessScenes_ = headless->scenesApplied();
        mirror_->sceneChanged(headless->lastScene(), {}, now);
    }
    if (mirror_->scenesReceived() != scenesDrawn_) {
        scenesDrawn_ = mirror_->scenesReceived();
        animateUntil_ = now + animationSeconds;
    } else if (now > animateUntil_ && drawn_ > 0) return;
    if (!isVisible() || drawing_) return;
    startDraw(now);
}

void ProgramPreview::startDraw(double atSeconds) {
    drawing_ = true;
    SceneFrame frame = mirror_->frame(atSeconds);
    const int width = mirror_->widthPixels();
    const int height = mirror_->heightPixels();
    QPointer<ProgramPreview> self(this);
    std::weak_ptr<int> life = life_;
    (void)QtConcurrent::run([self, life, frame = std::move(frame), width, height]() mutable {
        RasterImage raster(width, height);
        CpuCompositor::draw(frame, raster);
        QImage image = toImage(raster);
        // Back to the main loop; a preview gone meanwhile takes nothing.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, life, image = std::move(image)]() mutable {
                if (life.expired() || !self) return;
                self->picture_ = std::move(image);
                self->drawing_ = false;
                ++self->drawn_;
                self->update();
            },
            Qt::QueuedConnection);
    });
}

QImage ProgramPreview::drawAt(double atSeconds) {
    attach();
    if (!mirror_) return {};
    if (auto* headless = dynamic_cast<HeadlessOutputs*>(attachedTo_))
        mirror_->sceneChanged(headless->lastScene(), {}, now_());
    picture_ = toImage(mirror_->draw(atSeconds));
    ++drawn_;
    update();
    return picture_;
}

void ProgramPreview::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), colour::panel);
    const QRect caption(8, 0, width() - 16, 22);
    painter.setPen(colour::dimText);
    QString name = "Program";
    if (const EngineState* state = model_.engineState(); state && !state->programOutputName.empty())
        name += " — " + QString::fromStdString(state->programOutputName);
    painter.drawText(caption, Qt::AlignVCenter | Qt::AlignLeft, name);
    QRect area(0, 24, width(), height() - 24);
    QSize size(16, 9);
    size.scale(area.size(), Qt::KeepAspectRatio);
    const QRect target(area.left() + (area.width() - size.width()) / 2, area.top(), size.width(), size.height());
    painter.fillRect(target, Qt::black);
    if (!picture_.isNull()) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(target, picture_);
    }
    if (const EngineState* state = model_.engineState(); state && state->holdingOn) {
        painter.setPen(QPen(colour::safe, 3));
        painter.drawRect(target.adjusted(1, 1, -2, -2));
    }
}

} // namespace velarion::console
