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
    TaskHandle handle(std::make_shared<std::atomic<bool>>(false));
    std::lock_guard guard(lock_);
    queue_.push_back(Entry{now() + std::max(seconds, 0.0), nextOrder_++, handle, std::move(task)});
    return handle;
}

void RealTimeScheduler::runFor(double seconds) {
    const double end = now() + seconds;
    for (;;) {
        Entry next;
        double sleepSeconds = 0;
        {
            std::lock_guard guard(lock_);
            auto first = std::min_element(queue_.begin(), queue_.end(), [](const Entry& a, const Entry& b) {
                return a.dueSeconds != b.dueSeconds ? a.dueSeconds < b.dueSeconds : a.order < b.order;
            });
            const double current = now();
            if (first == queue_.end() || first->dueSeconds > current) {
                const double wake = first == queue_.end() ? end : std::min(end, first->dueSeconds);
                if (current >= end) return;
                sleepSeconds = std::min(wake - current, 0.005);
            } else {
                next = std::move(*first);
                queue_.erase(first);
            }
        }
        if (sleepSeconds > 0)
            std::this_thread::sleep_for(std::chrono::duration<double>(sleepSeconds));
        else if (next.task && !next.handle.isCancelled())
            next.task();
    }
}

} // namespace velarion::testing
