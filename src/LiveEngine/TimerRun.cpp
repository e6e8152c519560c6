#include "LiveEngine/TimerRun.h"

#include <algorithm>

namespace velarion {

TimerRun::TimerRun(Uuid runID, Cue cue, TimerCue timer, double now, double wallNow,
                   const Calendar& calendar)
    : runID_(runID), cue_(std::move(cue)), timer_(std::move(timer)), started_(now) {
    aim(wallNow, calendar);
}

double TimerRun::activeElapsed(double now) const {
    return std::max(0.0, pausedAt_.value_or(now) - started_ - pausedTotalSeconds_);
}

double TimerRun::value(double now, double wallNow) const {
    if (const auto* countdown = std::get_if<CountdownMode>(&timer_.mode))
        return countdown->seconds + adjustSeconds_ - activeElapsed(now);
    if (isCountUp()) return activeElapsed(now) + adjustSeconds_;
    return countToTarget_.value_or(wallNow) - pausedAtWall_.value_or(wallNow) + adjustSeconds_;
}

TimerState TimerRun::snapshot(double now, double wallNow) const {
    TimerState state;
    state.cueID = cue_.id;
    state.name = cue_.name;
    state.valueSeconds = value(now, wallNow);
    state.isCountUp = isCountUp();
    state.isPaused = isPaused();
    state.showOnAudience = timer_.showOnAudience;
    if (const auto* countdown = std::get_if<CountdownMode>(&timer_.mode))
        state.totalSeconds = countdown->seconds;
    if (!state.isCountUp) {
        state.isOverrun = state.valueSeconds <= 0;
        state.isWarning = state.valueSeconds <= timer_.warnAt && state.valueSeconds > 0;
        if (!state.isPaused) state.endsAt = wallNow + state.valueSeconds;
    }
    return state;
}

void TimerRun::aim(double wallNow, const Calendar& calendar) {
    if (const auto* countTo = std::get_if<CountToMode>(&timer_.mode))
        countToTarget_ = timerMode::target(countTo->minuteOfDay, wallNow, calendar);
}

void TimerRun::pause(double now, double wallNow) {
    if (pausedAt_) return;
    pausedAt_ = now;
    pausedAtWall_ = wallNow;
}

void TimerRun::resume(double now) {
    if (!pausedAt_) return;
    pausedTotalSeconds_ += now - *pausedAt_;
    pausedAt_.reset();
    pausedAtWall_.reset();
}

void TimerRun::togglePause(double now, double wallNow) {
    if (pausedAt_) resume(now);
    else pause(now, wallNow);
}

void TimerRun::reset(double now, double wallNow, const Calendar& calendar) {
    started_ = now;
    if (pausedAt_) {
        pausedAt_ = now;
        pausedAtWall_ = wallNow;
    }
    pausedTotalSeconds_ = 0;
    adjustSeconds_ = 0;
    finishedJustNow = false;
    wasFinished = false;
    aim(wallNow, calendar);
}

} // namespace velarion
