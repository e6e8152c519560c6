// The virtual-time scheduler every engine test stands on: if it ran tasks out
// of order or at the wrong moment, every timing test above it would lie.

#include "VirtualScheduler.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace velarion::testing {
namespace {

TEST(VirtualScheduler, RunsDueTasksInTimeOrderAtTheirOwnMoment) {
    VirtualScheduler scheduler;
    std::vector<std::string> log;
    auto note = [&](std::string what) {
        return [&, what] { log.push_back(what + "@" + std::to_string(scheduler.now())); };
    };
    scheduler.after(2, note("b"));
    scheduler.after(1, note("a"));
    scheduler.after(2, note("c")); // same moment: scheduling order
    scheduler.after(5, note("late"));
    scheduler.advance(3);
    EXPECT_EQ(log, (std::vector<std::string>{"a@1.000000", "b@2.000000", "c@2.000000"}));
    EXPECT_EQ(scheduler.now(), 3);
    EXPECT_EQ(scheduler.pendingCount(), 1u);
    scheduler.advance(2);
    EXPECT_EQ(log.back(), "late@5.000000");
}

TEST(VirtualScheduler, PostFromAnotherThreadRunsOnTheNextAdvance) {
    VirtualScheduler scheduler;
    int count = 0;
    std::thread worker([&] {
        for (int i = 0; i < 100; ++i) scheduler.post([&] { ++count; });
    });
    worker.join();
    EXPECT_EQ(count, 0);
    scheduler.runDue();
    EXPECT_EQ(count, 100);
}

} // namespace
} // namespace velarion::testing
