#pragma once
// Scheduler: the engine's only source of time and its only way to run work
// later. The engine never reads a clock or sleeps; it asks this port.
//
// Contract.
// - `now()` is monotonic seconds from an arbitrary origin; `wallNow()` is
//   calendar time, seconds since the Unix epoch (UTC), and `calendar()` tells
//   the operator's local time zone.
// - `post` may be called from any thread; the task runs later on the main
//   loop, in the order posted. Everything else belongs to the main thread.
// - `after` runs the task on the main loop once `seconds` have passed (0 or
//   less: as soon as possible, after what is already due). The handle cancels
//   it; cancelling a task that ran or was cancelled does nothing. Dropping the
//   handle does not cancel.
// - Ownership: the scheduler owns queued tasks. After it is destroyed no
//   queued task runs, and tasks must not outlive what they capture: capture
//   weakly or cancel in the owner's destructor.
//
// Implementations: the application's Qt event loop, and VirtualScheduler in
// tests, which runs in virtual time.

#include "LiveModel/Calendar.h"

#include <atomic>
#include <functional>
#include <memory>

namespace velarion {

class TaskHandle {
public:
    TaskHandle() = default;
    explicit TaskHandle(std::shared_ptr<std::atomic<bool>> cancelled)
        : cancelled_(std::move(cancelled)) {}

    void cancel() const {
        if (cancelled_) cancelled_->store(true);
    }
    // True once cancelled; a default handle refers to no task.
    bool isCancelled() const { return cancelled_ && cancelled_->load(); }
    bool refersToTask() const { return cancelled_ != nullptr; }

private:
    std::shared_ptr<std::atomic<bool>> cancelled_;
};

class Scheduler {
public:
    using Task = std::function<void()>;

    virtual ~Scheduler() = default;

    virtual double now() const = 0;
    virtual double wallNow() const = 0;
    virtual const Calendar& calendar() const = 0;

    virtual void post(Task task) = 0;
    virtual TaskHandle after(double seconds, Task task) = 0;
};

} // namespace velarion
