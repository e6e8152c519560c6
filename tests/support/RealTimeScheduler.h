#pragma once
// A Scheduler on the real clock for integration tests that play real sound:
// tasks run on the test's thread while it calls `runFor`, which sleeps
// between them. `post` is safe from any thread; everything else belongs to
// the test's thread. The calendar is UTC.

#include "LiveEngine/ports/ScheduledTasks.h"
#include "LiveEngine/ports/Scheduler.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <vector>

namespace velarion::testing {

class RealTimeScheduler final : public Scheduler {
public:
    RealTimeScheduler();

    double now() const override;
    double wallNow() const override;
    const Calendar& calendar() const override { return calendar_; }

    void post(Task task) override;
    TaskHandle after(double seconds, Task task) override;

    // Runs due tasks, in time order, until `seconds` have passed.
    void runFor(double seconds);

private:
    std::chrono::steady_clock::time_point origin_;
    FixedOffsetCalendar calendar_{0};
    std::mutex lock_; // `post` comes from any thread
    ScheduledTasks tasks_;
};

} // namespace velarion::testing
