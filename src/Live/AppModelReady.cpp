#include "Live/AppModel.h"
#include "Live/MIDIControlCenter.h"

#include <tuple>

namespace velarion {

namespace {

// Stands in for the device list when the application has no sound server.
class NoAudioDevices final : public AudioDevices {
public:
    std::vector<AudioDevice> outputs() const override { return {}; }
    void setOnChange(std::function<void()>) override {}
};

} // namespace

ReadyCheckInputs AppModel::readyInputs() const {
    ReadyCheckInputs inputs;
    if (const EngineState* state = engineState()) {
        inputs.outputs = state->outputs;
        inputs.isMuted = state->isMuted;
        inputs.masterLevel = state->masterLevel;
    }
    const MIDISettings& midi = midi_->settings();
    inputs.midi.isEnabled = midi.isEnabled;
    for (MIDIAction action : {MIDIAction::go, MIDIAction::stopAll, MIDIAction::panic, MIDIAction::pauseResume})
        if (midi.trigger(action)) inputs.midi.boundActions.emplace_back(midiAction::name(action));
    for (const MIDISourceInfo& source : midi_->sources()) inputs.midi.sources.push_back(source.name);
    // The music apps as last seen (`unknown` until something asked); no
    // display is the main one yet.
    if (ports_.musicApps) std::tie(inputs.spotify, inputs.music) = ports_.musicApps();
    inputs.ndi = {false, ndiMissing};
    return inputs;
}

std::vector<ReadyItem> AppModel::readyItems() const {
    if (!show_) return {};
    const NoAudioDevices none;
    const AudioDevices* devices = ports_.devices != nullptr ? ports_.devices : &none;
    return ReadyCheck::evaluate(*show_, package_ ? &*package_ : nullptr, *devices, readyInputs());
}

} // namespace velarion
