#include "LiveEngine/ports/ScheduledTasks.h"

#include <algorithm>

namespace velarion {

namespace {

struct RunsLater {
    template <class Entry> bool operator()(const Entry& a, const Entry& b) const {
        return a.dueSeconds != b.dueSeconds ? a.dueSeconds > b.dueSeconds : a.order > b.order;
    }
};

} // namespace

TaskHandle ScheduledTasks::add(double dueSeconds, Scheduler::Task task) {
    TaskHandle handle(std::make_shared<std::atomic<bool>>(false));
    heap_.push_back(Entry{dueSeconds, nextOrder_++, handle, std::move(task)});
    std::push_heap(heap_.begin(), heap_.end(), RunsLater{});
    return handle;
}

std::optional<ScheduledTasks::Due> ScheduledTasks::takeDue(double untilSeconds) {
    while (!heap_.empty() && heap_.front().dueSeconds <= untilSeconds) {
        std::pop_heap(heap_.begin(), heap_.end(), RunsLater{});
        Entry entry = std::move(heap_.back());
        heap_.pop_back();
        if (!entry.handle.isCancelled()) return Due{entry.dueSeconds, std::move(entry.task)};
    }
    return std::nullopt;
}

std::optional<double> ScheduledTasks::nextDueSeconds() const {
    if (heap_.empty()) return std::nullopt;
    return heap_.front().dueSeconds;
}

std::size_t ScheduledTasks::pendingCount() const {
    return static_cast<std::size_t>(
        std::count_if(heap_.begin(), heap_.end(), [](const Entry& entry) { return !entry.handle.isCancelled(); }));
}

} // namespace velarion
