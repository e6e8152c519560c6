// Feeds arbitrary bytes to the MIDI parser, as a device or a driver hands
// them over. Every message it answers must be one a matcher can take as it
// stands, and real-time bytes may fall anywhere without changing anything.

#include "FuzzCheck.h"
#include "LiveModel/MIDIControl.h"

#include <algorithm>
#include <variant>
#include <vector>

namespace {

bool inRange(int value, int low, int high) { return value >= low && value <= high; }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velarion;
    const std::vector<std::uint8_t> bytes(data, data + size);
    const std::vector<MIDIMessage> messages = midiMessage::parse(bytes);
    require(messages.size() < size + 1); // one byte each at best: programs in running status
    for (const MIDIMessage& message : messages) {
        std::visit(
            [](const auto& m) {
                require(inRange(m.channel, 1, 16));
                using T = std::decay_t<decltype(m)>;
                if constexpr (std::is_same_v<T, midi::NoteOn>)
                    require(inRange(m.note, 0, 127) && inRange(m.velocity, 1, 127));
                else if constexpr (std::is_same_v<T, midi::NoteOff>) require(inRange(m.note, 0, 127));
                else if constexpr (std::is_same_v<T, midi::ControlChange>)
                    require(inRange(m.controller, 0, 127) && inRange(m.value, 0, 127));
                else require(inRange(m.program, 0, 127));
            },
            message);
        if (auto trigger = MIDIMatcher::learnableTrigger(message)) require(midiTrigger::isValid(*trigger));
    }
    // A clock byte slipped in anywhere outside a SysEx changes nothing.
    if (size > 0 && std::find(bytes.begin(), bytes.end(), 0xF0) == bytes.end()) {
        std::vector<std::uint8_t> clocked = bytes;
        clocked.insert(clocked.begin() + data[0] % (size + 1), 0xF8);
        require(midiMessage::parse(clocked) == messages);
    }
    return 0;
}
