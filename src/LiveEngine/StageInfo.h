#pragma once
// What the engine publishes about the timer and for the Stage Display.
// Plain values with full equality; dates are wall-clock seconds since the
// Unix epoch.

#include "Identity/Uuid.h"
#include "LiveModel/EnumNames.h"

#include <optional>
#include <string>

namespace velarion {

struct TimerState {
    Uuid cueID;
    std::string name;
    double valueSeconds = 0;
    std::optional<double> totalSeconds;
    bool isCountUp = false;
    bool isPaused = false;
    bool isWarning = false;
    bool isOverrun = false;
    bool showOnAudience = false;
    std::optional<double> endsAt;
    friend bool operator==(const TimerState&, const TimerState&) = default;
};

struct ConfidenceState {
    std::optional<int> slideNumber; // from 1
    std::optional<int> slideCount;
    std::string sectionName;
    std::optional<std::string> currentSlide; // a picture file path
    std::optional<std::string> nextSlide;
    std::string notes;
    std::optional<std::string> stageMessage;
    friend bool operator==(const ConfidenceState&, const ConfidenceState&) = default;
};

// What the Stage Display gives most room to.
enum class SpeakerLayout { slides, timer, standby };
VELARION_ENUM_NAMES(SpeakerLayout, "slides", "timer", "standby");

} // namespace velarion
