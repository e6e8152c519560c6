#include "Platform/Outputs/GlOutputWindow.h"

#include "Platform/Outputs/GlSceneDrawer.h"
#include "ShowStage/SceneRenderer.h"

#include <QBackingStore>
#include <QGuiApplication>
#include <QPainter>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QResizeEvent>
#include <QScreen>

#include <chrono>
#include <cmath>
#include <cstring>

namespace velarion {

// The window itself: tells the render thread its size in pixels, and in
// software drawing puts the render thread's latest frame on the screen.
class GlOutputWindow::Surface final : public QWindow {
public:
    explicit Surface(GlOutputWindow& owner) : owner_(owner) { setSurfaceType(QWindow::OpenGLSurface); }

    // Render thread: keeps only the newest frame; one paint is queued at a time.
    void present(std::shared_ptr<const RasterImage> frame) {
        {
            std::lock_guard guard(frameLock_);
            latest_ = std::move(frame);
            if (paintQueued_) return;
            paintQueued_ = true;
        }
        QMetaObject::invokeMethod(this, [this] { paintLatest(); }, Qt::QueuedConnection);
    }

    // Main thread: an OpenGL window can't take raster frames; it is made
    // again as a raster window in the same place.
    void becomeRaster() {
        if (surfaceType() == QWindow::RasterSurface) return;
        const bool fullScreen = visibility() == QWindow::FullScreen;
        destroy();
        setSurfaceType(QWindow::RasterSurface);
        setFormat(QSurfaceFormat());
        if (fullScreen) showFullScreen();
        else show();
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        const qreal ratio = devicePixelRatio();
        std::lock_guard guard(owner_.lock_);
        owner_.widthPixels_ = static_cast<int>(std::lround(event->size().width() * ratio));
        owner_.heightPixels_ = static_cast<int>(std::lround(event->size().height() * ratio));
    }
    bool event(QEvent* event) override {
        if (event->type() == QEvent::Close) owner_.closed_.store(true);
        return QWindow::event(event);
    }
    void exposeEvent(QExposeEvent*) override {
        if (surfaceType() == QWindow::RasterSurface) paintLatest();
    }

private:
    void paintLatest() {
        std::shared_ptr<const RasterImage> frame;
        {
            std::lock_guard guard(frameLock_);
            paintQueued_ = false;
            frame = latest_;
        }
        if (!frame || !isExposed() || surfaceType() != QWindow::RasterSurface) return;
        if (!store_) store_ = std::make_unique<QBackingStore>(this);
        const QRect area(QPoint(), size());
        store_->resize(area.size());
        store_->beginPaint(area);
        {
            const QImage image(frame->bgra.data(), frame->width, frame->height, frame->width * 4,
                               QImage::Format_ARGB32_Premultiplied);
            QPainter painter(store_->paintDevice());
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.drawImage(area, image);
        }
        store_->endPaint();
        store_->flush(area);
    }

