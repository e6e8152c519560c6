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
    return tasks_.add(nowSeconds_ + std::max(seconds, 0.0), std::move(task));
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
        auto due = tasks_.takeDue(endSeconds);
        if (!due) break;
        nowSeconds_ = std::max(nowSeconds_, due->dueSeconds);
        due->task();
    }
    nowSeconds_ = endSeconds;
}

std::size_t VirtualScheduler::pendingCount() const {
    std::size_t count = 0;
    {
        std::lock_guard guard(postedLock_);
        count = posted_.size();
    }
    return count + tasks_.pendingCount();
}

} // namespace velarion::testing
