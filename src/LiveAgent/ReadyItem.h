#pragma once
// One line of the pre-show Ready check: an area, how it stands, and plain
// words for the operator. The agent reads the same lines as the console.
//
// Thread: a plain value; any thread.

#include "LiveModel/EnumNames.h"

#include <optional>
#include <string>

namespace velarion {

enum class ReadyGroup { screens, sound, music, media, schedule, control };
VELARION_ENUM_NAMES(ReadyGroup, "screens", "sound", "music", "media", "schedule", "control");

enum class ReadyStatus { ready, attention, optional };
VELARION_ENUM_NAMES(ReadyStatus, "ready", "attention", "optional");

struct ReadyItem {
    ReadyGroup group = ReadyGroup::screens;
    ReadyStatus status = ReadyStatus::ready;
    std::string title;
    std::string detail;
    std::optional<std::string> fixLabel; // the words of the button leading to the fix
    friend bool operator==(const ReadyItem&, const ReadyItem&) = default;
};

} // namespace velarion
