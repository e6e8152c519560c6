#pragma once
// Every change to a show is a ShowEdit value, applied by one pure function
// that returns a complete new Show or throws ShowEditError and changes
// nothing. The operator, a MIDI binding and the agent all go through it, so
// the rules that keep a document sound live here alone: group validity, the
// first-cue rule, renaming cues with their media, refusing to remove media
// that is in use.
//
// Sharing: the result shares every section and library item the edit didn't
// change with the show passed in, which is what keeps a hundred undo
// snapshots cheap.
//
// Thread: pure functions on values; any thread.

#include "LiveModel/Show.h"
#include "LiveModel/ShowEditError.h"

#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace velarion {

namespace edit {

struct SetTitle {
    std::string title;
    std::string subtitle;
    friend bool operator==(const SetTitle&, const SetTitle&) = default;
};
struct AddSection {
    Section section;
    std::optional<int> at; // the end when absent
    friend bool operator==(const AddSection&, const AddSection&) = default;
};
struct RenameSection {
    Uuid id;
    std::string title;
    friend bool operator==(const RenameSection&, const RenameSection&) = default;
};
struct SetSectionSchedule {
    Uuid id;
    std::optional<int> plannedStart; // minute of the day
    std::optional<int> plannedMinutes;
    friend bool operator==(const SetSectionSchedule&, const SetSectionSchedule&) = default;
};
struct DeleteSection {
    Uuid id;
    friend bool operator==(const DeleteSection&, const DeleteSection&) = default;
};
struct MoveSection {
    Uuid id;
    int to = 0;
    friend bool operator==(const MoveSection&, const MoveSection&) = default;
};
struct InsertCue {
    Cue cue;
    std::optional<Uuid> section;
    std::optional<Uuid> after;
    friend bool operator==(const InsertCue&, const InsertCue&) = default;
};
struct InsertCues {
    std::vector<Cue> cues;
    std::optional<Uuid> section;
    std::optional<Uuid> before;
    friend bool operator==(const InsertCues&, const InsertCues&) = default;
};
struct UpdateCue {
    Cue cue;
    friend bool operator==(const UpdateCue&, const UpdateCue&) = default;
};
struct DeleteCue {
    Uuid id;
    friend bool operator==(const DeleteCue&, const DeleteCue&) = default;
};
struct MoveCue {
    Uuid id;
    Uuid section;
    int index = 0;
    friend bool operator==(const MoveCue&, const MoveCue&) = default;
};
struct MoveMoment {
    Uuid id;
    std::optional<Uuid> before; // the end of the show when absent
    friend bool operator==(const MoveMoment&, const MoveMoment&) = default;
};
struct MoveMomentToSection {
    Uuid id;
    Uuid section;
    std::optional<Uuid> before; // the end of the section when absent
    friend bool operator==(const MoveMomentToSection&, const MoveMomentToSection&) = default;
};
struct AddMedia {
    MediaItem item;
    friend bool operator==(const AddMedia&, const AddMedia&) = default;
};
struct UpdateMedia {
    MediaItem item;
    friend bool operator==(const UpdateMedia&, const UpdateMedia&) = default;
};
struct RemoveMedia {
    Uuid id;
    friend bool operator==(const RemoveMedia&, const RemoveMedia&) = default;
};
struct SetOutputs {
    OutputSetup outputs;
    friend bool operator==(const SetOutputs&, const SetOutputs&) = default;
};
struct SetAudio {
    AudioSetup audio;
    friend bool operator==(const SetAudio&, const SetAudio&) = default;
};
struct SetHolding {
    HoldingScreen holding;
    friend bool operator==(const SetHolding&, const SetHolding&) = default;
};
struct SetSlideDissolve {
    double seconds = 0;
    friend bool operator==(const SetSlideDissolve&, const SetSlideDissolve&) = default;
};
struct CreateCueGroup {
    CueGroup group;
    friend bool operator==(const CreateCueGroup&, const CreateCueGroup&) = default;
};
struct UpdateCueGroup {
    CueGroup group;
    friend bool operator==(const UpdateCueGroup&, const UpdateCueGroup&) = default;
};
struct RemoveCueGroup {
    Uuid id;
    friend bool operator==(const RemoveCueGroup&, const RemoveCueGroup&) = default;
};
struct ResetVisualOverrides {
    friend bool operator==(const ResetVisualOverrides&, const ResetVisualOverrides&) = default;
};
struct ResetAudioOverrides {
    friend bool operator==(const ResetAudioOverrides&, const ResetAudioOverrides&) = default;
};

} // namespace edit

// The case order is the order of the handlers and of touchedCueIDs.
using ShowEdit =
    std::variant<edit::SetTitle, edit::AddSection, edit::RenameSection, edit::SetSectionSchedule,
                 edit::DeleteSection, edit::MoveSection, edit::InsertCue, edit::InsertCues,
                 edit::UpdateCue, edit::DeleteCue, edit::MoveCue, edit::MoveMoment,
                 edit::MoveMomentToSection, edit::AddMedia, edit::UpdateMedia, edit::RemoveMedia,
                 edit::SetOutputs, edit::SetAudio, edit::SetHolding, edit::SetSlideDissolve,
                 edit::CreateCueGroup, edit::UpdateCueGroup, edit::RemoveCueGroup,
                 edit::ResetVisualOverrides, edit::ResetAudioOverrides>;

// The show after the edit, or throws ShowEditError; `to` itself never changes.
Show apply(const ShowEdit& edit, const Show& to);

// The cues whose content the edit may have changed, which the engine must
// look at again. Moves are left out on purpose: a cue that only moved needs
// no new look.
std::set<Uuid> touchedCueIDs(const ShowEdit& edit);

// The title a show gets a section under when a cue arrives in a show with
// none.
inline constexpr const char* runOfShowTitle = "Run of show";

} // namespace velarion
