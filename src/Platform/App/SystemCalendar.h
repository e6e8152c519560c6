#pragma once
// SystemCalendar: the operator's calendar from the system's time zone (TZ,
// else /etc/localtime), as the C library reads it.
//
// Contract: as Calendar. Immutable, any thread.

#include "LiveModel/Calendar.h"

namespace velarion {

class SystemCalendar final : public Calendar {
public:
    std::int64_t utcOffsetSeconds(double unixSeconds) const override;
};

} // namespace velarion
