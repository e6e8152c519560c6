#include "RealTimeScheduler.h"

#include <algorithm>
#include <thread>

namespace velarion::testing {

RealTimeScheduler::RealTimeScheduler() : origin_(std::chrono::steady_clock::now()) {}

double RealTimeScheduler::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - origin_).count();
}

double RealTimeScheduler::wallNow() const {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void RealTimeScheduler::post(Task task) { after(0, std::move(task)); }

TaskHandle RealTimeScheduler::after(double seconds, Task task) {
    std::lock_guard guard(lock_);
    return tasks_.add(now() + std::max(seconds, 0.0), std::move(task));
}

void RealTimeScheduler::runFor(double seconds) {
    const double end = now() + seconds;
    for (;;) {
        std::optional<ScheduledTasks::Due> due;
        double wake = end;
        {
            std::lock_guard guard(lock_);
            due = tasks_.takeDue(now());
            if (!due) wake = std::min(end, tasks_.nextDueSeconds().value_or(end));
        }
        if (due) {
            due->task();
            continue;
        }
        const double current = now();
        if (current >= end) return;
        std::this_thread::sleep_for(std::chrono::duration<double>(std::clamp(wake - current, 0.0, 0.005)));
    }
}

} // namespace velarion::testing
