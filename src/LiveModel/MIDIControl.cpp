#include "LiveModel/MIDIControl.h"

#include <algorithm>

namespace velarion {

namespace midiAction {

std::string_view name(MIDIAction action) {
    switch (action) {
    case MIDIAction::go: return "GO";
    case MIDIAction::stopAll: return "Stop all";
    case MIDIAction::panic: return "Panic";
    case MIDIAction::pauseResume: return "Pause all / Resume all";
    }
    return "";
}

std::string_view explanation(MIDIAction action) {
    switch (action) {
    case MIDIAction::go: return "Plays the next cue, exactly like Space.";
    case MIDIAction::stopAll: return "Fades everything out over a second, like Clear Everything.";
    case MIDIAction::panic:
        return "Fades out everything; press again during the fade to stop at once.";
    case MIDIAction::pauseResume:
        return "Pauses everything that plays, or resumes it when everything is paused.";
    }
    return "";
}

} // namespace midiAction

namespace midiTrigger {

std::string_view caseName(const MIDITrigger& trigger) {
    static constexpr std::string_view names[] = {"note", "controlChange", "programChange"};
    return names[trigger.index()];
}

std::string description(const MIDITrigger& trigger) {
    return std::visit(
        [](const auto& t) {
            using T = std::decay_t<decltype(t)>;
            std::string text;
            if constexpr (std::is_same_v<T, midi::NoteTrigger>)
                text = "Note " + std::to_string(t.note);
            else if constexpr (std::is_same_v<T, midi::ControlChangeTrigger>)
                text = "Controller " + std::to_string(t.controller);
            else
                text = "Program " + std::to_string(t.program);
            return text + " on channel " + std::to_string(t.channel);
        },
        trigger);
}

bool isValid(const MIDITrigger& trigger) {
    return std::visit(
        [](const auto& t) {
            const int number = [&] {
                using T = std::decay_t<decltype(t)>;
                if constexpr (std::is_same_v<T, midi::NoteTrigger>) return t.note;
                else if constexpr (std::is_same_v<T, midi::ControlChangeTrigger>) return t.controller;
                else return t.program;
            }();
            return t.channel >= 1 && t.channel <= 16 && number >= 0 && number <= 127;
        },
        trigger);
}

} // namespace midiTrigger

namespace midiMessage {

void parse(std::span<const std::uint8_t> bytes, const std::function<void(const MIDIMessage&)>& visit) {
    std::optional<std::uint8_t> status; // the running status
    std::uint8_t data[2] = {0, 0};
    std::size_t have = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint8_t byte = bytes[i];
        if (byte >= 0xF8) continue; // real-time: anywhere, and leaves the status alone
        if (byte == 0xF0) {
            const auto end = std::find(bytes.begin() + static_cast<std::ptrdiff_t>(i) + 1, bytes.end(), 0xF7);
            if (end == bytes.end()) return;
            i = static_cast<std::size_t>(end - bytes.begin());
            status.reset();
            have = 0;
            continue;
        }
        if (byte >= 0x80) {
            // A message cut off by a new status ends the parse with what it has.
            if (status && have > 0) return;
            status = byte;
            have = 0;
            continue;
        }
        if (!status) continue;
        const std::uint8_t kind = *status & 0xF0;
        const std::size_t length = (kind == 0xC0 || kind == 0xD0) ? 1 : 2;
        data[have++] = byte;
        if (have < length) continue;
        have = 0;
        const int channel = (*status & 0x0F) + 1;
        switch (kind) {
        case 0x90:
            if (data[1] > 0) visit(midi::NoteOn{channel, data[0], data[1]});
            else visit(midi::NoteOff{channel, data[0]});
            break;
        case 0x80: visit(midi::NoteOff{channel, data[0]}); break;
        case 0xB0: visit(midi::ControlChange{channel, data[0], data[1]}); break;
        case 0xC0: visit(midi::ProgramChange{channel, data[0]}); break;
        default: break; // consumed and dropped
        }
    }
}

std::vector<MIDIMessage> parse(std::span<const std::uint8_t> bytes) {
    std::vector<MIDIMessage> messages;
    parse(bytes, [&](const MIDIMessage& message) { messages.push_back(message); });
    return messages;
}

std::string description(const MIDIMessage& message) {
    const auto on = [](int channel) { return " on channel " + std::to_string(channel); };
    return std::visit(
        [&](const auto& m) {
            using T = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<T, midi::NoteOn>)
                return "Note " + std::to_string(m.note) + on(m.channel) + ", velocity " +
                       std::to_string(m.velocity);
            else if constexpr (std::is_same_v<T, midi::NoteOff>)
                return "Note " + std::to_string(m.note) + " off" + on(m.channel);
            else if constexpr (std::is_same_v<T, midi::ControlChange>)
                return "Controller " + std::to_string(m.controller) + on(m.channel) + ", value " +
                       std::to_string(m.value);
            else
                return "Program " + std::to_string(m.program) + on(m.channel);
        },
        message);
}

} // namespace midiMessage

void MIDISettings::bind(MIDIAction action, const MIDITrigger& trigger) {
    std::erase_if(bindings, [&](const MIDIBinding& binding) {
        return binding.action == action || binding.trigger == trigger;
    });
    bindings.push_back({action, trigger});
}

void MIDISettings::unbind(MIDIAction action) {
    std::erase_if(bindings, [&](const MIDIBinding& binding) { return binding.action == action; });
}

std::optional<MIDITrigger> MIDISettings::trigger(MIDIAction action) const {
    for (const MIDIBinding& binding : bindings)
        if (binding.action == action) return binding.trigger;
    return std::nullopt;
}

std::optional<MIDITrigger> MIDIMatcher::learnableTrigger(const MIDIMessage& message) {
    return std::visit(
        [](const auto& m) -> std::optional<MIDITrigger> {
            using T = std::decay_t<decltype(m)>;
            if constexpr (std::is_same_v<T, midi::NoteOn>) return midi::NoteTrigger{m.channel, m.note};
            else if constexpr (std::is_same_v<T, midi::ControlChange>)
                return midi::ControlChangeTrigger{m.channel, m.controller};
            else if constexpr (std::is_same_v<T, midi::ProgramChange>)
                return midi::ProgramChangeTrigger{m.channel, m.program};
            else return std::nullopt;
        },
        message);
}

std::vector<MIDIAction> MIDIMatcher::actions(const MIDIMessage& message, const MIDISettings& settings) {
    if (std::holds_alternative<midi::NoteOff>(message)) return {};
    const std::optional<MIDITrigger> trigger = learnableTrigger(message);
    if (!trigger) return {};
    if (const auto* change = std::get_if<midi::ControlChange>(&message)) {
        if (change->value < midiMessage::controllerThreshold) {
            controllerHigh_.erase(*trigger);
            return {};
        }
        // A held or repeating pedal fires once.
        if (!controllerHigh_.insert(*trigger).second) return {};
    }
    if (!settings.isEnabled) return {};
    std::vector<MIDIAction> found;
    for (const MIDIBinding& binding : settings.bindings) {
        if (binding.trigger == *trigger && std::find(found.begin(), found.end(), binding.action) == found.end())
            found.push_back(binding.action);
    }
    return found;
}

} // namespace velarion
