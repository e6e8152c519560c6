#include "Live/AppModel.h"

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
    // Nothing here asks the music apps, MIDI or the displays yet: the apps
    // stay `unknown`, MIDI reads as off and no display is the main one.
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
