// MIDI control: made from the computer's saved settings with the model,
// listening once the application has launched.

#include "Live/AppModel.h"
#include "Live/MIDISettingsJson.h"
#include "Live/ports/ManualMIDIInput.h"

#include <algorithm>

namespace velarion {

std::unique_ptr<MIDIControlCenter> AppModel::makeMIDIControl() {
    MIDIControlCenter::MakeInput makeInput = ports_.makeMIDIInput;
    if (!makeInput) {
        // No MIDI system here: an input with no sources, so the rest runs as usual.
        makeInput = [&scheduler = ports_.scheduler] { return std::make_unique<ManualMIDIInput>(scheduler); };
    }
    auto center = std::make_unique<MIDIControlCenter>(
        ports_.scheduler, midiSettingsFromJson(ports_.preferences.value(preferenceKeys::midi)), std::move(makeInput));
    center->perform = [this](const EngineCommand& command) { perform(command); };
    center->isAnythingPlaying = [this] {
        if (!engine_) return false;
        const auto& running = engine_->state().running;
        return std::any_of(running.begin(), running.end(), [](const RunningCue& run) { return !run.isPaused; });
    };
    center->save = [this](const MIDISettings& settings) {
        ports_.preferences.set(preferenceKeys::midi, midiSettingsJson(settings));
    };
    center->note = [this](const std::string& text) {
        if (engine_) engine_->note(text);
        setStatus(text);
    };
    center->onChange = [this] { changed(); };
    return center;
}

void AppModel::startMIDI() {
    if (midi_->settings().isEnabled) midi_->start();
}

} // namespace velarion
