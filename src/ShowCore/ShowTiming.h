#pragma once
// When a cue or an action runs: waits, length, how the next one follows and
// which clock counts. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/DurationValue.h"

#include <optional>
#include <variant>

namespace velarion::showcore {

enum class CueTimebase { monotonic, wallClock };
SHOWCORE_CASE_NAMES(CueTimebase, "monotonic", "wallClock");

namespace progression {
struct StartWithNext {
    DurationValue delay;
    bool operator==(const StartWithNext&) const = default;
};
struct StartAfterThis {
    DurationValue delay;
    bool operator==(const StartAfterThis&) const = default;
};
struct Manual {
    bool operator==(const Manual&) const = default;
};
} // namespace progression

using CueProgression =
    std::variant<progression::StartWithNext, progression::StartAfterThis, progression::Manual>;

struct CueTiming {
    DurationValue preWait;
    std::optional<DurationValue> playDuration;
    DurationValue postWait;
    CueProgression progression = progression::Manual{};
    CueTimebase timebase = CueTimebase::monotonic;
    bool operator==(const CueTiming&) const = default;
};

} // namespace velarion::showcore
