#pragma once
// A Scheduler in virtual time for tests: nothing runs until the test moves
// time on, so a two-second fade or a twenty-minute countdown is tested in
// microseconds and never flakes.
//
// `advance(seconds)` runs every task that falls due within the span, in time
// order (ties in the order they were scheduled), each with `now()` set to its
// own moment, including tasks that those tasks schedule; then time rests at
// the end of the span. `post` is safe from any thread; everything else
// belongs to the test's thread.

#include "LiveEngine/ports/ScheduledTasks.h"
#include "LiveEngine/ports/Scheduler.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace velarion::testing {

class VirtualScheduler final : public Scheduler {
public:
    // Wall time starts at `wallStartSeconds` (Unix seconds) in the given
    // fixed time zone; monotonic time starts at 0.
    explicit VirtualScheduler(double wallStartSeconds = 1'773'136'800, // 2026-03-10 10:00 UTC
                              std::int64_t utcOffsetSeconds = 0);

    double now() const override { return nowSeconds_; }
    double wallNow() const override { return wallStartSeconds_ + nowSeconds_; }
    const Calendar& calendar() const override { return calendar_; }

    void post(Task task) override;
    TaskHandle after(double seconds, Task task) override;

    void advance(double seconds);
    // Runs what is due now, posted tasks included, without moving time.
    void runDue() { advance(0); }
    // Tasks waiting, cancelled ones left out.
    std::size_t pendingCount() const;

private:
    void takePosted();

    double nowSeconds_ = 0;
    double wallStartSeconds_;
    FixedOffsetCalendar calendar_;
    ScheduledTasks tasks_;
    mutable std::mutex postedLock_;
    std::vector<Task> posted_;
};

} // namespace velarion::testing
