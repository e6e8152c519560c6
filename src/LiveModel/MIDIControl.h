#pragma once
// MIDI control as plain values and pure logic: the four actions a MIDI
// button can run, the triggers they are bound to, the messages a device
// sends, the byte parser, and the matcher that turns messages into actions.
// The settings belong to the computer, not to the show.
//
// Thread: values and pure functions, any thread. `midiMessage::parse` is
// what runs on a driver's receive thread: it allocates only in its list
// form, and the visiting form allocates nothing.

#include "LiveModel/EnumNames.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velarion {

enum class MIDIAction { go, stopAll, panic, pauseResume };
VELARION_ENUM_NAMES(MIDIAction, "go", "stopAll", "panic", "pauseResume");

namespace midiAction {
// "GO", "Stop all", "Panic", "Pause all / Resume all".
std::string_view name(MIDIAction action);
std::string_view explanation(MIDIAction action);
} // namespace midiAction

namespace midi {

// Channels are 1-based, 1 to 16; numbers 0 to 127.
struct NoteTrigger {
    int channel = 1;
    int note = 0;
    friend auto operator<=>(const NoteTrigger&, const NoteTrigger&) = default;
};
struct ControlChangeTrigger {
    int channel = 1;
    int controller = 0;
    friend auto operator<=>(const ControlChangeTrigger&, const ControlChangeTrigger&) = default;
};
struct ProgramChangeTrigger {
    int channel = 1;
    int program = 0;
    friend auto operator<=>(const ProgramChangeTrigger&, const ProgramChangeTrigger&) = default;
};

struct NoteOn {
    int channel = 1;
    int note = 0;
    int velocity = 0;
    friend bool operator==(const NoteOn&, const NoteOn&) = default;
};
struct NoteOff {
    int channel = 1;
    int note = 0;
    friend bool operator==(const NoteOff&, const NoteOff&) = default;
};
struct ControlChange {
    int channel = 1;
    int controller = 0;
    int value = 0;
    friend bool operator==(const ControlChange&, const ControlChange&) = default;
};
struct ProgramChange {
    int channel = 1;
    int program = 0;
    friend bool operator==(const ProgramChange&, const ProgramChange&) = default;
};

} // namespace midi

using MIDITrigger = std::variant<midi::NoteTrigger, midi::ControlChangeTrigger, midi::ProgramChangeTrigger>;
using MIDIMessage = std::variant<midi::NoteOn, midi::NoteOff, midi::ControlChange, midi::ProgramChange>;

namespace midiTrigger {
// The JSON case names: "note", "controlChange", "programChange".
std::string_view caseName(const MIDITrigger& trigger);
// "Note 60 on channel 1", "Controller 64 on channel 1", "Program 5 on
// channel 1".
std::string description(const MIDITrigger& trigger);
// Whether channel and number are in range, as a stored trigger must be.
bool isValid(const MIDITrigger& trigger);
} // namespace midiTrigger

namespace midiMessage {
// Controllers at or above this value count as pressed.
inline constexpr int controllerThreshold = 64;

// The messages in `bytes`, in order. A running-status parser: real-time
// bytes are skipped anywhere, SysEx is skipped to its end (an unfinished one
// drops the rest), data without a status is skipped, a cut-off message ends
// the parse, and kinds other than notes, controllers and programs are
// consumed and dropped.
std::vector<MIDIMessage> parse(std::span<const std::uint8_t> bytes);
// The same, handing each message to `visit` as it is found.
void parse(std::span<const std::uint8_t> bytes, const std::function<void(const MIDIMessage&)>& visit);

// "Note 60 on channel 1, velocity 100"; "Controller 64 on channel 1, value
// 127"; "Note 60 off on channel 1".
std::string description(const MIDIMessage& message);
} // namespace midiMessage

struct MIDISourceInfo {
    std::uint32_t id = 0;
    std::string name;
    friend bool operator==(const MIDISourceInfo&, const MIDISourceInfo&) = default;
};

struct MIDIBinding {
    MIDIAction action = MIDIAction::go;
    MIDITrigger trigger;
    friend bool operator==(const MIDIBinding&, const MIDIBinding&) = default;
};

struct MIDISettings {
    bool isEnabled = true;
    std::vector<MIDIBinding> bindings;

    // A trigger does one thing and an action has one trigger: the action's
    // old binding and any binding of `trigger` go, and the new one is
    // appended.
    void bind(MIDIAction action, const MIDITrigger& trigger);
    void unbind(MIDIAction action);
    std::optional<MIDITrigger> trigger(MIDIAction action) const;
    friend bool operator==(const MIDISettings&, const MIDISettings&) = default;
};

// Turns messages into actions. Its only state is which controllers are now
// held above the threshold, so that a pedal that sends a controller when
// pressed and again when released, or keeps repeating while held, fires
// once per press.
class MIDIMatcher {
public:
    // The actions `message` runs, each at most once, in binding order. A
    // note off runs nothing. Controllers are tracked even while disabled.
    std::vector<MIDIAction> actions(const MIDIMessage& message, const MIDISettings& settings);

    // The trigger a press of this message would bind: none for a note off.
    static std::optional<MIDITrigger> learnableTrigger(const MIDIMessage& message);

    const std::set<MIDITrigger>& controllerHigh() const { return controllerHigh_; }

private:
    std::set<MIDITrigger> controllerHigh_;
};

} // namespace velarion
