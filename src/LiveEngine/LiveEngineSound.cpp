// Sound: files, the one-music-at-a-time rule, dips, hand-offs of video
// sound, and seamless crossfading loops.

#include "LiveEngine/LiveEngine.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {

// "system" in a device field means the system output, which is no device.
std::optional<std::string> realDevice(const std::optional<std::string>& chosen) {
    if (!chosen || *chosen == "system") return std::nullopt;
    return chosen;
}

double handOffFade(const Cue& cue, double fadeInSeconds) {
    if (cue.musicHandoff == MusicHandoff::cut) return 0;
    // A crossfade is never shorter than a second, even for a song with no fade-in.
    return std::max(fadeInSeconds, 1.0);
}

} // namespace

std::optional<std::string> LiveEngine::deviceUID(AudioBus bus, const Cue& cue) const {
    return deviceUID(bus, cue, show_.audio);
}

std::optional<std::string> LiveEngine::deviceUID(AudioBus bus, const Cue& cue, const AudioSetup& setup) {
    if (cue.audioDeviceID) return realDevice(cue.audioDeviceID);
    return realDevice(bus == AudioBus::house ? setup.houseDeviceID : setup.headphonesDeviceID);
}

void LiveEngine::rampMusic(double seconds) {
    for (Run* run : activeRuns()) {
        if (!isMusic(*run) || run->fadingOut) continue;
        for (const AudioPlayback* playback : run->allAudio()) {
            if (playback->isFadingOut) continue;
            playback->player->setVolume(master() * dipFactor(*run) * playback->cueLevel,
                                        seconds > 0 ? seconds : 0);
        }
    }
    rampStreams(seconds);
}

void LiveEngine::handOffMusic(const Run& run, double fadeInSeconds) {
    if (!isMusic(run)) return;
    const double fade = handOffFade(run.cue, fadeInSeconds);
    std::vector<Uuid> older;
    for (const Uuid& id : runOrder_)
        if (const Run* other = findRun(id); other && id != run.id && other->group != run.group && isMusic(*other))
            older.push_back(id);
    for (const Uuid& id : older) stop(id, fade);
}

void LiveEngine::handOffVideoSound(const Run& run, double fadeInSeconds) {
    if (!show_.audio.newSoundFadesOld.value_or(true)) return;
    // Effects leave video sound alone.
    if (std::holds_alternative<AudioCue>(run.cue.kind) && !isMusic(run)) return;
    const double fade = handOffFade(run.cue, fadeInSeconds);
    for (Run* other : activeRuns()) {
        const auto* video = std::get_if<VideoCue>(&other->cue.kind);
        if (other->id == run.id || other->group == run.group || other->started >= run.started ||
            other->fadingOut || other->soundHandedOff || video == nullptr || !(video->level > 0))
            continue;
        other->soundHandedOff = true;
        if (other->video) rampVideo(other->video, 0, fade);
        log(HistoryEntry::Kind::stopped, other->cue.name + " sound faded for " + run.cue.name);
    }
}

void LiveEngine::applyMusicRule(const Run& run, const VideoCue& video) {
    switch (video.effectiveMusicRule()) {
    case VideoMusicRule::leave: return;
    case VideoMusicRule::dip: {
        const bool wasEmpty = dippers_.empty();
        dippers_.insert(run.id);
        if (wasEmpty) rampMusic(dipFadeSeconds);
        return;
    }
    case VideoMusicRule::fadeOut: {
        const double fade = run.cue.musicHandoff == MusicHandoff::cut ? 0 : std::max(video.fadeIn, 1.0);
        std::vector<Uuid> music;
        for (const Uuid& id : runOrder_)
            if (const Run* other = findRun(id); other && other->group != run.group && isMusic(*other))
                music.push_back(id);
        for (const Uuid& id : music) stop(id, fade);
        return;
    }
    }
}

