#pragma once
// MIDIInput: every MIDI source of the computer, opened and listened to. It
// finds sources by itself (a device plugged in during a show starts working
// without an action; one that goes away is closed quietly) and hands each
// received message to the main loop.
//
// Contract.
// - Made, started, stopped and destroyed on the main thread. The hooks are
//   set before `start` and are only ever called on the main thread.
// - `start` returns at once; opening happens in the background. Starting a
//   started input does nothing. When the platform's MIDI isn't there yet,
//   `lastError` says so in the operator's words and the input keeps trying
//   for a while by itself.
// - After `stop` (and after destruction) no hook is called again, even for
//   messages that were already on their way; `sources` is empty.
// - `onMessage` gets each message with the source it came from when known.
//   A device that sends more than the main loop should take is cut short in
//   the input, never by stalling the main loop; `onNotice` says so once.
//
// Implementations: RtMidiInput (ALSA sequencer or JACK) in the application;
// ManualMIDIInput, always built, for tests and for runs without MIDI.

#include "LiveModel/MIDIControl.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velarion {

class MIDIInput {
public:
    virtual ~MIDIInput() = default;

    std::function<void(const MIDIMessage&, const std::optional<MIDISourceInfo>&)> onMessage;
    std::function<void()> onSourcesChange;
    std::function<void()> onStatusChange; // `lastError` changed
    std::function<void(const std::string&)> onNotice;

    virtual void start() = 0;
    virtual void stop() = 0;
    virtual const std::vector<MIDISourceInfo>& sources() const = 0;
    virtual const std::optional<std::string>& lastError() const = 0;
};

} // namespace velarion
