#include "VirtualScheduler.h"

#include <algorithm>

namespace velarion::testing {

VirtualScheduler::VirtualScheduler(double wallStartSeconds, std::int64_t utcOffsetSeconds)
    : wallStartSeconds_(wallStartSeconds), calendar_(utcOffsetSeconds) {}

void VirtualScheduler::post(Task task) {
    std::lock_guard guard(postedLock_);
    posted_.push_back(std::move(task));
}

TaskHandle VirtualScheduler::after(double seconds, Task task) {
    TaskHandle handle(std::make_shared<std::atomic<bool>>(false));
    queue_.push_back({nowSeconds_ + std::max(seconds, 0.0), nextOrder_++, handle, std::move(task)});
    return handle;
}

void VirtualScheduler::takePosted() {
    std::vector<Task> posted;
    {
        std::lock_guard guard(postedLock_);
        posted.swap(posted_);
    }
    for (Task& task : posted) after(0, std::move(task));
}

void VirtualScheduler::advance(double seconds) {
    const double endSeconds = nowSeconds_ + std::max(seconds, 0.0);
    for (;;) {
        takePosted();
        auto next = std::min_element(queue_.begin(), queue_.end(), [](const Entry& a, const Entry& b) {
            return a.dueSeconds != b.dueSeconds ? a.dueSeconds < b.dueSeconds : a.order < b.order;
        });
        if (next == queue_.end() || next->dueSeconds > endSeconds) break;
        Entry entry = std::move(*next);
        queue_.erase(next);
        if (entry.handle.isCancelled()) continue;
        nowSeconds_ = std::max(nowSeconds_, entry.dueSeconds);
        entry.task();
    }
    nowSeconds_ = endSeconds;
}

std::size_t VirtualScheduler::pendingCount() const {
    std::size_t count = 0;
    {
        std::lock_guard guard(postedLock_);
        count = posted_.size();
    }
    return count + static_cast<std::size_t>(std::count_if(
                       queue_.begin(), queue_.end(),
                       [](const Entry& entry) { return !entry.handle.isCancelled(); }));
}

} // namespace velarion::testing