std::optional<AudioPlayback> LiveEngine::openPlayback(const std::filesystem::path& file,
                                                      const std::optional<std::string>& device,
                                                      double inPoint, std::optional<double> outPoint,
                                                      double fadeOut, double level, bool loopsItself,
                                                      std::shared_ptr<SoundFilePlayer> player) {
    if (!player) return std::nullopt;
    AudioPlayback playback;
    playback.deviceMissing = device && !player->setDevice(device);
    if (playback.deviceMissing)
        warn("The sound device for " + file.filename().string() + " is gone; it plays on the system output");
    player->setLoopCount(loopsItself ? -1 : 0);
    const double duration = player->durationSeconds();
    playback.player = player;
    playback.inPointSeconds = std::clamp(inPoint, 0.0, std::max(duration - 0.05, 0.0));
    playback.outPointSeconds = std::min(outPoint.value_or(duration), duration);
    playback.fadeOutSeconds = fadeOut;
    playback.cueLevel = level;
    player->setCurrentSeconds(playback.inPointSeconds);
    return playback;
}

void LiveEngine::startPlayback(AudioPlayback& playback, double target, double fadeInSeconds) {
    if (fadeInSeconds > 0) {
        playback.player->setVolume(0);
        playback.player->play();
        playback.player->setVolume(target, fadeInSeconds);
    } else {
        playback.player->setVolume(target);
        playback.player->play();
    }
}

// The file opens off the main loop, which never waits for a preroll: the
// cue sounds, and hands off older music and video sound, once its player
// is ready (within a few hundredths of a second), as it would have after
// the wait. A pause meanwhile leaves it paused when it arrives.
void LiveEngine::beginAudio(Run& run) {
    const auto& audio = std::get<AudioCue>(run.cue.kind);
    const MediaItem* item = index_.media(audio.mediaID);
    const std::filesystem::path file = item ? mediaPath(*item) : std::filesystem::path();
    if (item == nullptr || !ports_.players.fileExists(file)) return fail(run.id, "the sound file is missing");
    openAhead(run, file);
}

void LiveEngine::startAudio(Run& run) {
    const auto& audio = std::get<AudioCue>(run.cue.kind);
    SoundAhead ahead = std::move(*run.soundAhead);
    run.soundAhead.reset();
    const bool crossfades = audio.loops && audio.crossfadesLoop.value_or(false);
    auto playback = openPlayback(ahead.file, deviceUID(audio.bus, run.cue), audio.inPoint, audio.outPoint,
                                 audio.fadeOut, audio.level, audio.loops && !crossfades, ahead.player);
    if (!playback) return fail(run.id, "the sound file is missing");
    const Uuid runID = run.id;
    run.soundDeviceMissing = playback->deviceMissing;
    run.audio = std::move(*playback);
    run.durationSeconds = run.audio->outPointSeconds - run.audio->inPointSeconds;
    handOffMusic(run, audio.fadeIn);
    if (Run* current = findRun(runID)) handOffVideoSound(*current, audio.fadeIn);
    Run* current = findRun(runID);
    if (current == nullptr) return;
    startPlayback(*current->audio, master() * dipFactor(*current) * current->audio->cueLevel, audio.fadeIn);
    if (current->isPaused()) {
        current->audio->isPaused = true;
        current->audio->player->pause();
    }
    if (crossfades) crossfadeAudioLoop(runID);
}

void LiveEngine::tickAudio(Run& run) {
    AudioPlayback& playback = *run.audio;
    SoundFilePlayer& player = *playback.player;
    if (const std::string broke = player.failure(); !broke.empty())
        return fail(run.id, "its sound broke off: " + broke);
    if (player.loopCount() < 0) return;
    const double now = player.currentSeconds();
    if (!playback.isFadingOut && playback.fadeOutSeconds > 0 &&
        playback.outPointSeconds - now <= playback.fadeOutSeconds) {
        playback.isFadingOut = true;
        player.setVolume(0, std::max(playback.outPointSeconds - now, 0.01));
    }
    if (!playback.isPaused && (!player.isPlaying() || playback.outPointSeconds - 0.02 <= now))
        finish(run.id, false, playback.fadeOutSeconds, true);
}

