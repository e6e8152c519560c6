#pragma once
// How a timer cue counts, and its full-screen look.

#include "LiveModel/Calendar.h"
#include "LiveModel/EnumNames.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string_view>
#include <variant>

namespace velarion {

struct CountdownMode {
    double seconds = 0;
    friend bool operator==(const CountdownMode&, const CountdownMode&) = default;
};
struct CountToMode {
    int minuteOfDay = 0;
    friend bool operator==(const CountToMode&, const CountToMode&) = default;
};
struct CountUpMode {
    friend bool operator==(const CountUpMode&, const CountUpMode&) = default;
};

using TimerMode = std::variant<CountdownMode, CountToMode, CountUpMode>;

// The moment a countTo timer aims at: that minute of the calendar day of
// `from`, or of the next day once `from` is more than two hours past it, so a
// target a little in the past counts as overrun and an older one means
// tomorrow. The zone is the operator's calendar, passed in so that tests and
// the engine agree on it. Times are seconds since the Unix epoch.
namespace timerMode {
double target(int minuteOfDay, double fromSeconds, const Calendar& calendar);
}

enum class BuiltInBackdrop { drift, ember, mono, dawn, forest, ocean };
VELARION_ENUM_NAMES(BuiltInBackdrop, "drift", "ember", "mono", "dawn", "forest", "ocean");

constexpr std::string_view displayName(BuiltInBackdrop backdrop) {
    constexpr std::string_view names[] = {"Drift", "Ember", "Mono", "Dawn", "Forest", "Ocean"};
    return names[static_cast<int>(backdrop)];
}

namespace backdrop {
struct Color {
    int rgb = 0; // packed 0xRRGGBB
    friend bool operator==(const Color&, const Color&) = default;
};
struct Media {
    Uuid mediaID;
    friend bool operator==(const Media&, const Media&) = default;
};
struct BuiltIn {
    BuiltInBackdrop loop = BuiltInBackdrop::drift;
    friend bool operator==(const BuiltIn&, const BuiltIn&) = default;
};
struct None {
    friend bool operator==(const None&, const None&) = default;
};
} // namespace backdrop

// What fills the screen behind a full-screen timer or a deck.
using Backdrop = std::variant<backdrop::Color, backdrop::Media, backdrop::BuiltIn, backdrop::None>;

enum class CountdownLayout { corner, fullScreen };
VELARION_ENUM_NAMES(CountdownLayout, "corner", "fullScreen");

struct CountdownLook {
    CountdownLayout layout = CountdownLayout::corner;
    Backdrop backdrop = backdrop::None{};
    std::optional<Uuid> logoID;
    friend bool operator==(const CountdownLook&, const CountdownLook&) = default;
};

} // namespace velarion