    GlOutputWindow& owner_;
    std::mutex frameLock_;
    std::shared_ptr<const RasterImage> latest_;
    bool paintQueued_ = false;
    std::unique_ptr<QBackingStore> store_;
};

GlOutputWindow::GlOutputWindow(QScreen* screen, const std::string& title, Clock clock, Drawing drawing)
    : clock_(std::move(clock)), drawing_(drawing), window_(std::make_unique<Surface>(*this)) {
    if (drawing_ == Drawing::software) window_->setSurfaceType(QWindow::RasterSurface);
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSwapInterval(1);
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setAlphaBufferSize(8);
    window_->setFormat(format);
    window_->setTitle(QString::fromStdString(title));
    if (screen) {
        window_->setScreen(screen);
        window_->setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        window_->setGeometry(screen->geometry());
        if (screen->refreshRate() > 1) refreshSeconds_ = 1 / screen->refreshRate();
        window_->showFullScreen();
    } else {
        window_->resize(960, 540);
        window_->show();
    }
    {
        std::lock_guard guard(lock_);
        widthPixels_ = static_cast<int>(std::lround(window_->width() * window_->devicePixelRatio()));
        heightPixels_ = static_cast<int>(std::lround(window_->height() * window_->devicePixelRatio()));
    }
    thread_ = std::thread([this] { run(); });
}

GlOutputWindow::~GlOutputWindow() {
    stopping_.store(true);
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
    window_->destroy();
}

void GlOutputWindow::show(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) {
    {
        std::lock_guard guard(lock_);
        pending_.push_back(Pending{scene, surfaces, nowSeconds});
    }
    wake_.notify_all();
}

void GlOutputWindow::setFrameObserver(FrameObserver observer) {
    std::lock_guard guard(lock_);
    observer_ = std::move(observer);
}

void GlOutputWindow::setVideoFrames(VideoFrameLookup lookup) {
    std::lock_guard guard(lock_);
    videoFrames_ = std::move(lookup);
}

QWindow& GlOutputWindow::window() { return *window_; }

RasterImage GlOutputWindow::lastReadBack() const {
    std::lock_guard guard(lock_);
    return readBackImage_;
}

std::optional<std::string> GlOutputWindow::failure() const {
    std::lock_guard guard(lock_);
    return failure_;
}

// Render thread, with no context current.
void GlOutputWindow::fallBack(const char* why) {
    std::fprintf(stderr, "velarion: %s; output window drawn in software\n", why);
    {
        std::lock_guard guard(lock_);
        failure_ = fallbackSentence;
    }
    Surface* surface = window_.get();
    QMetaObject::invokeMethod(surface, [surface] { surface->becomeRaster(); }, Qt::QueuedConnection);
}

void GlOutputWindow::presentSoftware(const SceneFrame& frame, int width, int height,
                                     const VideoFrameLookup& videoFrames) {
    auto image = std::make_shared<RasterImage>(width, height);
    CpuCompositor::draw(frame, *image, videoFrames);
    if (readBack_.load()) {
        std::lock_guard guard(lock_);
        readBackImage_ = *image;
    }
    window_->present(std::move(image));
}

void GlOutputWindow::run() {
    bool software = drawing_ == Drawing::software;
    QOpenGLContext context;
    if (!software) {
        context.setFormat(window_->requestedFormat());
        if (!context.create()) {
            fallBack("no OpenGL context");
            software = true;
        }
    }
    GlSceneDrawer drawer;
    int width = 0, height = 0;
    {
        std::lock_guard guard(lock_);
        width = widthPixels_, height = heightPixels_;
    }
    SceneRenderer renderer(width, height);
    SceneFrame frame;
    std::vector<Pending> taken;
    double nextFrame = clock_();
    while (!stopping_.load()) {
        FrameObserver observer;
        VideoFrameLookup videoFrames;
        {
            std::lock_guard guard(lock_);
            taken.swap(pending_);
            observer = observer_;
            videoFrames = videoFrames_;
            if (widthPixels_ != width || heightPixels_ != height) {
                width = widthPixels_, height = heightPixels_;
                renderer.resize(width, height);
                renderer.layout();
            }
        }
        // Every scene in order: a layer that left dissolves out by its last
        // description, so none may be skipped.
        for (const Pending& pending : taken) renderer.apply(pending.scene, pending.surfaces, pending.atSeconds);
        taken.clear();
        if (width <= 0 || height <= 0 || (!software && !context.makeCurrent(window_.get()))) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            continue;
        }
        const double at = clock_();
        renderer.drawList(at, frame);
        if (!software) {
            drawer.draw(frame, width, height, videoFrames);
            if (drawer.failed()) {
                drawer.release();
                context.doneCurrent();
                fallBack("the output shaders failed");
                software = true;
            }
        }
        if (software) {
            presentSoftware(frame, width, height, videoFrames);
        } else {
            if (readBack_.load()) {
                RasterImage image(width, height);
                context.functions()->glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE,
                                                  image.bgra.data());
                // GL rows run bottom up.
                const std::size_t stride = static_cast<std::size_t>(width) * 4;
                for (int row = 0; row < height / 2; ++row)
                    std::swap_ranges(image.bgra.begin() + row * stride, image.bgra.begin() + (row + 1) * stride,
                                     image.bgra.begin() + (height - 1 - row) * stride);
                std::lock_guard guard(lock_);
                readBackImage_ = std::move(image);
            }
            context.swapBuffers(window_.get());
        }
        renderer.collectFinished(at);
        framesDrawn_.fetch_add(1);
        if (observer) observer(at, frame);
        // Keep to the refresh rate where swapping doesn't wait for vsync.
        nextFrame = std::max(nextFrame + refreshSeconds_, clock_() - refreshSeconds_);
        const double wait = nextFrame - clock_();
        if (wait > 0) {
            std::unique_lock guard(lock_);
            wake_.wait_for(guard, std::chrono::duration<double>(wait), [this] { return stopping_.load(); });
        }
    }
    if (!software && context.makeCurrent(window_.get())) drawer.release();
    context.doneCurrent();
}

} // namespace velarion
