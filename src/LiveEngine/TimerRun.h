#pragma once
// TimerRun: the one running timer. It counts on the Scheduler's clocks:
// monotonic seconds for countdowns and count-ups, wall-clock seconds for a
// count to a time of day, so a pause of a clock timer freezes the figure
// and a resume jumps back to the true time. Main thread; owned by the engine.

#include "Identity/Uuid.h"
#include "LiveEngine/StageInfo.h"
#include "LiveModel/Calendar.h"
#include "LiveModel/Cue.h"

#include <optional>

namespace velarion {

class TimerRun {
public:
    // `now` is monotonic, `wallNow` calendar time; both from the Scheduler.
    TimerRun(Uuid runID, Cue cue, TimerCue timer, double now, double wallNow,
             const Calendar& calendar);

    const Uuid& runID() const { return runID_; }
    const Cue& cue() const { return cue_; }
    const TimerCue& timer() const { return timer_; }
    bool isCountUp() const { return std::holds_alternative<CountUpMode>(timer_.mode); }
    bool isPaused() const { return pausedAt_.has_value(); }

    double activeElapsed(double now) const;
    double value(double now, double wallNow) const;
    TimerState snapshot(double now, double wallNow) const;

    void aim(double wallNow, const Calendar& calendar);
    void pause(double now, double wallNow);
    void resume(double now);
    void togglePause(double now, double wallNow);
    void reset(double now, double wallNow, const Calendar& calendar);
    void adjust(double seconds) { adjustSeconds_ += seconds; }

    // Set on the first tick at or below zero; the next tick clears it.
    bool finishedJustNow = false;
    bool wasFinished = false;

private:
    Uuid runID_;
    Cue cue_;
    TimerCue timer_;
    double started_;
    std::optional<double> pausedAt_;
    std::optional<double> pausedAtWall_;
    double pausedTotalSeconds_ = 0;
    double adjustSeconds_ = 0;
    std::optional<double> countToTarget_;
};

} // namespace velarion
