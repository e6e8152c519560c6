#pragma once
// The operator's calendar: how far local clock time is from UTC at a given
// moment. Wall times in the core are seconds since the Unix epoch (UTC).
//
// Contract: implementations are immutable after construction and may be read
// from any thread. The application supplies one that follows the system's time
// zone; tests use FixedOffsetCalendar.

#include <cstdint>

namespace velarion {

class Calendar {
public:
    virtual ~Calendar() = default;
    // Seconds to add to a UTC moment to get local clock time at that moment.
    virtual std::int64_t utcOffsetSeconds(double unixSeconds) const = 0;

    // The UTC moment at which the local day holding `unixSeconds` begins.
    double startOfDay(double unixSeconds) const;
    // The local minute of the day (0 … 1439) at `unixSeconds`.
    int minuteOfDay(double unixSeconds) const;
    // The UTC moment of `minuteOfDay` on the local day that begins at
    // `dayStartSeconds` plus `dayOffset` days; follows offset changes.
    double momentOnDay(double dayStartSeconds, int dayOffset, int minuteOfDay) const;
};

class FixedOffsetCalendar final : public Calendar {
public:
    explicit FixedOffsetCalendar(std::int64_t offsetSeconds = 0) : offset_(offsetSeconds) {}
    std::int64_t utcOffsetSeconds(double) const override { return offset_; }

private:
    std::int64_t offset_;
};

} // namespace velarion
