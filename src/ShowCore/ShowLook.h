#pragma once
// Transitions between pictures, and looks: per-destination backgrounds and
// hidden layers applied together. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/DurationValue.h"

#include <string>
#include <vector>

namespace velarion::showcore {

enum class TransitionStyle { cut, dissolve, fadeThroughBlack, slide, push, wipe };
SHOWCORE_CASE_NAMES(TransitionStyle, "cut", "dissolve", "fadeThroughBlack", "slide", "push", "wipe");

enum class TransitionDirection { left, right, up, down };
SHOWCORE_CASE_NAMES(TransitionDirection, "left", "right", "up", "down");

struct ShowTransition {
    Uuid id;
    std::string name;
    TransitionStyle style = TransitionStyle::dissolve;
    DurationValue duration;
    TransitionDirection direction = TransitionDirection::left;
    bool operator==(const ShowTransition&) const = default;
};

struct DestinationLookRule {
    Uuid id;
    Uuid destinationID;
    std::string backgroundHex = "#000000";
    std::vector<Uuid> hiddenLayerIDs;
    bool operator==(const DestinationLookRule&) const = default;
};

struct ShowLook {
    Uuid id;
    std::string name;
    std::vector<DestinationLookRule> rules;
    bool operator==(const ShowLook&) const = default;
};

} // namespace velarion::showcore
