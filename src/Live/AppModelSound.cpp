// The Sound settings' side of the model: which outputs exist, and the test
// tone on a bus's device.

#include "Live/AppModel.h"

namespace velarion {

namespace {

class NoSoundOutputs final : public AudioDevices {
public:
    std::vector<AudioDevice> outputs() const override { return {}; }
    void setOnChange(std::function<void()>) override {}
};

const AudioDevices& noSoundOutputs() {
    static const NoSoundOutputs none;
    return none;
}

} // namespace

std::vector<AudioDevice> AppModel::soundOutputs() const {
    return ports_.devices ? ports_.devices->outputs() : std::vector<AudioDevice>{};
}

bool AppModel::playTestTone(AudioBus bus) {
    if (!testTone_)
        testTone_ = std::make_unique<TestTone>(ports_.players,
                                               ports_.devices ? *ports_.devices : noSoundOutputs());
    std::optional<std::string> device;
    // Headphones not chosen play through the house, as their cues do.
    if (show_)
        device = bus == AudioBus::headphones && show_->audio.headphonesDeviceID
                     ? show_->audio.headphonesDeviceID
                     : show_->audio.houseDeviceID;
    if (testTone_->play(device))
        return true;
    setStatus(toneDeviceMissing);
    return false;
}

} // namespace velarion
