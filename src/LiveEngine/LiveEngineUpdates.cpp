// Live show updates: an edit committed while the show plays reaches what
// runs at once, and restarts nothing that needn't restart.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/CueGroups.h"

namespace velarion {

namespace {

std::vector<std::vector<Uuid>> stepCueIDs(const std::vector<CueGroupStep>& steps) {
    std::vector<std::vector<Uuid>> ids;
    for (const CueGroupStep& step : steps) {
        ids.emplace_back();
        for (const Cue& cue : step.cues) ids.back().push_back(cue.id);
    }
    return ids;
}

} // namespace

void LiveEngine::apply(Show show, const std::set<Uuid>& touched) {
    if (isShutDown_) return;
    const Show old = std::move(show_);
    show_ = std::move(show);
    index_ = ShowIndex(show_);

    if (playbackGroup_) {
        const ShowIndex::PreparedGroup* group = index_.group(playbackGroup_->group.id);
        if (group && group->isValid && stepCueIDs(group->steps) == stepCueIDs(playbackGroup_->steps)) {
            playbackGroup_->group = group->group;
            playbackGroup_->steps = group->steps;
        } else {
            cancelPlaybackGroup();
        }
    }

    const std::vector<Uuid> active = runOrder_;
    for (const Uuid& id : active) {
        Run* run = findRun(id);
        if (run == nullptr) continue;
        const Cue* cue = index_.cue(run->cue.id);
        if (cue == nullptr) {
            // A cue deleted while running leaves the air with a short fade.
            stop(id, 0.3);
            continue;
        }
        const Cue previous = run->cue;
        run->cue = *cue;
        updateRun(id, previous, old, touched.contains(cue->id));
    }

    std::erase_if(heldFollowers_, [&](const Uuid& id) {
        const Cue* cue = index_.cue(id);
        return cue == nullptr || !cue->isEnabled;
    });
    if (!heldFollowers_.empty()) {
        nextCueID_ = heldFollowers_.front();
    } else {
        const Cue* next = nextCueID_ ? index_.cue(*nextCueID_) : nullptr;
        const bool valid = next && next->isEnabled && armTarget(show_, next->id) == next->id;
        if (!valid) {
            const bool firedYet = lastFiredCueID_ && index_.cue(*lastFiredCueID_);
            nextCueID_ = firedYet ? firstManualCue(lastFiredCueID_) : firstManualCue(std::nullopt);
        }
    }

    if (show_.outputs != old.outputs) ports_.outputs.configure(show_.outputs);
    updateAudienceTimer();
    publish();
}

void LiveEngine::updateRun(const Uuid& runID, const Cue& old, const Show& oldShow, bool touched) {
    Run* run = findRun(runID);
    const Cue& cue = run->cue;
    if (cue.geometry != old.geometry) stack_.setGeometry(cue.geometry, runID);

    const bool dipped = !dippers_.empty() && index_.soundRole(cue) == SoundRole::music;
    if (const auto* video = std::get_if<VideoCue>(&cue.kind)) {
        const auto* was = std::get_if<VideoCue>(&old.kind);
        if (run->video && !run->fadingOut && (!was || was->level != video->level))
            run->video->setVolume(master() * (run->soundHandedOff ? 0 : video->level), false);
    }
    if (const auto* audio = std::get_if<AudioCue>(&cue.kind)) {
        const auto* was = std::get_if<AudioCue>(&old.kind);
        if (!was || was->level != audio->level) {
            if (run->audio) run->audio->cueLevel = audio->level;
            for (const AudioPlayback* playback : run->allAudio())
                if (!playback->isFadingOut)
                    playback->player->setVolume(master() * (dipped ? dipLevel : 1.0) * audio->level);
        }
        const bool crossfades = audio->loops && audio->crossfadesLoop.value_or(false);
        const bool crossfaded = was && was->loops && was->crossfadesLoop.value_or(false);
        if (run->audio && (!was || was->loops != audio->loops || crossfades != crossfaded))
            run->audio->player->setLoopCount(audio->loops && !crossfades ? -1 : 0);
        if (run->audio && crossfades && !crossfaded) crossfadeAudioLoop(runID);
    }
    if (const auto* track = streamTrackOf(cue.kind)) {
        const auto* was = streamTrackOf(old.kind);
        if (!was || was->level != track->level) setStreamLevel(track->level, *run);
    }
    if (const auto* list = std::get_if<StreamPlaylistCue>(&cue.kind)) {
        const auto* was = std::get_if<StreamPlaylistCue>(&old.kind);
        if (!was || was->level != list->level) setStreamLevel(list->level, *run);
    }
    if (const auto* playlist = std::get_if<PlaylistCue>(&cue.kind)) {
        const auto* was = std::get_if<PlaylistCue>(&old.kind);
        if (!was || was->mediaIDs != playlist->mediaIDs || was->shuffle != playlist->shuffle)
            reorderPlaylist(*run);
    }
    if (const auto device = soundDevice(cue, show_.audio); device != soundDevice(old, oldShow.audio))
        moveSound(*run, device);

    if (cue.visualOutputIDs != old.visualOutputIDs) updateRoutes(runID);
    if (std::holds_alternative<SlidesCue>(cue.kind)) updateDeck(runID, old, oldShow);

    const bool redrawn = std::holds_alternative<GraphicCue>(cue.kind) ||
                         std::holds_alternative<ImageCue>(cue.kind);
    if (!touched || !redrawn || !(run = findRun(runID))) return;
    if (const auto* graphic = std::get_if<GraphicCue>(&cue.kind)) {
        if (auto card = ports_.cards.lowerThird(graphic->title, graphic->subtitle))
            stack_.update(SceneStillContent{std::move(*card)}, LayerKind::graphics, runID);
    } else {
        const auto& image = std::get<ImageCue>(cue.kind);
        if (auto picture = loadImage(image.mediaID))
            stack_.update(SceneStillContent{std::move(*picture)}, image.layer, runID);
    }
}

void LiveEngine::updateRoutes(const Uuid& runID) {
    Run* run = findRun(runID);
    const DestinationKeys before = effectiveDestinations(*run);
    visualRoutes_[runID] = pictureDestinations(run->cue);
    supersededDestinations_.erase(runID);
    stack_.resetExclusions(runID);
    const DestinationKeys after = effectiveDestinations(*run);
    DestinationKeys gained;
    for (const std::string& key : after)
        if (!before.contains(key)) gained.insert(key);
    if (gained.empty() || !stack_.layer(runID)) return;
    // Screens the run gains are taken from whatever showed there, on every
    // layer the run holds.
    replacePictures(*run, 0, gained);
    for (LayerKind kind : {LayerKind::background, LayerKind::media, LayerKind::slides,
                           LayerKind::graphics, LayerKind::holding, LayerKind::messages}) {
        Run* current = findRun(runID);
        if (current == nullptr) return;
        if (stack_.entry(runID, kind) != nullptr) takeLayer(kind, *current, gained);
    }
}

void LiveEngine::updateDeck(const Uuid& runID, const Cue& old, const Show& oldShow) {
    Run* run = findRun(runID);
    const DeckInfo* info = deck(*run);
    if (info == nullptr) return;
    // Only a changed background goes up again: any other edit would restart
    // the backdrop's dissolve and its loop.
    const bool hasNone = !run->shownBackdrop;
    const bool wantsNone = !info->background || std::holds_alternative<backdrop::None>(*info->background);
    if (hasNone != wantsNone || (!wantsNone && *run->shownBackdrop != *info->background))
        applyDeckBackground(runID);
    run = findRun(runID);
    if (run == nullptr || !run->slideIndex || info->pages.empty()) return;
    run->slideCount = static_cast<int>(info->pages.size());

    // The slide under the run, found again by its identity.
    const auto* oldSlides = std::get_if<SlidesCue>(&old.kind);
    const MediaItem* oldItem = oldSlides ? oldShow.media(oldSlides->deckID) : nullptr;
    const DeckInfo* oldDeck = oldItem && oldItem->deck ? &*oldItem->deck : nullptr;
    const auto oldIndex = static_cast<std::size_t>(*run->slideIndex);
    std::optional<std::size_t> newIndex;
    const MadeSlide* oldSlide = nullptr;
    if (oldDeck && oldDeck->made && oldIndex < oldDeck->made->size()) {
        oldSlide = &(*oldDeck->made)[oldIndex];
        if (info->made)
            for (std::size_t i = 0; i < info->made->size(); ++i)
                if ((*info->made)[i].id == oldSlide->id) newIndex = i;
    }
    const std::size_t index = std::min(newIndex.value_or(oldIndex), info->pages.size() - 1);
    run->slideIndex = static_cast<int>(index);
    run->slidePart = std::min(run->slidePart, lyricPartCount(*run) - 1);

    const std::string oldPage =
        oldDeck && oldIndex < oldDeck->pages.size() ? oldDeck->pages[oldIndex] : std::string();
    const MadeSlide* newSlide = info->made && index < info->made->size() ? &(*info->made)[index] : nullptr;
    const bool slideChanged = (oldSlide == nullptr) != (newSlide == nullptr) ||
                              (oldSlide && newSlide && *oldSlide != *newSlide);
    if (oldPage == info->pages[index] && !slideChanged) return;
    if (stack_.entry(runID, LayerKind::slides) == nullptr) return;
    const std::string path = package_.mediaURL(info->pages[index]).string();
    imageCache_.erase(path);
    if (std::optional<StillImage> page = ports_.images.load(path)) {
        imageCache_.insert(path, *page);
        // An edit of the slide on screen cuts; it doesn't dissolve.
        stack_.update(SceneStillContent{std::move(*page)}, LayerKind::slides, runID);
    }
}

} // namespace velarion
