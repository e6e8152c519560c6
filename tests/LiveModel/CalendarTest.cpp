#include "LiveModel/TimerMode.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

// 2026-03-10 00:00:00 UTC.
constexpr double midnightUtc = 1773100800;

TEST(TimerModeTarget, PastTargetStaysTodayForTwoHoursThenMovesToTomorrow) {
    const FixedOffsetCalendar utc;
    const int nineAM = 9 * 60;
    const double nine = midnightUtc + 9 * 3600;
    // 1 h 59 min late: still today, shown as overrun.
    EXPECT_EQ(timerMode::target(nineAM, nine + 119 * 60, utc), nine);
    // 2 h 1 min late: the same clock time tomorrow.
    EXPECT_EQ(timerMode::target(nineAM, nine + 121 * 60, utc), nine + 86400);
    // Ahead of the target: today.
    EXPECT_EQ(timerMode::target(nineAM, nine - 3600, utc), nine);
}

TEST(TimerModeTarget, FollowsTheLocalDayNotTheUtcDay) {
    // UTC+10: local 08:00 on the 10th is 22:00 UTC on the 9th.
    const FixedOffsetCalendar east(10 * 3600);
    const double localMorning = midnightUtc - 2 * 3600; // 08:00 local, 10th
    const double expected = midnightUtc - 10 * 3600 + 9 * 3600; // 09:00 local, 10th
    EXPECT_EQ(timerMode::target(9 * 60, localMorning, east), expected);
}

} // namespace
} // namespace velarion
