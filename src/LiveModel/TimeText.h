#pragma once
// The one formatter and parser of times shown to or typed by the operator.
// Stateless; any thread.

#include <optional>
#include <string>
#include <string_view>

namespace velarion::TimeText {

// "1:05" or "1:02:05"; a negative value gets the minus sign U+2212.
std::string duration(double seconds);
// "9:30 AM" for minute 570 of the day.
std::string clock(int minuteOfDay);
// Whole seconds a timer shows: a positive countdown rounds up, so it shows 1
// until it reaches 0; counting up or below zero rounds down.
double timerSeconds(double value, bool isCountUp);
// "h:m:s", "m:s" or "s", each a decimal number.
std::optional<double> seconds(std::string_view text);
// "14:30", "2:30 PM", "9 am".
std::optional<int> minuteOfDay(std::string_view text);

} // namespace velarion::TimeText
