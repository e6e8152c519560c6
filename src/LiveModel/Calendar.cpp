#include "LiveModel/Calendar.h"

#include <cmath>

namespace velarion {

namespace {
constexpr double secondsPerDay = 86400;

// Local clock seconds back to UTC; the offset is taken at the guessed moment
// so a day that crosses a daylight-saving change still lands on its clock time.
double utcFromLocal(const Calendar& calendar, double localSeconds, double hintUtc) {
    double guess = localSeconds - static_cast<double>(calendar.utcOffsetSeconds(hintUtc));
    return localSeconds - static_cast<double>(calendar.utcOffsetSeconds(guess));
}
} // namespace

double Calendar::startOfDay(double unixSeconds) const {
    const double local = unixSeconds + static_cast<double>(utcOffsetSeconds(unixSeconds));
    const double localDayStart = std::floor(local / secondsPerDay) * secondsPerDay;
    return utcFromLocal(*this, localDayStart, unixSeconds);
}

double Calendar::momentOnDay(double dayStartSeconds, int dayOffset, int minuteOfDay) const {
    const double localDayStart =
        dayStartSeconds + static_cast<double>(utcOffsetSeconds(dayStartSeconds));
    const double local = localDayStart + dayOffset * secondsPerDay + minuteOfDay * 60.0;
    return utcFromLocal(*this, local, dayStartSeconds);
}

int Calendar::minuteOfDay(double unixSeconds) const {
    const double local = unixSeconds + static_cast<double>(utcOffsetSeconds(unixSeconds));
    const double secondsIntoDay = local - std::floor(local / 86400.0) * 86400.0;
    return static_cast<int>(std::floor(secondsIntoDay / 60.0));
}

} // namespace velarion
