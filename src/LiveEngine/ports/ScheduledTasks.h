#pragma once
// ScheduledTasks: the queue behind every Scheduler: tasks by due time, ties
// in the order they were scheduled, so the application's event loop, the
// tests' virtual time and their real-time loop all run tasks in one order.
//
// Contract: a plain value with no locking; its owner keeps it on one thread.
// Cancelled tasks are skipped when they come up and don't count as pending.

#include "LiveEngine/ports/Scheduler.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace velarion {

class ScheduledTasks {
public:
    struct Due {
        double dueSeconds;
        Scheduler::Task task;
    };

    // Queues a task; the handle cancels it.
    TaskHandle add(double dueSeconds, Scheduler::Task task);
    // The first task due at or before `untilSeconds`, taken off the queue;
    // none when nothing not cancelled is due by then.
    std::optional<Due> takeDue(double untilSeconds);
    // When the first task falls due, cancelled ones included; none when empty.
    std::optional<double> nextDueSeconds() const;
    std::size_t pendingCount() const;
    void clear() { heap_.clear(); }

private:
    struct Entry {
        double dueSeconds;
        std::uint64_t order;
        TaskHandle handle;
        Scheduler::Task task;
    };
    std::vector<Entry> heap_; // the entry that runs first on top
    std::uint64_t nextOrder_ = 0;
};

} // namespace velarion
