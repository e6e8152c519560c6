#include "Platform/Outputs/GlOutputWindow.h"

#include "Platform/Outputs/GlSceneDrawer.h"
#include "ShowStage/SceneRenderer.h"

#include <QGuiApplication>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QResizeEvent>
#include <QScreen>

#include <chrono>
#include <cmath>
#include <cstring>

namespace velarion {

// The window itself: tells the render thread its size in pixels.
class GlOutputWindow::Surface final : public QWindow {
public:
    explicit Surface(GlOutputWindow& owner) : owner_(owner) { setSurfaceType(QWindow::OpenGLSurface); }

protected:
    void resizeEvent(QResizeEvent* event) override {
        const qreal ratio = devicePixelRatio();
        std::lock_guard guard(owner_.lock_);
        owner_.widthPixels_ = static_cast<int>(std::lround(event->size().width() * ratio));
        owner_.heightPixels_ = static_cast<int>(std::lround(event->size().height() * ratio));
    }

private:
    GlOutputWindow& owner_;
};

GlOutputWindow::GlOutputWindow(QScreen* screen, const std::string& title, Clock clock)
    : clock_(std::move(clock)), window_(std::make_unique<Surface>(*this)) {
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

void GlOutputWindow::run() {
    QOpenGLContext context;
    context.setFormat(window_->requestedFormat());
    if (!context.create()) {
        std::fprintf(stderr, "velarion: no OpenGL context for an output window\n");
        return;
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
        if (!context.makeCurrent(window_.get()) || width <= 0 || height <= 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            continue;
        }
        const double at = clock_();
        renderer.drawList(at, frame);
        drawer.draw(frame, width, height, videoFrames);
        if (readBack_.load()) {
            RasterImage image(width, height);
            context.functions()->glReadPixels(0, 0, width, height, GL_BGRA, GL_UNSIGNED_BYTE, image.bgra.data());
            // GL rows run bottom up.
            const std::size_t stride = static_cast<std::size_t>(width) * 4;
            for (int row = 0; row < height / 2; ++row)
                std::swap_ranges(image.bgra.begin() + row * stride, image.bgra.begin() + (row + 1) * stride,
                                 image.bgra.begin() + (height - 1 - row) * stride);
            std::lock_guard guard(lock_);
            readBackImage_ = std::move(image);
        }
        context.swapBuffers(window_.get());
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
    if (context.makeCurrent(window_.get())) drawer.release();
    context.doneCurrent();
}

} // namespace velarion
