#pragma once
// One line of the pre-show Ready check: an area, how it stands, plain words
// for the operator, and where it helps the place to fix it. The console and
// the agent read the same lines.
//
// Thread: plain values; any thread.

#include "LiveModel/EnumNames.h"
#include "LiveModel/StreamApp.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velarion {

// In the order the list shows them.
enum class ReadyGroup { screens, sound, music, media, schedule, control };
VELARION_ENUM_NAMES(ReadyGroup, "screens", "sound", "music", "media", "schedule", "control");

// The heading the list shows above a group: "Slides & media" …
std::string_view heading(ReadyGroup group);

enum class ReadyStatus { ready, attention, optional };
VELARION_ENUM_NAMES(ReadyStatus, "ready", "attention", "optional");

// Where an item's button leads.
namespace readyFix {
struct OpenApp {
    StreamApp app = StreamApp::spotify;
    friend bool operator==(const OpenApp&, const OpenApp&) = default;
};
struct FindMedia {
    Uuid mediaID;
    friend bool operator==(const FindMedia&, const FindMedia&) = default;
};
struct EditCue {
    Uuid cueID;
    friend bool operator==(const EditCue&, const EditCue&) = default;
};
struct OpenOutputs {
    friend bool operator==(const OpenOutputs&, const OpenOutputs&) = default;
};
struct OpenAudio {
    friend bool operator==(const OpenAudio&, const OpenAudio&) = default;
};
struct ShowLibrary {
    friend bool operator==(const ShowLibrary&, const ShowLibrary&) = default;
};
struct OpenMIDI {
    friend bool operator==(const OpenMIDI&, const OpenMIDI&) = default;
};
} // namespace readyFix

using ReadyFix = std::variant<readyFix::OpenApp, readyFix::FindMedia, readyFix::EditCue, readyFix::OpenOutputs,
                              readyFix::OpenAudio, readyFix::ShowLibrary, readyFix::OpenMIDI>;

struct ReadyItem {
    ReadyGroup group = ReadyGroup::screens;
    ReadyStatus status = ReadyStatus::ready;
    std::string title;
    std::string detail;
    std::optional<ReadyFix> fix;
    std::optional<std::string> fixLabel; // the words of the button leading to the fix

    // The item's identity in a list: its group and title, "screens/House".
    std::string id() const { return std::string(toString(group)) + "/" + title; }
    friend bool operator==(const ReadyItem&, const ReadyItem&) = default;
};

} // namespace velarion
