// Cue group playback: one GO plays a group step by step, each step starting
// when the one before it ends.

#include "LiveEngine/LiveEngine.h"


namespace velarion {

CueGroupPlaybackState GroupPlayback::snapshot() const {
    CueGroupPlaybackState view;
    view.groupID = group.id;
    view.name = group.name;
    const int shown = pendingIndex.value_or(index);
    if (shown >= 0 && shown < static_cast<int>(steps.size())) view.cueID = steps[shown].driver.id;
    view.step = index + 1;
    view.stepCount = static_cast<int>(steps.size());
    view.repeats = group.repeats;
    view.waitingForGO = pendingIndex.has_value();
    return view;
}

void LiveEngine::beginPlaybackGroup(const ShowIndex::PreparedGroup& prepared) {
    const CueGroup& group = prepared.group;
    if (!prepared.isValid) {
        log(HistoryEntry::Kind::warning,
            group.name + " cannot play — check its cue group in Ready Check");
        return;
    }
    if (prepared.steps.empty()) return;

    GroupPlayback playback;
    playback.id = Uuid::random();
    playback.group = group;
    playback.steps = prepared.steps;
    if (prepared.lastMemberID) {
        playback.nextCueID = firstManualCue(*prepared.lastMemberID);
        if (const Cue* behind = index_.cueAfter(*prepared.lastMemberID);
            behind && behind->follow == Follow::afterPrevious)
            playback.outsideFollowerID = behind->id;
    }
    playback.generation = Uuid::random();
    // GO during the group ends it and goes on behind it.
    nextCueID_ = playback.nextCueID;
    playbackGroup_ = std::move(playback);
    log(HistoryEntry::Kind::mode,
        group.name + " · " + (group.repeats ? "repeating group" : "cue group"));
    playGroupStep(0);
}

void LiveEngine::playGroupStep(int index) {
    if (!playbackGroup_ || index < 0 || index >= static_cast<int>(playbackGroup_->steps.size()))
        return;
    GroupPlayback& playback = *playbackGroup_;
    playback.advanceTask.cancel();
    playback.advanceTask = {};
    playback.index = index;
    playback.generation = Uuid::random();
    playback.pendingIndex.reset();
    playback.driverRunID.reset();
    playback.runIDs.clear();

    // Copies: starting a run may end the playback (a failed cue does).
    const CueGroupStep step = playback.steps[static_cast<std::size_t>(index)];
    const Uuid playbackID = playback.id;
    for (const Cue& cue : step.cues) {
        if (!cue.isEnabled) continue;
        if (!playbackGroup_ || playbackGroup_->id != playbackID) return;
        Run& run = enterRun(cue, playbackID, std::nullopt);
        playbackGroup_->runIDs.insert(run.id);
        if (cue.id == step.driver.id) playbackGroup_->driverRunID = run.id;
        startOrWait(run.id);
    }
    if (!show_.groupCueHasEnd(step.driver))
        log(HistoryEntry::Kind::warning,
            step.driver.name + " has no group duration or natural end. GO takes over after the group.");
}

void LiveEngine::groupRunFinished(const Run& run, bool naturally) {
    if (!playbackGroup_ || !playbackGroup_->runIDs.contains(run.id)) return;
    if (!naturally) {
        // A stopped or failed step ends the group rather than play on out of order.
        cancelPlaybackGroup();
        return;
    }
    if (playbackGroup_->driverRunID == run.id && !run.cue.groupDuration &&
        show_.groupCueHasEnd(run.cue))
        advancePlaybackGroup(false);
}

void LiveEngine::advancePlaybackGroup(bool endingCurrentStep) {
    if (!playbackGroup_ || playbackGroup_->advanceTask.refersToTask() ||
        playbackGroup_->pendingIndex)
        return;
    const Uuid playbackID = playbackGroup_->id;
    const Uuid generation = playbackGroup_->generation;
    // Not inside finish: the ending run must be gone completely first.
    playbackGroup_->advanceTask = after(0, [this, playbackID, generation, endingCurrentStep] {
        if (!playbackGroup_ || playbackGroup_->id != playbackID ||
            playbackGroup_->generation != generation)
            return;
        playbackGroup_->advanceTask = {};
        if (endingCurrentStep) {
            const std::set<Uuid> ending = std::move(playbackGroup_->runIDs);
            playbackGroup_->runIDs.clear();
            playbackGroup_->driverRunID.reset();
            for (const Uuid& id : ending)
                if (findRun(id)) stop(id, 0.1);
            if (!playbackGroup_ || playbackGroup_->id != playbackID) return publish();
        }
        int next = playbackGroup_->index + 1;
        if (next >= static_cast<int>(playbackGroup_->steps.size())) {
            if (!playbackGroup_->group.repeats) {
                const GroupPlayback ended = std::move(*playbackGroup_);
                playbackGroup_.reset();
                nextCueID_ = ended.nextCueID;
                if (ended.outsideFollowerID) releaseOrHold(*ended.outsideFollowerID);
                return publish();
            }
            next = 0;
        }
        if (isHeld_) {
            playbackGroup_->pendingIndex = next;
            const Cue& first = playbackGroup_->steps[static_cast<std::size_t>(next)].cues.front();
            nextCueID_ = first.id;
            log(HistoryEntry::Kind::mode, "Held for GO: " + first.name);
        } else {
            playGroupStep(next);
        }
        publish();
    });
}

void LiveEngine::releaseHeldGroupStep() {
    if (!playbackGroup_ || !playbackGroup_->pendingIndex) return;
    const int index = *playbackGroup_->pendingIndex;
    const Cue& first = playbackGroup_->steps[static_cast<std::size_t>(index)].cues.front();
    log(HistoryEntry::Kind::fired, "Released held group step: " + first.name);
    playGroupStep(index);
}

void LiveEngine::cancelPlaybackGroup() {
    if (!playbackGroup_) return;
    playbackGroup_->advanceTask.cancel();
    if (playbackGroup_->pendingIndex) nextCueID_ = playbackGroup_->nextCueID;
    playbackGroup_.reset();
}

} // namespace velarion
