// Taking things off air: Panic, the safe slide, pause and seek, and the
// video level ramps they use.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/TimeText.h"

#include <algorithm>
#include <cmath>

namespace velarion {

void LiveEngine::panic() {
    cancelPlaybackGroup();
    ports_.outputs.clearDiagnostics();
    if (std::holds_alternative<PanicFading>(panic_)) {
        // Cancelled first, so the delayed stop can't clear what a new GO starts.
        panicTask_.cancel();
        log(HistoryEntry::Kind::panic, "Panic — hard stop");
        stopEverything(0);
        panic_ = PanicIdle{};
        return;
    }
    log(HistoryEntry::Kind::panic, "Panic — fading everything out");
    // Half a second longer than the sound, so the warning outlasts it.
    panic_ = PanicFading{ports_.scheduler.now() + 2.5};
    heldFollowers_.clear();
    afterFinish_.clear();
    for (Run* run : activeRuns()) {
        run->cancelTasks();
        run->preWaitLeftSeconds.reset(); // so that a resume can't start it either
        if (run->audio) run->audio->isFadingOut = true;
        for (AudioPlayback& tail : run->audioTails) tail.isFadingOut = true;
        for (const AudioPlayback* playback : run->allAudio())
            playback->player->setVolume(0, panicFadeSeconds);
        if (run->video) rampVideo(run->video, 0, panicFadeSeconds);
        if (drivesApp(*run)) {
            const int from = currentStreamLevel(*run);
            fadeStream(*run->stream, from, 0, from > 0 ? panicFadeSeconds : 0, true);
        }
    }
    stack_.clearAll(panicFadeSeconds);
    panicTask_ = after(panicFadeSeconds, [this] {
        stopEverything(0);
        panic_ = PanicIdle{};
        publish();
    });
}

void LiveEngine::setHolding(bool on) {
    if (on) ports_.outputs.clearDiagnostics();
    if (on == holdingOn_) return;
    holdingOn_ = on;
    if (!on) {
        stack_.clear(LayerKind::holding, 0.6);
        log(HistoryEntry::Kind::holding, "Safe slide down");
        return;
    }
    std::optional<StillImage> picture;
    if (show_.holding.mediaID)
        if (const MediaItem* item = index_.media(*show_.holding.mediaID))
            picture = ports_.images.load(mediaPath(*item).string());
    if (!picture) picture = ports_.cards.holding(show_.holding.title, show_.holding.subtitle);
    // Whatever happens the screens are covered: black if nothing could be drawn.
    SceneContent content = SceneColorContent{SceneColor::black()};
    if (picture) content = SceneStillContent{std::move(*picture)};
    stack_.show(std::move(content), LayerKind::holding, std::nullopt, 0.6, SceneScaling::fill,
                std::nullopt);
    log(HistoryEntry::Kind::holding, "Safe slide up");
}

void LiveEngine::pause(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr || run->isPaused()) return;
    run->pausedAt = ports_.scheduler.now();
    if (run->waitingUntil) {
        // A pause holds a pre-wait too: the cue starts only after the rest
        // of its wait once resumed. Before it begins a run has no other task.
        run->preWaitLeftSeconds = std::max(*run->waitingUntil - *run->pausedAt, 0.0);
        run->cancelTasks();
    }
    if (timer_ && timer_->runID() == runID)
        timer_->pause(ports_.scheduler.now(), ports_.scheduler.wallNow());
    if (run->audio) run->audio->isPaused = true;
    for (AudioPlayback& tail : run->audioTails) tail.isPaused = true;
    for (const AudioPlayback* playback : run->allAudio()) playback->player->pause();
    if (run->video) run->video->pause();
    if (drivesApp(*run)) sendStream(*run->stream, streamCommand::Pause{});
}

