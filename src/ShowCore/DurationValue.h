#pragma once
// A length of time in seconds that is finite and never negative. The only
// way to a value is `make`, which refuses anything else, so every
// DurationValue held anywhere obeys the rule. A plain value; any thread.

#include <compare>

namespace velarion::showcore {

class DurationValue {
public:
    static constexpr const char* invalidMessage = "Duration must be finite and nonnegative";

    constexpr DurationValue() = default;
    // Throws ShowValueError with `invalidMessage` for a negative, infinite
    // or NaN number of seconds.
    static DurationValue make(double seconds);

    constexpr double seconds() const { return seconds_; }

    friend constexpr bool operator==(const DurationValue&, const DurationValue&) = default;
    friend constexpr auto operator<=>(const DurationValue&, const DurationValue&) = default;

private:
    explicit constexpr DurationValue(double seconds) : seconds_(seconds) {}
    double seconds_ = 0;
};

} // namespace velarion::showcore
