// How a show moves: GO, batches of cues, followers, holds, and the ends of
// runs.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/CueGroups.h"
#include "LiveModel/LiveCheck.h"

#include <algorithm>

namespace velarion {

void LiveEngine::go() {
    const double now = ports_.scheduler.now();
    // A bounced key or a double click starts nothing, and leaves no trace.
    if (lastGo_ && now - *lastGo_ < goLockoutSeconds) return;
    lastGo_ = now;

    if (playbackGroup_ && playbackGroup_->pendingIndex) {
        releaseHeldGroupStep();
        return;
    }
    cancelPlaybackGroup();

    while (!heldFollowers_.empty()) {
        const Uuid id = heldFollowers_.front();
        heldFollowers_.erase(heldFollowers_.begin());
        const Cue* held = index_.cue(id);
        if (held == nullptr || !held->isEnabled) continue;
        log(HistoryEntry::Kind::fired, "Released held cue: " + held->name);
        fire(*held);
        return;
    }

    const Cue* next = nextCueID_ ? index_.cue(*nextCueID_) : nullptr;
    if (next == nullptr) {
        log(HistoryEntry::Kind::warning, "GO pressed at the end of the show");
        return;
    }
    fire(*next);
}

void LiveEngine::fire(const Cue& cue, std::optional<int> requestedSlideIndex, bool backgroundOnly) {
    if (!cue.isEnabled) return;
    cancelPlaybackGroup();
    if (!requestedSlideIndex && !backgroundOnly)
        if (const ShowIndex::PreparedGroup* group = index_.groupContaining(cue.id)) {
            beginPlaybackGroup(*group);
            return;
        }

    const Uuid batchGroup = Uuid::random();
    std::vector<const Cue*> batch{&cue};
    std::optional<Uuid> follower;
    const auto& cues = index_.cues();
    const auto at = index_.position(cue.id);
    if (!VELARION_CHECK(at.has_value(), "fired a cue the show index doesn't hold")) return;
    std::size_t cursor = *at;
    for (std::size_t i = cursor + 1; i < cues.size(); ++i) {
        const Cue& candidate = *cues[i];
        if (candidate.follow == Follow::withPrevious) {
            cursor = i;
            if (candidate.isEnabled) batch.push_back(&candidate);
            continue;
        }
        if (candidate.follow == Follow::afterPrevious) follower = candidate.id;
        break;
    }

    nextCueID_ = heldFollowers_.empty() ? firstManualCue(cues[cursor]->id)
                                        : std::optional<Uuid>(heldFollowers_.front());

    for (std::size_t i = 0; i < batch.size(); ++i) {
        const bool isLast = i + 1 == batch.size();
        Run& run = enterRun(*batch[i], batchGroup, isLast ? follower : std::nullopt);
        if (i == 0) {
            run.slideIndex = requestedSlideIndex;
            run.isBackgroundOnly = backgroundOnly;
        }
        startOrWait(run.id);
    }
}

Run& LiveEngine::enterRun(const Cue& cue, const Uuid& group, std::optional<Uuid> follower) {
    Run fresh;
    fresh.id = Uuid::random();
    fresh.cue = cue;
    fresh.started = ports_.scheduler.now();
    fresh.group = group;
    const Uuid id = fresh.id;
    Run& run = runs_.emplace(id, std::move(fresh)).first->second;
    if (follower) afterFinish_[id] = *follower;
    visualRoutes_[id] = pictureDestinations(cue);
    runOrder_.push_back(id);
    noteFired(cue);
    return run;
}

void LiveEngine::noteFired(const Cue& cue) {
    lastFiredCueID_ = cue.id;
    const auto& fired = firedCueIDs_.get();
    auto place = std::lower_bound(fired.begin(), fired.end(), cue.id);
    if (place == fired.end() || *place != cue.id) {
        const auto offset = place - fired.begin();
        auto& edited = firedCueIDs_.edit();
        edited.insert(edited.begin() + offset, cue.id);
    }
    trackSchedule(cue, ports_.scheduler.wallNow());
    log(HistoryEntry::Kind::fired, numberLabel(cue) + cue.name);
}

void LiveEngine::startOrWait(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    if (run->cue.preWait > 0) return waitToBegin(*run, run->cue.preWait);
    begin(runID);
}

void LiveEngine::waitToBegin(Run& run, double seconds) {
    const Uuid runID = run.id;
    run.waitingUntil = ports_.scheduler.now() + seconds;
    run.tasks.push_back(after(seconds, [this, runID] {
        Run* waiting = findRun(runID);
        if (waiting == nullptr) return;
        waiting->waitingUntil.reset();
        begin(runID);
        publish();
    }));
}

void LiveEngine::begin(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    switch (cueKind::kindCase(run->cue.kind)) {
    case CueKindCase::slides: beginSlides(*run); break;
    case CueKindCase::image: beginImage(*run); break;
    case CueKindCase::audio: beginAudio(*run); break;
    case CueKindCase::playlist: beginPlaylist(*run); break;
    case CueKindCase::video: beginVideo(*run); break;
    case CueKindCase::graphic: beginGraphic(*run); break;
    case CueKindCase::clear: beginClear(*run); break;
    case CueKindCase::timer: beginTimer(*run); break;
    case CueKindCase::message: beginMessage(*run); break;
    case CueKindCase::spotifyTrack:
    case CueKindCase::spotifyPlaylist:
    case CueKindCase::musicTrack: beginStream(*run); break;
    default: break;
    }
}

void LiveEngine::fail(const Uuid& runIDRef, const std::string& reason) {
    const Uuid runID = runIDRef; // callers often pass the id inside the run that ends
    const Run* run = findRun(runID);
    if (run == nullptr) return;
    log(HistoryEntry::Kind::warning, run->cue.name + " didn't play — " + reason);
    // The chain stops at a failed cue so that nothing plays out of order.
    finish(runID, true, 0.3, false);
}

void LiveEngine::finish(const Uuid& runIDRef, bool clearVisual, double fadeSeconds,
                        bool fireFollowers) {
    const Uuid runID = runIDRef; // callers often pass the id inside the run that ends
    auto found = runs_.find(runID);
    if (found == runs_.end()) return; // ending is idempotent
    Run& run = found->second;
    run.cancelTasks();
    if (clearVisual) stack_.clear(runID, fadeSeconds);
    if (run.networkInput) endNetworkInput(run, fadeSeconds);
    else if (run.video) {
        std::shared_ptr<VideoSurface> surface = run.video;
        if (fadeSeconds > 0) after(fadeSeconds, [surface] { surface->pause(); });
        else surface->pause();
    }
    if (activeDeckRunID_ == runID) activeDeckRunID_.reset();
    if (auto backdrop = backdropSurfaces_.find(runID); backdrop != backdropSurfaces_.end()) {
        std::shared_ptr<VideoSurface> surface = backdrop->second;
        backdropSurfaces_.erase(backdrop);
        if (fadeSeconds > 0) after(fadeSeconds, [surface] { surface->pause(); });
        else surface->pause();
    }
    if (timer_ && timer_->runID() == runID) timer_.reset();
    if (dippers_.erase(runID) > 0 && dippers_.empty()) rampMusic(dipFadeSeconds);

    Run ended = std::move(run);
    runs_.erase(found);
    // A picture left up (a held last frame) keeps its screens until it goes;
    // publish drops the routes then.
    if (!stack_.layer(runID)) {
        visualRoutes_.erase(runID);
        supersededDestinations_.erase(runID);
    }
    std::erase(runOrder_, runID);

    groupRunFinished(ended, fireFollowers);

    auto follower = afterFinish_.find(runID);
    if (follower == afterFinish_.end()) return;
    const Uuid followerID = follower->second;
    afterFinish_.erase(follower);
    if (fireFollowers) releaseOrHold(followerID);
}

void LiveEngine::stop(const Uuid& runIDRef, double fadeSeconds) {
    const Uuid runID = runIDRef; // callers often pass the id inside the run that ends
    Run* run = findRun(runID);
    if (run == nullptr) return;
    log(HistoryEntry::Kind::stopped, "Stopped " + run->cue.name);
    run->cancelTasks();
    if (run->audio) run->audio->isFadingOut = true;
    for (AudioPlayback& tail : run->audioTails) tail.isFadingOut = true;
    for (const AudioPlayback* playback : run->allAudio()) {
        std::shared_ptr<SoundFilePlayer> player = playback->player;
        player->setVolume(0, std::max(fadeSeconds, 0.01));
        if (fadeSeconds > 0) after(fadeSeconds, [player] { player->stop(); });
        else player->stop();
    }
    if (run->video) rampVideo(run->video, 0, fadeSeconds);
    stopStream(*run, fadeSeconds);
    finish(runID, true, fadeSeconds, false);
}

void LiveEngine::stopEverything(double fadeSeconds) {
    cancelPlaybackGroup();
    ports_.outputs.clearDiagnostics();
    for (auto& [id, run] : runs_) {
        run.cancelTasks();
        for (const AudioPlayback* playback : run.allAudio()) playback->player->stop();
        if (run.video) run.video->pause();
        if (drivesApp(run)) {
            if (auto fade = streamFades_.find(*run.stream); fade != streamFades_.end()) fade->second.cancel();
            streamFades_.erase(*run.stream);
            sendStream(*run.stream, streamCommand::Pause{});
        }
    }
    for (auto& [id, surface] : backdropSurfaces_) surface->pause();
    backdropSurfaces_.clear();
    runs_.clear();
    runOrder_.clear();
    afterFinish_.clear();
    heldFollowers_.clear();
    visualRoutes_.clear();
    supersededDestinations_.clear();
    if (dippers_.contains(talkOverID_))
        log(HistoryEntry::Kind::mode, "Talk over ended with the music");
    dippers_.clear();
    timer_.reset();
    for (auto& [id, ramp] : videoRamps_) ramp.nextStep.cancel();
    videoRamps_.clear();
    videoRampTokens_.clear();
    activeDeckRunID_.reset();
    stack_.clearAll(fadeSeconds);
    clearMessage(MessageTarget::stage);
    clearMessage(MessageTarget::audience);
}

void LiveEngine::releaseOrHold(const Uuid& cueID) {
    const Cue* cue = index_.cue(cueID);
    if (cue == nullptr || !cue->isEnabled) return;
    if (!isHeld_) {
        fire(*cue);
        return;
    }
    if (std::find(heldFollowers_.begin(), heldFollowers_.end(), cueID) == heldFollowers_.end())
        heldFollowers_.push_back(cueID);
    nextCueID_ = heldFollowers_.front();
    log(HistoryEntry::Kind::mode, "Held for GO: " + cue->name);
}

void LiveEngine::discardHeldFollowers(const std::string& reason) {
    for (const Uuid& id : heldFollowers_) {
        const Cue* cue = index_.cue(id);
        log(HistoryEntry::Kind::warning, "Skipped held cue: " +
                                             (cue ? cue->name : std::string("Removed cue")) +
                                             " — " + reason);
    }
    heldFollowers_.clear();
}

void LiveEngine::trackSchedule(const Cue& cue, double wallSeconds) {
    const Section* section = index_.section(cue.id);
    if (section == nullptr || sectionStarts_.contains(section->id)) return;
    if (section->plannedStart) {
        const int minute = ports_.scheduler.calendar().minuteOfDay(wallSeconds);
        // A rehearsal far from the planned time doesn't start the schedule.
        if (std::abs(minute - *section->plannedStart) > 90) return;
    }
    sectionStarts_[section->id] = wallSeconds;
}

std::string LiveEngine::numberLabel(const Cue& cue) const {
    const auto at = index_.position(cue.id);
    return at ? std::to_string(*at + 1) + " · " : std::string();
}

// MARK: The tick

void LiveEngine::scheduleTick() {
    tickTask_ = after(tickSeconds, [this] {
        scheduleTick();
        tick();
    });
}

void LiveEngine::tick() {
    ++tickCount_;
    const double now = ports_.scheduler.now();
    std::vector<Uuid> ids = runOrder_;
    for (const Uuid& id : ids) {
        Run* run = findRun(id);
        if (run == nullptr || run->isPaused() || run->waitingUntil) continue;
        if (std::holds_alternative<PlaylistCue>(run->cue.kind)) tickPlaylist(*run);
        else if (std::holds_alternative<AudioCue>(run->cue.kind) && run->audio) tickAudio(*run);
        else if (run->networkInput) tickNetworkInput(*run);
        else if (std::holds_alternative<VideoCue>(run->cue.kind) && run->video) tickVideo(*run);
        else if (drivesApp(*run) && tickCount_ % streamPollTicks == 0) pollStream(*run);
    }

    tickTimer();

    if (playbackGroup_ && playbackGroup_->driverRunID) {
        const Run* driver = findRun(*playbackGroup_->driverRunID);
        if (driver && driver->cue.groupDuration && *driver->cue.groupDuration > 0 &&
            !driver->isPaused() && !driver->waitingUntil &&
            driver->wallElapsed(now) >= *driver->cue.groupDuration)
            advancePlaybackGroup(true);
    }

    if (dippers_.contains(talkOverID_)) {
        bool musicPlays = false;
        for (const Uuid& id : runOrder_)
            if (const Run* run = findRun(id); run && index_.soundRole(run->cue) == SoundRole::music)
                musicPlays = true;
        if (!musicPlays) {
            dippers_.erase(talkOverID_);
            log(HistoryEntry::Kind::mode, "Talk over ended with the music");
        }
    }

    double meter = 0;
    for (const Uuid& id : runOrder_) {
        const Run* run = findRun(id);
        if (run == nullptr) continue;
        for (const AudioPlayback* playback : run->allAudio()) {
            playback->player->updateMeters();
            const double decibels = playback->player->averagePowerDecibels(0);
            meter = std::max(meter, std::clamp((decibels + 50) / 50, 0.0, 1.0));
        }
    }
    meterLevel_ = meter;

    publish();
}

void LiveEngine::tickVideo(Run& run) {
    const auto& video = std::get<VideoCue>(run.cue.kind);
    if (video.loops || !video.outPoint) return;
    const double position = run.video->currentSeconds();
    if (video.fadeOut > 0 && !run.fadingOut && *video.outPoint - video.fadeOut <= position) {
        run.fadingOut = true;
        rampVideo(run.video, 0, video.fadeOut);
        stack_.clear(run.id, video.fadeOut);
    }
    if (position >= *video.outPoint)
        finish(run.id, !video.holdLastFrame, video.fadeOut, true);
}

} // namespace velarion
