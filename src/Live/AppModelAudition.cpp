// The audition of a song cue in its music app: one ProviderPreviewSession,
// made at the first test, which gives way whenever the engine is about to
// start that app for real.

#include "Live/AppModel.h"

#include "LiveModel/StreamApp.h"

namespace velarion {

namespace {

const StreamTrackCue* songOf(const Cue& cue) {
    if (const auto* spotify = std::get_if<SpotifyTrack>(&cue.kind)) return spotify;
    if (const auto* music = std::get_if<MusicTrack>(&cue.kind)) return music;
    return nullptr;
}

} // namespace

bool AppModel::audition(const Uuid& cueID) {
    const Cue* cue = show_ ? show_->cue(cueID) : nullptr;
    const StreamTrackCue* song = cue ? songOf(*cue) : nullptr;
    if (!song) return false;
    if (!ports_.streams) {
        auditionNote_ = noMusicApps;
        changed();
        return false;
    }
    if (!audition_) {
        audition_ = std::make_unique<ProviderPreviewSession>(ports_.streams->remote, ports_.streams->tasks,
                                                             ports_.scheduler);
        audition_->onChange = [this] { changed(); };
    }
    // The engine has the app live when a running cue of that app is playing.
    auto isLive = [this, alive = token()](StreamApp app) {
        if (alive.expired() || !engine_ || !show_) return false;
        for (const RunningCue& running : engine_->state().running)
            if (const Cue* playing = show_->cue(running.cueID); playing && streamApp(playing->kind) == app) return true;
        return false;
    };
    audition_->start(cueID, *streamApp(cue->kind), *song, std::move(isLive));
    return true;
}

void AppModel::stopAudition() {
    if (audition_ && audition_->cueID()) audition_->stop();
}

AppModel::AuditionState AppModel::auditionState() const {
    if (!audition_) return {std::nullopt, false, std::nullopt, auditionNote_};
    return {audition_->cueID(), audition_->isStarting(), audition_->status(), audition_->note()};
}

void AppModel::providerWillStart(StreamApp app) {
    if (audition_) audition_->cancelForLive(app);
    if (ports_.onProviderWillStart) ports_.onProviderWillStart(app);
}

} // namespace velarion
