// Playlists of sound files: their playing order, crossfades between songs,
// repeats and skipping.

#include "LiveEngine/LiveEngine.h"

#include <algorithm>

namespace velarion {

std::vector<Uuid> LiveEngine::playingOrder(const PlaylistCue& cue,
                                           const std::optional<Uuid>& avoidingFirst) {
    std::vector<Uuid> order = cue.mediaIDs;
    if (!cue.shuffle) return order;
    std::shuffle(order.begin(), order.end(), shuffler_);
    // A repeated shuffle never plays the same song twice in a row.
    if (order.size() >= 2 && order.front() == avoidingFirst) std::swap(order.front(), order.back());
    return order;
}

void LiveEngine::beginPlaylist(Run& run) {
    const auto& playlist = std::get<PlaylistCue>(run.cue.kind);
    if (playlist.mediaIDs.empty()) return fail(run.id, "it has no songs");
    const Uuid runID = run.id;
    run.playlistOrder = playingOrder(playlist, std::nullopt);
    run.playlistIndex = 0;
    handOffMusic(run, playlist.fadeIn);
    if (Run* current = findRun(runID)) handOffVideoSound(*current, playlist.fadeIn);
    if (!findRun(runID)) return;
    switch (startPlaylistSong(runID, 0, playlist.fadeIn)) {
    case SongStart::noneLeft: return fail(runID, "none of its songs can play");
    case SongStart::cantOpen: return fail(runID, "the sound file is missing");
    case SongStart::started:
    case SongStart::waiting: return;
    }
}

LiveEngine::SongStart LiveEngine::startPlaylistSong(const Uuid& runID, std::size_t from,
                                                    double fadeInSeconds) {
    Run* run = findRun(runID);
    if (run == nullptr) return SongStart::noneLeft;
    const auto& playlist = std::get<PlaylistCue>(run->cue.kind);
    run->songWaitingFadeSeconds.reset();
    for (std::size_t index = from; index < run->playlistOrder.size(); ++index) {
        const MediaItem* item = index_.media(run->playlistOrder[index]);
        if (item == nullptr) {
            log(HistoryEntry::Kind::warning,
                run->cue.name + ": a song was removed from the library — skipped");
            continue;
        }
        const std::filesystem::path file = mediaPath(*item);
        run->playlistIndex = static_cast<int>(index);
        if (!ports_.players.fileExists(file)) return SongStart::cantOpen;
        openAhead(*run, file);
        if (!run->soundAhead->isOpen) {
            // It starts when its player arrives; GO and the tick never wait.
            run->songWaitingFadeSeconds = fadeInSeconds;
            return SongStart::waiting;
        }
        std::shared_ptr<SoundFilePlayer> opened = std::move(run->soundAhead->player);
        run->soundAhead.reset();
        auto playback = openPlayback(file, deviceUID(playlist.bus, run->cue), 0, std::nullopt, 0,
                                     playlist.level, false, std::move(opened));
        if (!playback) return SongStart::cantOpen;
        run->soundDeviceMissing = playback->deviceMissing;
        run->audio = std::move(*playback);
        startPlayback(*run->audio, master() * dipFactor(*run) * run->audio->cueLevel, fadeInSeconds);
        // An advance during a pause stays paused.
        if (run->isPaused()) {
            run->audio->isPaused = true;
            run->audio->player->pause();
        }
        return SongStart::started;
    }
    return SongStart::noneLeft;
}

void LiveEngine::openNextSong(Run& run) {
    const auto& playlist = std::get<PlaylistCue>(run.cue.kind);
    std::size_t next = static_cast<std::size_t>(run.playlistIndex) + 1;
    const std::vector<Uuid>* order = &run.playlistOrder;
    if (next >= order->size()) {
        if (!playlist.repeats || order->empty()) return;
        // A repeat draws its next order now, so its first song can open early.
        if (!run.upcomingOrder)
            run.upcomingOrder = playingOrder(playlist, (*order)[static_cast<std::size_t>(run.playlistIndex)]);
        order = &*run.upcomingOrder;
        next = 0;
    }
    for (std::size_t index = next; index < order->size(); ++index)
        if (const MediaItem* item = index_.media((*order)[index])) {
            if (ports_.players.fileExists(mediaPath(*item))) openAhead(run, mediaPath(*item));
            return;
        }
}

void LiveEngine::soundArrived(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    // An audio cue's first pass: later passes of a crossfading loop are
    // taken at their seam.
    if (!run->audio && std::holds_alternative<AudioCue>(run->cue.kind)) {
        if (!run->fadingOut) startAudio(*run);
        return publish();
    }
    if (!run->songWaitingFadeSeconds) return;
    const auto index = static_cast<std::size_t>(run->playlistIndex);
    const SongStart result = startPlaylistSong(runID, index, *run->songWaitingFadeSeconds);
    if (result == SongStart::cantOpen || result == SongStart::noneLeft) {
        if (Run* failed = findRun(runID)) {
            log(HistoryEntry::Kind::warning, failed->cue.name + " didn't play — the sound file is missing");
            finish(runID, true, 0.3, false);
        }
    }
    publish();
}

void LiveEngine::tickPlaylist(Run& run) {
    if (!run.audio) return;
    const auto& playlist = std::get<PlaylistCue>(run.cue.kind);
    const AudioPlayback& playback = *run.audio;
    SoundFilePlayer& player = *playback.player;
    // The output that dropped one song would drop the next: the run ends.
    if (const std::string broke = player.failure(); !broke.empty())
        return fail(run.id, "its sound broke off: " + broke);
    const double length = playback.outPointSeconds - playback.inPointSeconds;
    const double crossfade = std::min(playlist.crossfade, std::max(length, 0.0) / 3);
    const double played = player.currentSeconds() - playback.inPointSeconds;
    const double remaining = std::max(length, 0.0) - std::max(played, 0.0);
    const bool hasNext = playlist.repeats ? !run.playlistOrder.empty()
                                          : static_cast<std::size_t>(run.playlistIndex) + 1 <
                                                run.playlistOrder.size();
    // The next song opens off the main loop shortly before it is due: a
    // player left prerolled for long starts late once played.
    if (hasNext && remaining <= std::max(crossfade, 0.0) + soundOpenLeadSeconds) openNextSong(run);
    if (hasNext && crossfade > 0.05 && remaining <= crossfade && player.isPlaying()) {
        advancePlaylist(run.id, std::max(remaining, 0.05));
        return;
    }
    if (run.isPaused() || player.loopCount() < 0) return;
    if (player.isPlaying() && player.currentSeconds() < playback.outPointSeconds - 0.02) return;
    if (hasNext) advancePlaylist(run.id, 0);
    else finish(run.id, false, 0.3, true);
}

void LiveEngine::advancePlaylist(const Uuid& runID, double fadeSeconds) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    const auto& playlist = std::get<PlaylistCue>(run->cue.kind);
    std::size_t next = static_cast<std::size_t>(run->playlistIndex) + 1;
    if (next >= run->playlistOrder.size()) {
        if (!playlist.repeats) return finish(runID, false, 0.3, true);
        const std::optional<Uuid> justPlayed =
            run->playlistOrder.empty() ? std::nullopt
                                       : std::optional<Uuid>(run->playlistOrder[static_cast<std::size_t>(run->playlistIndex)]);
        run->playlistOrder = run->upcomingOrder ? std::move(*run->upcomingOrder) : playingOrder(playlist, justPlayed);
        run->upcomingOrder.reset();
        next = 0;
    }
    retireToTail(*run, fadeSeconds);
    const SongStart result = startPlaylistSong(runID, next, fadeSeconds);
    if (result == SongStart::cantOpen || result == SongStart::noneLeft) {
        if (Run* failed = findRun(runID)) {
            log(HistoryEntry::Kind::warning, failed->cue.name + " didn't play — the sound file is missing");
            finish(runID, true, 0.3, false);
        }
    }
}

void LiveEngine::skipTrack() {
    for (auto id = runOrder_.rbegin(); id != runOrder_.rend(); ++id) {
        Run* run = findRun(*id);
        if (run == nullptr || !std::holds_alternative<PlaylistCue>(run->cue.kind)) continue;
        const auto& playlist = std::get<PlaylistCue>(run->cue.kind);
        const double fade = std::clamp(playlist.crossfade, 0.5, 3.0);
        const bool hasNext = (playlist.repeats && !run->playlistOrder.empty()) ||
                             static_cast<std::size_t>(run->playlistIndex) + 1 < run->playlistOrder.size();
        const Uuid runID = run->id;
        if (hasNext) advancePlaylist(runID, fade);
        else stop(runID, fade);
        log(HistoryEntry::Kind::mode, "Skipped to the next song");
        return;
    }
    for (auto id = runOrder_.rbegin(); id != runOrder_.rend(); ++id) {
        const Run* run = findRun(*id);
        if (run == nullptr || !std::holds_alternative<StreamPlaylistCue>(run->cue.kind) || !drivesApp(*run)) continue;
        sendStream(*run->stream, streamCommand::Next{});
        log(HistoryEntry::Kind::mode, "Skipped to the next song");
        return;
    }
}

} // namespace velarion
