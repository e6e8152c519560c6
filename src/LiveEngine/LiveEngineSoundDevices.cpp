// Where sound plays: moving a run's players when its device changes by an
// edit, noticing a device that went away or came back, and reordering a
// playing playlist after its songs were edited.

#include "LiveEngine/LiveEngine.h"

#include <algorithm>

namespace velarion {

std::optional<std::string> LiveEngine::soundDevice(const Cue& cue, const AudioSetup& setup) {
    if (const auto* audio = std::get_if<AudioCue>(&cue.kind)) return deviceUID(audio->bus, cue, setup);
    if (const auto* playlist = std::get_if<PlaylistCue>(&cue.kind)) return deviceUID(playlist->bus, cue, setup);
    // A video's sound goes to the house.
    if (std::holds_alternative<VideoCue>(cue.kind)) return deviceUID(AudioBus::house, cue, setup);
    return std::nullopt;
}

void LiveEngine::moveSound(Run& run, const std::optional<std::string>& device) {
    bool found = true;
    for (const AudioPlayback* playback : run.allAudio()) found = playback->player->setDevice(device) && found;
    if (run.video) run.video->setAudioOutputDeviceUID(device);
    run.soundDeviceMissing = !found;
}

void LiveEngine::audioDevicesChanged() {
    if (ports_.devices == nullptr || isShutDown_) return;
    for (Run* run : activeRuns()) {
        const std::optional<std::string> device = soundDevice(run->cue, show_.audio);
        if (!device || (!run->audio && !run->video)) continue;
        const bool present = ports_.devices->isPresent(*device);
        if (!present && !run->soundDeviceMissing) {
            run->soundDeviceMissing = true;
            warn(run->cue.name + " moved to the system output — its sound device is gone");
        } else if (present && run->soundDeviceMissing) {
            moveSound(*run, device);
            note(run->cue.name + " is back on " + ports_.devices->name(*device).value_or(*device));
        }
    }
}

void LiveEngine::reorderPlaylist(Run& run) {
    const auto& playlist = std::get<PlaylistCue>(run.cue.kind);
    const bool playing = run.audio && run.playlistIndex >= 0 &&
                         static_cast<std::size_t>(run.playlistIndex) < run.playlistOrder.size();
    const std::optional<Uuid> current =
        playing ? std::optional<Uuid>(run.playlistOrder[static_cast<std::size_t>(run.playlistIndex)])
                : std::nullopt;
    std::vector<Uuid> order = playingOrder(playlist, std::nullopt);
    const auto at = current ? std::find(order.begin(), order.end(), *current) : order.end();
    if (current && !playlist.shuffle && at != order.end()) {
        // In order: the songs before the playing one count as played.
        run.playlistIndex = static_cast<int>(at - order.begin());
    } else if (current) {
        // The playing song stays first; the rest follow behind it.
        if (at != order.end()) order.erase(at);
        order.insert(order.begin(), *current);
        run.playlistIndex = 0;
    } else {
        run.playlistIndex = 0;
    }
    run.playlistOrder = std::move(order);
    run.upcomingOrder.reset();
}

} // namespace velarion
