#pragma once
// How the operator's controls (keys, clickers, MIDI, OSC, on-screen pads)
// reach the show: profiles of bindings and pages of pad slots. Plain values;
// any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/SortRank.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace velarion::showcore {

enum class ControlTriggerPhase { began, changed, ended };
SHOWCORE_CASE_NAMES(ControlTriggerPhase, "began", "changed", "ended");

enum class ControlModifier { command, option, control, shift, function };
SHOWCORE_CASE_NAMES(ControlModifier, "command", "option", "control", "shift", "function");

enum class MIDIControlMessageType { noteOn, noteOff, controlChange, programChange };
SHOWCORE_CASE_NAMES(MIDIControlMessageType, "noteOn", "noteOff", "controlChange", "programChange");

enum class ControlCommandKind { go, hold, resume, toggleHold, clearCurrentCue, clearMain, allStop };
SHOWCORE_CASE_NAMES(ControlCommandKind, "go", "hold", "resume", "toggleHold", "clearCurrentCue", "clearMain",
                    "allStop");

struct KeyboardControlDescriptor {
    std::string key;
    std::set<ControlModifier> modifiers; // written in case order
    bool operator==(const KeyboardControlDescriptor&) const = default;
};

struct ClickerControlDescriptor {
    std::string persistentDeviceIdentity;
    std::string key;
    bool operator==(const ClickerControlDescriptor&) const = default;
};

struct MIDIControlDescriptor {
    std::string persistentDeviceIdentity;
    std::uint8_t channel = 1;
    MIDIControlMessageType messageType = MIDIControlMessageType::noteOn;
    std::uint8_t number = 0;
    bool operator==(const MIDIControlDescriptor&) const = default;
};

struct OSCControlDescriptor {
    std::string path;
    std::optional<std::string> readableAlias;
    bool operator==(const OSCControlDescriptor&) const = default;
};

struct PadControlDescriptor {
    Uuid pageID;
    Uuid slotID;
    bool operator==(const PadControlDescriptor&) const = default;
};

using ControlSourceDescriptor = std::variant<KeyboardControlDescriptor, ClickerControlDescriptor,
                                             MIDIControlDescriptor, OSCControlDescriptor, PadControlDescriptor>;

namespace focus {
struct Presentation {
    Uuid id;
    bool operator==(const Presentation&) const = default;
};
} // namespace focus

using ControlFocusTarget = std::variant<focus::Presentation>;

namespace controlTarget {
struct Cue {
    Uuid id;
    bool operator==(const Cue&) const = default;
};
struct Command {
    ControlCommandKind kind = ControlCommandKind::go;
    bool operator==(const Command&) const = default;
};
struct Slot {
    Uuid id;
    bool operator==(const Slot&) const = default;
};
struct Focus {
    ControlFocusTarget target;
    bool operator==(const Focus&) const = default;
};
} // namespace controlTarget

using ControlTarget =
    std::variant<controlTarget::Cue, controlTarget::Command, controlTarget::Slot, controlTarget::Focus>;

namespace behavior {
struct Momentary {
    ControlTriggerPhase trigger = ControlTriggerPhase::began;
    bool operator==(const Momentary&) const = default;
};
struct Velocity {
    std::uint8_t minimum = 1;
    bool operator==(const Velocity&) const = default;
};
struct Toggle {
    bool operator==(const Toggle&) const = default;
};
struct Continuous {
    bool operator==(const Continuous&) const = default;
};
} // namespace behavior

using ControlBindingBehavior =
    std::variant<behavior::Momentary, behavior::Velocity, behavior::Toggle, behavior::Continuous>;

struct ControlBinding {
    Uuid id;
    std::string title;
    ControlSourceDescriptor source;
    ControlTarget target = controlTarget::Command{};
    ControlBindingBehavior behavior = behavior::Momentary{};
    bool isEnabled = true;
    bool operator==(const ControlBinding&) const = default;
};

struct ControlPadSlot {
    Uuid id;
    std::string title;
    SortRank order = SortRank::initial();
    ControlTarget target = controlTarget::Command{};
    bool operator==(const ControlPadSlot&) const = default;
};

struct ControlPadPage {
    Uuid id;
    std::string title;
    SortRank order = SortRank::initial();
    bool isFavoritesEmergency = false;
    std::vector<ControlPadSlot> slots;
    bool operator==(const ControlPadPage&) const = default;
};

struct ControlProfile {
    Uuid id;
    std::string name;
    std::vector<ControlBinding> bindings;
    std::vector<ControlPadPage> padPages;
    bool operator==(const ControlProfile&) const = default;
};

} // namespace velarion::showcore
