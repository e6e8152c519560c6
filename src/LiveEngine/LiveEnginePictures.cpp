// Pictures: which screens a run owns, what a new picture displaces, and the
// start of the picture cues.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/LiveCheck.h"

#include <algorithm>

namespace velarion {

namespace {

bool overlaps(const DestinationKeys& a, const DestinationKeys& b) {
    for (const std::string& key : a)
        if (b.contains(key)) return true;
    return false;
}

} // namespace

DestinationKeys LiveEngine::pictureDestinations(const Cue& cue) const {
    DestinationKeys keys;
    if (auto chosen = show_.visualOutputs(cue); chosen && !chosen->empty()) keys = std::move(*chosen);
    else
        for (std::string& key : show_.outputs.visualDestinations()) keys.insert(std::move(key));
    keys.insert(programDestination);
    return keys;
}

DestinationKeys LiveEngine::effectiveDestinations(const Run& run) const {
    auto routes = visualRoutes_.find(run.id);
    DestinationKeys keys =
        routes != visualRoutes_.end() ? routes->second : pictureDestinations(run.cue);
    if (auto superseded = supersededDestinations_.find(run.id);
        superseded != supersededDestinations_.end())
        for (const std::string& key : superseded->second) keys.erase(key);
    return keys;
}

bool LiveEngine::isForegroundPicture(const Cue& cue) const {
    if (cue.geometry && !cue.geometry->isFull()) return false;
    if (std::holds_alternative<SlidesCue>(cue.kind)) return true;
    if (const auto* video = std::get_if<VideoCue>(&cue.kind)) return video->layer == LayerKind::media;
    if (const auto* image = std::get_if<ImageCue>(&cue.kind)) return image->layer == LayerKind::media;
    return false;
}

std::optional<CueGeometry> LiveEngine::geometry(const Run& run) const { return run.cue.geometry; }

void LiveEngine::takeLayer(LayerKind kind, const Run& run,
                           const std::optional<DestinationKeys>& destinations) {
    for (const auto& [entryKind, entry] : stack_.allEntries())
        if (entryKind == kind && entry.runID != run.id) retire(entry, run, 0, destinations);
}

void LiveEngine::retire(const VisualStack::Entry& entry, const Run& run, double fadeSeconds,
                        const std::optional<DestinationKeys>& destinations) {
    if (entry.runID == run.id) return;
    DestinationKeys active;
    auto routes = entry.runID ? visualRoutes_.find(*entry.runID) : visualRoutes_.end();
    if (routes != visualRoutes_.end()) {
        active = routes->second;
    } else {
        for (std::string& key : show_.outputs.visualDestinations()) active.insert(std::move(key));
        active.insert(programDestination);
    }
    for (const std::string& key : entry.excludedDestinations) active.erase(key);
    if (entry.runID)
        if (auto superseded = supersededDestinations_.find(*entry.runID);
            superseded != supersededDestinations_.end())
            for (const std::string& key : superseded->second) active.erase(key);

    const DestinationKeys taken = destinations ? *destinations : effectiveDestinations(run);
    if (!overlaps(taken, active)) return;
    for (const std::string& key : taken) active.erase(key);
    if (!active.empty()) {
        // The picture stays on the screens the new one doesn't reach.
        stack_.exclude(taken, entry.layerID);
        return;
    }
    stack_.clearLayer(entry.layerID, std::max(fadeSeconds, 0.0));
    if (entry.runID && findRun(*entry.runID) && !stack_.layer(*entry.runID))
        stop(*entry.runID, fadeSeconds);
}

void LiveEngine::replacePictures(const Run& run, double fadeSeconds,
                                 const std::optional<DestinationKeys>& destinations) {
    const Cue& cue = run.cue;
    if (cue.keepOnScreen.value_or(false) || cue.follow == Follow::withPrevious) return;
    if (cue.geometry && !cue.geometry->isFull()) return;
    if (!isForegroundPicture(cue)) return;
    const DestinationKeys taken = destinations ? *destinations : effectiveDestinations(run);
    const Uuid runID = run.id; // `run` may not survive the stops below
    const Uuid group = run.group;
    const double started = run.started;

    // Runs still preparing their picture lose the screens now taken.
    std::vector<Uuid> waiting;
    for (const Uuid& id : runOrder_) {
        const Run* other = findRun(id);
        if (other == nullptr || id == runID || other->started >= started || other->group == group)
            continue;
        if (stack_.layer(id) || !isForegroundPicture(other->cue)) continue;
        waiting.push_back(id);
    }
    for (const Uuid& id : waiting) {
        auto& superseded = supersededDestinations_[id];
        superseded.insert(taken.begin(), taken.end());
        if (const Run* other = findRun(id); other && effectiveDestinations(*other).empty())
            stop(id, fadeSeconds);
    }

    Run* self = findRun(runID);
    if (!VELARION_CHECK(self != nullptr, "a picture's own run went while it took its screens"))
        return;
    for (const auto& [kind, entry] : stack_.allEntries()) {
        if (kind != LayerKind::media && kind != LayerKind::slides) continue;
        if (!entry.geometry.isFull() || entry.runID == runID) continue;
        if (entry.runID)
            if (const Run* owner = findRun(*entry.runID); owner && owner->group == group) continue;
        if (Run* current = findRun(runID)) retire(entry, *current, fadeSeconds, taken);
    }
    for (const auto& [kind, entry] : stack_.allEntries()) {
        if (kind != LayerKind::background || !entry.runID || entry.runID == runID) continue;
        const Run* owner = findRun(*entry.runID);
        if (owner == nullptr || !owner->isBackgroundOnly || owner->group == group) continue;
        if (Run* current = findRun(runID)) retire(entry, *current, fadeSeconds, taken);
    }
}

void LiveEngine::showPicture(Run& run, SceneContent content, LayerKind layer, double fadeSeconds,
                             SceneScaling scaling) {
    const Uuid runID = run.id;
    replacePictures(run, fadeSeconds, std::nullopt);
    const Run* current = findRun(runID);
    if (current == nullptr) return;
    takeLayer(layer, *current, std::nullopt);
    current = findRun(runID);
    if (current == nullptr) return;
    stack_.show(std::move(content), layer, runID, fadeSeconds, scaling, geometry(*current));
}

// MARK: Picture cues

void LiveEngine::beginImage(Run& run) {
    const auto& image = std::get<ImageCue>(run.cue.kind);
    const MediaItem* item = index_.media(image.mediaID);
    if (item == nullptr) return fail(run.id, "the image is missing");
    std::optional<StillImage> picture = cachedPicture(mediaPath(*item).string());
    if (!picture) return fail(run.id, "the image is missing");
    showPicture(run, SceneStillContent{std::move(*picture)}, image.layer, image.fadeIn,
                SceneScaling::fit);
}

void LiveEngine::beginVideo(Run& run) {
    const auto& video = std::get<VideoCue>(run.cue.kind);
    const MediaItem* item = index_.media(video.mediaID);
    if (item == nullptr) return fail(run.id, "the video is missing");
    if (item->ndiSource) return beginNetworkInput(run, *item->ndiSource);
    const std::filesystem::path path = mediaPath(*item);
    if (!ports_.players.fileExists(path)) return fail(run.id, "the video is missing");

    std::shared_ptr<VideoSurface> surface = ports_.players.makeVideoSurface(Uuid::random(), path);
    run.video = surface;
    surfaceOwners_[surface->id()] = surface;
    if (item->duration)
        run.durationSeconds = video.outPoint.value_or(*item->duration) - video.inPoint;
    surface->setLoops(video.loops && !video.crossfadesLoop.value_or(false));
    // The level goes on before the preroll: the first samples pass the
    // surface's gain while it prepares, and would otherwise sound at full.
    surface->setVolume(video.fadeIn > 0 ? 0 : master() * video.level, false);

    const Uuid runID = run.id;
    std::weak_ptr<int> life = life_;
    watchVideoEnd(surface, runID);
    surface->prepare(videoPrepareTimeoutSeconds, [this, life, runID](VideoPreparation result) {
        if (life.expired() || isShutDown_) return;
        videoPrepared(runID, result);
        publish();
    });
}

void LiveEngine::videoPrepared(const Uuid& runID, const VideoPreparation& result) {
    Run* run = findRun(runID);
    if (run == nullptr) return; // stopped while it prepared
    if (const auto* error = std::get_if<VideoSurfaceError>(&result))
        return fail(runID, error->text());
    const auto& video = std::get<VideoCue>(run->cue.kind);
    const auto& info = std::get<VideoSurfaceInfo>(result);
    if (!run->durationSeconds)
        run->durationSeconds = video.outPoint.value_or(info.durationSeconds) - video.inPoint;
    std::shared_ptr<VideoSurface> surface = run->video;
    if (video.inPoint > 0) surface->seek(video.inPoint);
    surface->setAudioOutputDeviceUID(deviceUID(AudioBus::house, run->cue));
    handOffVideoSound(*run, video.fadeIn);
    if (Run* current = findRun(runID)) applyMusicRule(*current, video);
    run = findRun(runID);
    if (run == nullptr) return;
    if (video.fadeIn > 0) {
        surface->setVolume(0, false);
        rampVideo(surface, video.level, video.fadeIn);
    } else {
        surface->setVolume(master() * video.level, false);
    }
    showPicture(*run, SceneVideoContent{surface->id()}, video.layer, video.fadeIn, SceneScaling::fit);
    surface->play();
    if (video.loops && video.crossfadesLoop.value_or(false)) crossfadeVideoLoop(runID);
}

void LiveEngine::watchVideoEnd(const std::shared_ptr<VideoSurface>& surface, const Uuid& runID) {
    std::weak_ptr<int> life = life_;
    const SceneID surfaceID = surface->id();
    surface->setOnEnd([this, life, runID, surfaceID] {
        if (life.expired() || isShutDown_) return;
        // A surface a crossfading loop has moved on from just fades away.
        const Run* run = findRun(runID);
        if (run == nullptr || !run->video || run->video->id() != surfaceID) return;
        videoEnded(runID);
        publish();
    });
}

void LiveEngine::videoEnded(const Uuid& runID) {
    const Run* run = findRun(runID);
    if (run == nullptr) return;
    if (const std::string broke = run->video ? run->video->failure() : std::string(); !broke.empty())
        return fail(runID, "its video broke off: " + broke);
    const auto& video = std::get<VideoCue>(run->cue.kind);
    // A video with an out point ends by the tick, at that point.
    if (video.outPoint && !video.loops) return;
    finish(runID, !video.holdLastFrame, video.fadeOut, true);
}

void LiveEngine::beginGraphic(Run& run) {
    const auto& graphic = std::get<GraphicCue>(run.cue.kind);
    std::optional<StillImage> card = ports_.cards.lowerThird(graphic.title, graphic.subtitle);
    if (!card) return finish(run.id, true, 0.3, false);
    takeLayer(LayerKind::graphics, run, std::nullopt);
    stack_.show(SceneStillContent{std::move(*card)}, LayerKind::graphics, run.id, 0.5,
                SceneScaling::fit, std::nullopt);
    // A duration of 0 takes the lower third off at the next turn.
    if (graphic.duration) {
        run.durationSeconds = std::max(0.0, *graphic.duration);
        const Uuid runID = run.id;
        run.tasks.push_back(after(*run.durationSeconds, [this, runID] {
            finish(runID, true, 0.5, true);
            publish();
        }));
    }
}

void LiveEngine::beginClear(Run& run) {
    const auto& clearCue = std::get<ClearCue>(run.cue.kind);
    const Uuid runID = run.id;
    // Taken out first: clearing everything would otherwise stop this run and
    // lose the follower with it.
    std::optional<Uuid> follower;
    if (auto found = afterFinish_.find(runID); found != afterFinish_.end()) {
        follower = found->second;
        afterFinish_.erase(found);
    }
    if (clearCue.cueID) {
        std::vector<Uuid> targets;
        for (const Uuid& id : runOrder_)
            if (const Run* other = findRun(id); other && id != runID && other->cue.id == *clearCue.cueID)
                targets.push_back(id);
        for (const Uuid& id : targets) stop(id, clearCue.fade);
        if (targets.empty()) {
            const Cue* target = index_.cue(*clearCue.cueID);
            log(HistoryEntry::Kind::clear,
                (target ? target->name : std::string("That cue")) + " wasn't running");
        }
    } else {
        const bool inGroup = playbackGroup_ && playbackGroup_->runIDs.contains(runID);
        clear(clearCue.target, clearCue.fade, inGroup, runID);
    }
    finish(runID, true, 0.3, true);
    if (follower) releaseOrHold(*follower);
}

} // namespace velarion
