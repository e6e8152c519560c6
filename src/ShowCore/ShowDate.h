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
    std::int64_t millisecondsSinceEpoch = 0;

    std::string text() const;
    static std::optional<ShowDate> parse(std::string_view text);

    friend bool operator==(const ShowDate&, const ShowDate&) = default;
    friend auto operator<=>(const ShowDate&, const ShowDate&) = default;
};

} // namespace velarion::showcore
