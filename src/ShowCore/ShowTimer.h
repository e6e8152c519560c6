#pragma once
// Timers the show runs, their looks, and messages to the stage. Plain
// values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/ControlProfile.h"
#include "ShowCore/DurationValue.h"
#include "ShowCore/ShowDate.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velarion::showcore {

namespace timerKind {
struct Countdown {
    DurationValue duration;
    bool operator==(const Countdown&) const = default;
};
struct TargetTime {
    ShowDate time;
    bool operator==(const TargetTime&) const = default;
};
struct CountUp {
    bool operator==(const CountUp&) const = default;
};
struct Stopwatch {
    bool operator==(const Stopwatch&) const = default;
};
struct TimeOfDay {
    bool operator==(const TimeOfDay&) const = default;
};
} // namespace timerKind

using ShowTimerKind = std::variant<timerKind::Countdown, timerKind::TargetTime, timerKind::CountUp,
                                   timerKind::Stopwatch, timerKind::TimeOfDay>;

namespace completion {
struct ChangeStyle {
    Uuid styleID;
    bool operator==(const ChangeStyle&) const = default;
};
struct FireCue {
    Uuid cueID;
    bool operator==(const FireCue&) const = default;
};
struct SendControl {
    ControlTarget target;
    bool operator==(const SendControl&) const = default;
};
struct HoldAtZero {
    bool operator==(const HoldAtZero&) const = default;
};
struct ContinueNegative {
    bool operator==(const ContinueNegative&) const = default;
};
} // namespace completion

using ShowTimerCompletionPolicy = std::variant<completion::ChangeStyle, completion::FireCue, completion::SendControl,
                                               completion::HoldAtZero, completion::ContinueNegative>;

struct ShowTimer {
    Uuid id;
    std::string title;
    ShowTimerKind kind = timerKind::CountUp{};
    ShowTimerCompletionPolicy completionPolicy = completion::HoldAtZero{};
    std::optional<Uuid> styleID;
    std::vector<Uuid> destinationIDs;
    bool isOperatorOnly = false;
    bool operator==(const ShowTimer&) const = default;
};

struct ShowTimerStyle {
    Uuid id;
    std::string name;
    std::string foregroundHex = "#FFFFFF";
    std::string backgroundHex = "#000000";
    std::string completionForegroundHex = "#FF3B30";
    bool operator==(const ShowTimerStyle&) const = default;
};

struct OperatorMessage {
    Uuid id;
    std::string text;
    std::vector<Uuid> destinationIDs;
    ShowDate createdAt;
    std::optional<ShowDate> expiresAt;
    bool operator==(const OperatorMessage&) const = default;
};

} // namespace velarion::showcore
