#pragma once
// ManualMIDIInput: a MIDIInput whose sources and bytes are given by its
// owner instead of a driver. Tests drive the control center with it, and
// the application uses it, empty, when the computer has no MIDI system.
// Bytes go through the same MIDIInbox as a driver's, so parsing, the
// bounded queue and the hand-over to the main loop are the real ones.
//
// Contract: as MIDIInput. `send` may be called from any thread while the
// input is started (its owner doesn't stop it meanwhile); the rest on the
// main thread. The scheduler must outlive it.

#include "Live/ports/MIDIInbox.h"
#include "Live/ports/MIDIInput.h"

#include <memory>

namespace velarion {

class ManualMIDIInput final : public MIDIInput {
public:
    explicit ManualMIDIInput(Scheduler& scheduler) : scheduler_(scheduler) {}
    ~ManualMIDIInput() override { stop(); }

    void start() override;
    void stop() override;
    const std::vector<MIDISourceInfo>& sources() const override { return sources_; }
    const std::optional<std::string>& lastError() const override { return lastError_; }

    bool isStarted() const { return inbox_ != nullptr; }
    int startCount() const { return startCount_; }

    // Bytes as a driver's thread would hand them over; ignored while stopped.
    void send(std::span<const std::uint8_t> bytes, std::uint32_t sourceID = 0);
    // Sources coming and going, each announced through `onSourcesChange`.
    void plug(MIDISourceInfo source);
    void unplug(std::uint32_t sourceID);
    void setLastError(std::optional<std::string> error);

private:
    Scheduler& scheduler_;
    std::shared_ptr<MIDIInbox> inbox_;
    std::vector<MIDISourceInfo> sources_;
    std::optional<std::string> lastError_;
    int startCount_ = 0;
};

} // namespace velarion
