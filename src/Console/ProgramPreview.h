#pragma once
// ProgramPreview: the audience's picture of the program screen, live, in the
// console. A CpuSceneMirror receives every program scene from the output
// manager; the picture is drawn at preview size by the CPU compositor on a
// worker thread, one at a time, so neither the main loop nor the outputs'
// render threads wait for it. Without windows (headless outputs) it follows
// the last scene the outputs kept.
//
// Contract: main thread; the AppModel outlives it. `refresh` is called
// often (each console tick): it re-registers with a new show's manager and
// starts a draw when the picture may have moved on.

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>

namespace velarion {
class AppModel;
class CpuSceneMirror;
class OutputManager;
} // namespace velarion

namespace velarion::console {

class ProgramPreview final : public QWidget {
public:
    static constexpr int previewWidth = 480;
    static constexpr int previewHeight = 270;

    ProgramPreview(AppModel& model, std::function<double()> now, QWidget* parent = nullptr);
    ~ProgramPreview() override;

    void refresh();
    // Draws the picture at `atSeconds` on the Scheduler's clock, on this
    // thread: for snapshots and tests.
    QImage drawAt(double atSeconds);
    const QImage& picture() const { return picture_; }
    int picturesDrawn() const { return drawn_; }

    QSize sizeHint() const override { return {previewWidth, previewHeight + 24}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width * 9 / 16 + 24; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void attach();
    void startDraw(double atSeconds);

    AppModel& model_;
    std::function<double()> now_;
    std::shared_ptr<CpuSceneMirror> mirror_;
    OutputManager* attachedTo_ = nullptr;
    std::size_t headlessScenes_ = 0;
    int scenesDrawn_ = -1;
    double animateUntil_ = 0;
    bool drawing_ = false;
    QImage picture_;
    int drawn_ = 0;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion::console
