#include "Platform/App/QtScheduler.h"

#include <QMetaObject>

#include <algorithm>
#include <cmath>

namespace velarion {

QtScheduler::QtScheduler() : origin_(std::chrono::steady_clock::now()) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, this, [this] { runDue(); });
}

QtScheduler::~QtScheduler() {
    timer_.stop();
    tasks_.clear();
}

double QtScheduler::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - origin_).count();
}

double QtScheduler::wallNow() const {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void QtScheduler::post(Task task) {
    {
        std::lock_guard lock(postedLock_);
        posted_.push_back(std::move(task));
        if (wakePending_) return;
        wakePending_ = true;
    }
    // Queued to this object's thread, the main one, whichever thread posts.
    QMetaObject::invokeMethod(this, [this] { runDue(); }, Qt::QueuedConnection);
}

TaskHandle QtScheduler::after(double seconds, Task task) {
    TaskHandle handle = tasks_.add(now() + (std::isfinite(seconds) ? std::max(seconds, 0.0) : 0.0), std::move(task));
    if (!running_) arm();
    return handle;
}

void QtScheduler::takePosted() {
    std::vector<Task> posted;
    {
        std::lock_guard lock(postedLock_);
        posted.swap(posted_);
        wakePending_ = false;
    }
    const double current = now();
    for (Task& task : posted) tasks_.add(current, std::move(task));
}

void QtScheduler::runDue() {
    running_ = true;
    takePosted();
    // Only what is due on entry runs now, so a task that keeps scheduling
    // work for "now" can't starve the rest of the event loop.
    const double until = now();
    while (auto due = tasks_.takeDue(until)) due->task();
    running_ = false;
    arm();
}

void QtScheduler::arm() {
    const std::optional<double> next = tasks_.nextDueSeconds();
    if (!next) {
        timer_.stop();
        return;
    }
    const double wait = std::max(*next - now(), 0.0);
    // Whole milliseconds, rounded up: a timer must never run a task early.
    timer_.start(static_cast<int>(std::ceil(wait * 1000)));
}

} // namespace velarion