void LiveEngine::crossfadeAudioLoop(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr || !run->audio) return;
    const AudioPlayback& playing = *run->audio;
    const double length = playing.outPointSeconds - playing.inPointSeconds;
    // Too short to overlap: it plays once and ends at its out point.
    if (!(length > 0.6)) return;
    const double overlap = std::clamp(length * 0.25, 0.3, 2.0);
    const double trigger = length - overlap;
    const double position = playing.player->currentSeconds() - playing.inPointSeconds;
    const double wait = std::max(position < 0 ? trigger : trigger - position, 0.1);
    // The next pass opens off the main loop just before the seam, which must
    // not wait for it (nor find a player that sat prerolled for a pass).
    const MediaItem* item = index_.media(std::get<AudioCue>(run->cue.kind).mediaID);
    if (item == nullptr) return; // the file went; this pass plays out and ends
    const std::filesystem::path file = mediaPath(*item);
    if (wait <= soundOpenLeadSeconds) openAhead(*run, file);
    else run->tasks.push_back(after(wait - soundOpenLeadSeconds, [this, runID, file] {
        if (Run* opening = findRun(runID); opening && !opening->fadingOut) openAhead(*opening, file);
    }));
    run->loopTask = after(wait, [this, runID, overlap] {
        Run* looping = findRun(runID);
        if (looping == nullptr || looping->fadingOut || !looping->audio || !looping->soundAhead) return;
        // Paused, or the next pass still opening: look again shortly.
        if (looping->isPaused() || !looping->soundAhead->isOpen) {
            looping->loopTask = after(0.1, [this, runID] { crossfadeAudioLoop(runID); });
            return;
        }
        const auto& audio = std::get<AudioCue>(looping->cue.kind);
        SoundAhead ahead = std::move(*looping->soundAhead);
        looping->soundAhead.reset();
        auto next = openPlayback(ahead.file, deviceUID(audio.bus, looping->cue), audio.inPoint,
                                 audio.outPoint, audio.fadeOut, looping->audio->cueLevel, false, ahead.player);
        if (!next) return; // the file went; this pass plays out and ends
        startPlayback(*next, master() * dipFactor(*looping) * next->cueLevel, overlap);
        retireToTail(*looping, overlap);
        looping->audio = std::move(*next);
        crossfadeAudioLoop(runID);
    });
}

void LiveEngine::openAhead(Run& run, const std::filesystem::path& file) {
    if (run.soundAhead && run.soundAhead->file == file) return;
    const Uuid token = Uuid::random();
    run.soundAhead = SoundAhead{file, token, false, nullptr};
    Scheduler& scheduler = ports_.scheduler;
    std::weak_ptr<int> life = life_;
    const Uuid runID = run.id;
    ports_.players.openSoundOffMainLoop(file, [&scheduler, life, this, runID, token](
                                                  std::shared_ptr<SoundFilePlayer> player) {
        scheduler.post([life, this, runID, token, player = std::move(player)] {
            if (life.expired() || isShutDown_) return;
            Run* run = findRun(runID);
            // Stopped, or wanting another file by now: the player goes unused.
            if (run == nullptr || !run->soundAhead || run->soundAhead->token != token) return;
            run->soundAhead->isOpen = true;
            run->soundAhead->player = player;
            soundArrived(runID);
        });
    });
}

void LiveEngine::retireToTail(Run& run, double fadeSeconds) {
    if (!run.audio) return;
    AudioPlayback old = std::move(*run.audio);
    run.audio.reset();
    old.isFadingOut = true;
    old.player->setVolume(0, std::max(fadeSeconds, 0.01));
    std::shared_ptr<SoundFilePlayer> tail = old.player;
    run.audioTails.push_back(std::move(old));
    const Uuid runID = run.id;
    run.tasks.push_back(after(std::max(fadeSeconds, 0.01), [this, runID, tail] {
        tail->stop();
        if (Run* owner = findRun(runID))
            std::erase_if(owner->audioTails,
                          [&](const AudioPlayback& playback) { return playback.player == tail; });
    }));
}

} // namespace velarion
