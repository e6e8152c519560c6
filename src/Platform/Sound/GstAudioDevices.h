#pragma once
// GstAudioDevices: the sound outputs as the GStreamer device monitor sees
// them on the sound server (PulseAudio, or PipeWire's PulseAudio layer).
// An output's id is the server's sink name, which `pulsesink` takes as its
// device and which survives restarts; "system" is the server's default.
//
// Contract: as AudioDevices. Made and used on the main thread. The monitor's
// messages are read on the shared bus thread, which keeps the list current;
// the change callback is posted to the main loop through the Scheduler and
// never runs after destruction. Without a sound server the list is empty.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/Scheduler.h"

#include <memory>

namespace velarion {

class GstAudioDevices final : public AudioDevices {
public:
    explicit GstAudioDevices(Scheduler& scheduler);
    ~GstAudioDevices() override;
    GstAudioDevices(const GstAudioDevices&) = delete;
    GstAudioDevices& operator=(const GstAudioDevices&) = delete;

    std::vector<AudioDevice> outputs() const override;
    void setOnChange(std::function<void()> onChange) override;

    struct Shared;

private:
    std::shared_ptr<Shared> shared_;
};

} // namespace velarion
