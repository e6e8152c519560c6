#include "ShowCore/ShowDate.h"

#include <chrono>
#include <cstdio>

namespace velarion::showcore {

namespace {

using namespace std::chrono;

constexpr std::int64_t millisecondsPerDay = 86'400'000;
// 0000-01-01 and 10000-01-01 as days since the epoch.
constexpr std::int64_t firstDay = -719'528;
constexpr std::int64_t endDay = 2'932'897;

// Floor division, so that times before 1970 land on the right day.
std::int64_t floorDiv(std::int64_t a, std::int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }

bool readDigits(std::string_view text, std::size_t at, std::size_t count, int& out) {
    if (at + count > text.size()) return false;
    out = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        out = out * 10 + (text[i] - '0');
    }
    return true;
}

} // namespace

std::string ShowDate::text() const {
    const std::int64_t day = floorDiv(millisecondsSinceEpoch, millisecondsPerDay);
    const std::int64_t inDay = millisecondsSinceEpoch - day * millisecondsPerDay;
    const year_month_day date{sys_days{days{day}}};
    const auto hours = inDay / 3'600'000;
    const auto minutes = inDay / 60'000 % 60;
    const auto seconds = inDay / 1000 % 60;
    const auto millis = inDay % 1000;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02lld:%02lld:%02lld.%03lldZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<long long>(hours),
                  static_cast<long long>(minutes), static_cast<long long>(seconds),
                  static_cast<long long>(millis));
    return buffer;
}

std::optional<ShowDate> ShowDate::parse(std::string_view text) {
    // YYYY-MM-DDTHH:MM:SS[.fff]Z
    if (text.size() != 20 && text.size() != 24) return std::nullopt;
    int y, mo, d, h, mi, s, ms = 0;
    if (!readDigits(text, 0, 4, y) || text[4] != '-' || !readDigits(text, 5, 2, mo) ||
        text[7] != '-' || !readDigits(text, 8, 2, d) || text[10] != 'T' ||
        !readDigits(text, 11, 2, h) || text[13] != ':' || !readDigits(text, 14, 2, mi) ||
        text[16] != ':' || !readDigits(text, 17, 2, s) || text.back() != 'Z') {
        return std::nullopt;
    }
    if (text.size() == 24 && (text[19] != '.' || !readDigits(text, 20, 3, ms))) return std::nullopt;
    const year_month_day date{year{y}, month{static_cast<unsigned>(mo)}, day{static_cast<unsigned>(d)}};
    if (!date.ok() || h > 23 || mi > 59 || s > 59) return std::nullopt;
    const std::int64_t dayNumber = sys_days{date}.time_since_epoch().count();
    if (dayNumber < firstDay || dayNumber >= endDay) return std::nullopt;
    return ShowDate{dayNumber * millisecondsPerDay + h * 3'600'000LL + mi * 60'000LL + s * 1000LL + ms};
}

} // namespace velarion::showcore
