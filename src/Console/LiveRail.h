#pragma once
// LiveRail: what the operator needs during a show, at arm's length: the
// large GO with the Next cue's name, Panic (a second press during its fade
// stops everything), Safe Slide, Talk Over, Pause All and Resume All, the
// cues running now with their progress, the timer and messages on air, the
// sound meter and each output's health in words.
//
// Contract: main thread; the AppModel outlives the rail. `refresh` reads
// the engine's published state and redraws only what changed; `now` is the
// Scheduler's clock, for the Panic fade.

#include "LiveEngine/EngineState.h"

#include <QWidget>

#include <functional>
#include <vector>

class QLabel;
class QPushButton;
class QProgressBar;
class QVBoxLayout;

namespace velarion {
class AppModel;
}

namespace velarion::console {

// The running cues as one painted list: no widget per cue, so twenty of
// them cost one paint.
class RunningList final : public QWidget {
public:
    explicit RunningList(QWidget* parent = nullptr);
    // True when anything shown changed.
    bool setRunning(const std::vector<RunningCue>& running);
    QSize sizeHint() const override;
    static constexpr int rowHeight = 46;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::vector<RunningCue> running_;
};

class LiveRail final : public QWidget {
public:
    LiveRail(AppModel& model, std::function<double()> now, QWidget* parent = nullptr);

    void refresh();
    // The same for one published state of the open show's engine.
    void refresh(const EngineState& state);

    QPushButton& goButton() { return *go_; }
    QPushButton& panicButton() { return *panic_; }
    const RunningList& running() const { return *running_; }
    QString onAirText() const;

private:
    void setText(QLabel& label, const QString& text);

    AppModel& model_;
    std::function<double()> now_;
    QPushButton* go_ = nullptr;
    QPushButton* panic_ = nullptr;
    QPushButton* safe_ = nullptr;
    QPushButton* talk_ = nullptr;
    QPushButton* pauseAll_ = nullptr;
    QPushButton* resumeAll_ = nullptr;
    QProgressBar* panicFade_ = nullptr;
    RunningList* running_ = nullptr;
    QLabel* nothingRunning_ = nullptr;
    QLabel* onAir_ = nullptr;
    QProgressBar* meter_ = nullptr;
    QLabel* outputs_ = nullptr;
    QString nextName_;
};

} // namespace velarion::console
