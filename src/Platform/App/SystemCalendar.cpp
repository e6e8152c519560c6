#include "Platform/App/SystemCalendar.h"

#include <cmath>
#include <ctime>

namespace velarion {

std::int64_t SystemCalendar::utcOffsetSeconds(double unixSeconds) const {
    const auto moment = static_cast<std::time_t>(std::floor(unixSeconds));
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) return 0;
    return local.tm_gmtoff;
}

} // namespace velarion
