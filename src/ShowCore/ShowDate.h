#pragma once
// A wall-clock time of the show graph: whole milliseconds since
// 1970-01-01T00:00:00Z, UTC. Its one text form, used in JSON, is RFC 3339 in
// UTC with exactly three fraction digits: "2026-11-24T08:18:34.125Z". The
// reader takes that form, and the same without a fraction, for the years
// 0000 to 9999; nothing else. A plain value; any thread.

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velarion::showcore {

struct ShowDate {
    // 0000-01-01T00:00:00.000Z and 9999-12-31T23:59:59.999Z.
    static constexpr std::int64_t earliestMilliseconds = -62'167'219'200'000;
    static constexpr std::int64_t latestMilliseconds = 253'402'300'799'999;

    std::int64_t millisecondsSinceEpoch = 0;

    bool hasTextForm() const {
        return millisecondsSinceEpoch >= earliestMilliseconds && millisecondsSinceEpoch <= latestMilliseconds;
    }
    // The text form; requires hasTextForm().
    std::string text() const;
    static std::optional<ShowDate> parse(std::string_view text);

    friend bool operator==(const ShowDate&, const ShowDate&) = default;
    friend auto operator<=>(const ShowDate&, const ShowDate&) = default;
};

} // namespace velarion::showcore
