// Publishing: the scene and routes to the outputs, the state to observers.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/TimeText.h"

#include <cmath>

namespace velarion {

namespace {

DestinationKeys minus(DestinationKeys keys, const DestinationKeys& taken) {
    for (const std::string& key : taken) keys.erase(key);
    return keys;
}

void collectSurface(const SceneContent& content, std::set<SceneID>& into) {
    if (const auto* video = std::get_if<SceneVideoContent>(&content)) into.insert(video->surfaceID);
}

} // namespace

void LiveEngine::publish() {
    const auto layerRuns = stack_.layerRuns();
    std::set<Uuid> shownRuns;
    for (const auto& [layer, run] : layerRuns) shownRuns.insert(run);
    const auto isKept = [&](const Uuid& runID) {
        return runs_.contains(runID) || shownRuns.contains(runID);
    };
    std::erase_if(visualRoutes_, [&](const auto& item) { return !isKept(item.first); });
    std::erase_if(supersededDestinations_, [&](const auto& item) { return !isKept(item.first); });

    audienceScene_ = stack_.scene();
    audienceLayerKinds_ = stack_.layerKinds();

    // A surface stays while a run plays it or a layer still shows its frame.
    std::set<SceneID> shown;
    for (const SceneLayer& layer : audienceScene_.layers) collectSurface(layer.content, shown);
    for (const auto& [id, run] : runs_)
        if (run.video) shown.insert(run.video->id());
    for (const auto& [id, surface] : backdropSurfaces_) shown.insert(surface->id());
    std::erase_if(surfaceOwners_, [&](const auto& item) { return !shown.contains(item.first); });
    surfaces_ = surfaceOwners_;

    audienceLayerRoutes_.clear();
    const auto exclusions = stack_.layerExclusions();
    for (const auto& [layer, runID] : layerRuns) {
        auto routes = visualRoutes_.find(runID);
        if (routes == visualRoutes_.end()) continue;
        DestinationKeys keys = routes->second;
        if (auto superseded = supersededDestinations_.find(runID);
            superseded != supersededDestinations_.end())
            keys = minus(std::move(keys), superseded->second);
        if (auto excluded = exclusions.find(layer); excluded != exclusions.end())
            keys = minus(std::move(keys), excluded->second);
        audienceLayerRoutes_.emplace(layer, std::move(keys));
    }

    ports_.outputs.apply(audienceScene_, audienceLayerKinds_, surfaces_, audienceLayerRoutes_,
                         lyricPartPictures(), stack_.layerID(LayerKind::slides));

    // Leaving layers have now been shown one last time; the next scene
    // leaves them out and the renderer plays their fade.
    if (stack_.settle() && !isShutDown_) post([this] { publish(); });
    refresh();
}

void LiveEngine::refresh() {
    EngineState next;
    if (playbackGroup_) {
        next.cueGroup = playbackGroup_->snapshot();
        if (playbackGroup_->driverRunID)
            if (const Run* driver = findRun(*playbackGroup_->driverRunID))
                next.cueGroup->cueID = driver->cue.id;
    }
    next.nextCueID = nextCueID_;
    next.lastFiredCueID = lastFiredCueID_;
    next.firedCueIDs = firedCueIDs_;
    for (const Uuid& id : runOrder_)
        if (const Run* run = findRun(id)) next.running.push_back(runningCue(*run));
    next.music = nowPlaying();
    next.stageMessage = stageMessage_;
    next.audienceMessage = audienceMessage_;
    next.isHeld = isHeld_;
    next.holdingOn = holdingOn_;
    next.panic = panic_;
    next.masterLevel = masterLevel_;
    next.isMuted = isMuted_;
    next.isTalkingOver = dippers_.contains(talkOverID_);
    next.scheduleDeltaMinutes = scheduleDelta();
    next.outputs = outputHealth_;
    if (historyChanged_) {
        const std::size_t skip =
            history_.size() > publishedHistoryLimit ? history_.size() - publishedHistoryLimit : 0;
        next.history = std::vector<HistoryEntry>(history_.begin() + static_cast<long>(skip),
                                                 history_.end());
        historyChanged_ = false;
    } else {
        next.history = state_.history;
    }
    if (timer_) next.timer = timer_->snapshot(ports_.scheduler.now(), ports_.scheduler.wallNow());
    next.confidence = confidence();
    if (activeDeckRunID_)
        if (const Run* deck = findRun(*activeDeckRunID_)) {
            next.activeDeckCueID = deck->cue.id;
            next.activeSlide = deck->slideIndex;
            next.isDeckBackgroundOnly = deck->isBackgroundOnly;
        }
    programRun(next);
    next.programOutputID = ports_.outputs.programOutputID();
    next.programOutputName = ports_.outputs.programOutputName();
    next.programOutputSelection = ports_.outputs.programOutputSelection();
    next.heldCueIDs = heldFollowers_;

    std::optional<std::string> nextCueName;
    if (nextCueID_)
        if (const Cue* cue = index_.cue(*nextCueID_)) nextCueName = cue->name;
    ports_.outputs.updateStage(next.confidence, next.timer, nextCueName,
                               ports_.scheduler.wallNow());

    if (next == state_) return;
    state_ = std::move(next);
    ++stateVersion_;
}

void LiveEngine::programRun(EngineState& next) const {
    const std::set<SceneID> program = ports_.outputs.programLayerIDs();
    if (holdingOn_) {
        for (const auto& [layer, kind] : audienceLayerKinds_)
            if (kind == LayerKind::holding && program.contains(layer)) {
                next.programCoveredByHolding = true;
                return;
            }
    }
    const auto entries = stack_.allEntries();
    for (LayerKind kind : {LayerKind::slides, LayerKind::media, LayerKind::background}) {
        for (const auto& [entryKind, entry] : entries) {
            if (entryKind != kind || !entry.runID || !program.contains(entry.layerID)) continue;
            if (findRun(*entry.runID)) {
                next.programRunID = entry.runID;
                return;
            }
        }
    }
}

RunningCue LiveEngine::runningCue(const Run& run) const {
    const double now = ports_.scheduler.now();
    RunningCue view;
    view.id = run.id;
    view.cueID = run.cue.id;
    view.name = run.cue.name;
    view.kindLabel = std::string(cueKind::label(run.cue.kind));
    view.durationSeconds = run.durationSeconds;
    view.isPaused = run.isPaused();
    view.isOnScreen = stack_.layer(run.id).has_value();
    view.canSeek = run.audio.has_value() || run.video != nullptr;

    const auto* video = std::get_if<VideoCue>(&run.cue.kind);
    if (video && run.video) {
        view.elapsedSeconds = std::max(0.0, run.video->currentSeconds() - video->inPoint);
    } else if (run.audio) {
        view.elapsedSeconds =
            std::max(0.0, run.audio->player->currentSeconds() - run.audio->inPointSeconds);
    } else {
        view.elapsedSeconds = run.wallElapsed(now);
    }

    const std::optional<double> startsIn =
        run.preWaitLeftSeconds ? run.preWaitLeftSeconds
                               : (run.waitingUntil ? std::optional<double>(*run.waitingUntil - now) : std::nullopt);
    if (startsIn && *startsIn > 0) {
        view.detail = "Starts in " + std::to_string(static_cast<long>(std::ceil(*startsIn)));
    } else if (video && video->loops) {
        view.detail = "Loops";
    } else if (run.simulated) {
        view.detail = "Simulated — music apps are off";
    } else if (run.isBackgroundOnly) {
        view.detail = "Background only";
    } else if (run.slideIndex && run.slideCount) {
        view.detail = "Slide " + std::to_string(*run.slideIndex + 1) + " of " +
                      std::to_string(*run.slideCount);
        if (const int parts = lyricPartCount(run); parts > 1)
            view.detail += " · part " + std::to_string(run.slidePart + 1) + " of " +
                           std::to_string(parts);
    } else if (timer_ && timer_->runID() == run.id) {
        view.detail = timer_->isCountUp()
                          ? "Counting up"
                          : TimeText::duration(TimeText::timerSeconds(
                                timer_->value(now, ports_.scheduler.wallNow()), false)) +
                                " left";
    } else if (!run.playlistOrder.empty()) {
        view.detail = "Song " + std::to_string(run.playlistIndex + 1) + " of " +
                      std::to_string(run.playlistOrder.size());
    }
    return view;
}

std::optional<NowPlayingMusic> LiveEngine::nowPlaying() const {
    for (auto id = runOrder_.rbegin(); id != runOrder_.rend(); ++id) {
        const Run* run = findRun(*id);
        if (run == nullptr || !isMusic(*run)) continue;
        if (run->stream) {
            NowPlayingMusic music;
            music.source = *run->stream == StreamApp::spotify ? NowPlayingMusic::Source::spotify
                                                                : NowPlayingMusic::Source::music;
            if (const auto* track = streamTrackOf(run->cue.kind)) {
                music.title = track->title;
                music.artist = track->artist;
            } else if (const auto* list = std::get_if<StreamPlaylistCue>(&run->cue.kind)) {
                music.title = list->title;
                music.isPlaylist = true;
            }
            if (run->streamStatus) {
                music.positionSeconds = run->streamStatus->position;
                music.durationSeconds = run->streamStatus->duration;
            } else {
                music.positionSeconds = run->wallElapsed(ports_.scheduler.now());
            }
            music.isSimulated = run->simulated;
            music.isPlaying = !run->isPaused();
            return music;
        }
        if (!run->audio) continue;
        NowPlayingMusic music;
        music.source = NowPlayingMusic::Source::file;
        std::optional<Uuid> song = cueKind::mediaID(run->cue.kind);
        if (std::holds_alternative<PlaylistCue>(run->cue.kind)) {
            const auto index = static_cast<std::size_t>(run->playlistIndex);
            if (index < run->playlistOrder.size()) song = run->playlistOrder[index];
            music.isPlaylist = true;
            music.artist = std::to_string(index + 1) + " of " + std::to_string(run->playlistOrder.size());
        }
        if (const MediaItem* item = song ? index_.media(*song) : nullptr) music.title = item->name;
        music.positionSeconds = std::max(0.0, run->audio->player->currentSeconds());
        music.durationSeconds = std::max(0.0, run->audio->player->durationSeconds());
        music.isPlaying = !run->isPaused();
        return music;
    }
    return std::nullopt;
}

std::optional<int> LiveEngine::scheduleDelta() const {
    const Section* last = nullptr;
    double startedAt = 0;
    for (const Section& section : show_.sections) {
        auto started = sectionStarts_.find(section.id);
        if (started == sectionStarts_.end()) continue;
        last = &section;
        startedAt = started->second;
    }
    if (last == nullptr || !last->plannedStart) return std::nullopt;
    return ports_.scheduler.calendar().minuteOfDay(startedAt) - *last->plannedStart;
}

} // namespace velarion
