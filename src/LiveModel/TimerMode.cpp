#include "LiveModel/TimerMode.h"

namespace velarion {

double timerMode::target(int minuteOfDay, double fromSeconds, const Calendar& calendar) {
    // How far past a target still counts as "today, overrun".
    constexpr double overrunWindowSeconds = 7200;
    const double dayStart = calendar.startOfDay(fromSeconds);
    const double today = calendar.momentOnDay(dayStart, 0, minuteOfDay);
    if (fromSeconds - today > overrunWindowSeconds) {
        return calendar.momentOnDay(dayStart, 1, minuteOfDay);
    }
    return today;
}

} // namespace velarion