void LiveEngine::resume(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr || !run->isPaused()) return;
    run->pausedTotalSeconds += ports_.scheduler.now() - *run->pausedAt;
    run->pausedAt.reset();
    if (run->preWaitLeftSeconds) {
        const double left = *run->preWaitLeftSeconds;
        run->preWaitLeftSeconds.reset();
        waitToBegin(*run, left);
    }
    if (timer_ && timer_->runID() == runID) timer_->resume(ports_.scheduler.now());
    if (run->audio) run->audio->isPaused = false;
    for (AudioPlayback& tail : run->audioTails) tail.isPaused = false;
    for (const AudioPlayback* playback : run->allAudio()) playback->player->play();
    if (run->video) run->video->play();
    if (drivesApp(*run) && run->streamConfirmed) sendStream(*run->stream, streamCommand::Resume{});
}

void LiveEngine::pauseAll() {
    for (Run* run : activeRuns()) pause(run->id);
    log(HistoryEntry::Kind::mode, "Paused everything");
}

void LiveEngine::resumeAll() {
    for (Run* run : activeRuns()) resume(run->id);
    log(HistoryEntry::Kind::mode, "Resumed everything");
}

void LiveEngine::seek(const Uuid& runID, double seconds) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    const double offset = std::isfinite(seconds) ? std::max(0.0, seconds) : 0.0;
    if (run->audio) {
        const AudioPlayback& audio = *run->audio;
        run->audio->player->setCurrentSeconds(
            std::min(audio.inPointSeconds + offset, audio.outPointSeconds));
    }
    if (const auto* video = std::get_if<VideoCue>(&run->cue.kind); video && run->video) {
        double position = video->inPoint + offset;
        if (video->outPoint) position = std::min(position, *video->outPoint);
        if (const auto& info = run->video->info()) position = std::min(position, info->durationSeconds);
        run->video->seek(position);
    }
    if (const auto* track = streamTrackOf(run->cue.kind); track && drivesApp(*run))
        sendStream(*run->stream, streamCommand::Seek{StreamRemote::absolutePosition(offset, track->startAt)});
    log(HistoryEntry::Kind::mode, run->cue.name + " moved to " + TimeText::duration(offset));
}

// MARK: Video level ramps

void LiveEngine::rampVideo(const std::shared_ptr<VideoSurface>& surface, double level,
                           double seconds) {
    const SceneID id = surface->id();
    if (auto running = videoRamps_.find(id); running != videoRamps_.end()) {
        running->second.nextStep.cancel();
        videoRamps_.erase(running);
    }
    videoRampTokens_.erase(id);
    const double target = level * master();
    if (!(seconds > 0)) {
        surface->setVolume(target, false);
        return;
    }
    VideoRamp ramp;
    ramp.surface = surface;
    ramp.startLevel = surface->volume();
    ramp.targetLevel = target;
    ramp.steps = std::max(1, static_cast<int>(seconds * 30));
    ramp.stepSeconds = seconds / ramp.steps;
    const Uuid token = Uuid::random();
    videoRampTokens_[id] = token;
    videoRamps_[id] = ramp;
    rampStep(id, token, 1);
}

void LiveEngine::rampStep(const SceneID& surfaceID, const Uuid& token, int step) {
    auto found = videoRamps_.find(surfaceID);
    auto owner = videoRampTokens_.find(surfaceID);
    if (found == videoRamps_.end() || owner == videoRampTokens_.end() || owner->second != token)
        return;
    VideoRamp& ramp = found->second;
    std::shared_ptr<VideoSurface> surface = ramp.surface.lock();
    if (!surface) {
        videoRamps_.erase(found);
        videoRampTokens_.erase(owner);
        return;
    }
    surface->setVolume(ramp.startLevel + (ramp.targetLevel - ramp.startLevel) * step / ramp.steps,
                       false);
    if (step == ramp.steps) {
        videoRamps_.erase(found);
        videoRampTokens_.erase(owner);
        return;
    }
    ramp.nextStep = after(ramp.stepSeconds,
                          [this, surfaceID, token, step] { rampStep(surfaceID, token, step + 1); });
}

} // namespace velarion
