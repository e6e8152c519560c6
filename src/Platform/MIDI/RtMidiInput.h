#pragma once
// RtMidiInput: the computer's MIDI sources through RtMidi, on the ALSA
// sequencer or on JACK when a JACK server runs. Every source is opened; the
// list is looked at again about once a second, so a foot switch plugged in
// during a show starts working without an action, and a source that went
// away is closed quietly.
//
// Contract: as MIDIInput.
// - A background thread of its own finds, opens and closes sources, so the
//   main loop never waits for the MIDI system. It reports to the main loop
//   through Scheduler::post only.
// - RtMidi's receive callbacks (a driver thread per source) only parse
//   bytes into the MIDIInbox; nothing else happens there.
// - `stop` closes every source and joins the thread; after it no hook runs.
//   The scheduler must outlive the input.

#include "Live/ports/MIDIInput.h"
#include "LiveEngine/ports/Scheduler.h"

#include <memory>
#include <string>

namespace velarion {

class RtMidiInput final : public MIDIInput {
public:
    enum class Backend { automatic, alsa, jack };
    struct Options {
        Backend backend = Backend::automatic;
        double rescanSeconds = 1.0;
        // Tries of the MIDI system before giving up, a rescan apart.
        int maxRetries = 9;
        std::string clientName = "Velarion";
    };

    explicit RtMidiInput(Scheduler& scheduler);
    RtMidiInput(Scheduler& scheduler, Options options);
    ~RtMidiInput() override;
    RtMidiInput(const RtMidiInput&) = delete;
    RtMidiInput& operator=(const RtMidiInput&) = delete;

    void start() override;
    void stop() override;
    const std::vector<MIDISourceInfo>& sources() const override { return sources_; }
    const std::optional<std::string>& lastError() const override { return lastError_; }

    // A source's id: the same name gives the same id in every run.
    static std::uint32_t sourceID(const std::string& portName);
    // The name the operator sees: ALSA's trailing client and port numbers left off.
    static std::string displayName(const std::string& portName);

private:
    class Scanner;
    struct Session;

    void setSources(std::vector<MIDISourceInfo> sources);
    void setError(std::optional<std::string> error);

    Scheduler& scheduler_;
    Options options_;
    std::vector<MIDISourceInfo> sources_;
    std::optional<std::string> lastError_;
    std::shared_ptr<Session> session_;
    std::unique_ptr<Scanner> scanner_;
};

} // namespace velarion
