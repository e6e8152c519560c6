// Music apps: starting a song or playlist in Spotify or the operator's own
// player, watching it, fading it, and giving way to other music. What talks
// to an app runs off the main thread and comes back by the Scheduler.

#include "LiveEngine/LiveEngine.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {

int cueStreamLevel(const Cue& cue) {
    if (const auto* track = streamTrackOf(cue.kind)) return std::clamp(track->level, 0, 100);
    if (const auto* list = std::get_if<StreamPlaylistCue>(&cue.kind)) return std::clamp(list->level, 0, 100);
    return 0;
}

double cueStreamFadeIn(const Cue& cue) {
    if (const auto* track = streamTrackOf(cue.kind)) return track->fadeIn;
    if (const auto* list = std::get_if<StreamPlaylistCue>(&cue.kind)) return list->fadeIn;
    return 0;
}

int dipped(int level) { return static_cast<int>(std::lround(level * LiveEngine::dipLevel)); }

} // namespace

StreamCancel LiveEngine::launchStreamWork(StreamWork work) {
    StreamCancel cancel;
    EngineStreams* streams = ports_.streams;
    if (streams == nullptr) return cancel;
    // The work may outlive the engine: it reaches it only through the
    // scheduler, and only while the engine lives.
    PostBack postBack = [this, &scheduler = ports_.scheduler, life = std::weak_ptr<int>(life_)](
                            std::function<void()> task) {
        scheduler.post([this, life, task = std::move(task)] {
            if (!life.expired() && !isShutDown_) task();
        });
    };
    streams->tasks.launch([remote = streams->remote, work = std::move(work), postBack](
                              const StreamCancel& token) { work(remote, token, postBack); },
                          cancel);
    return cancel;
}

void LiveEngine::beginStream(Run& run) {
    const std::optional<StreamApp> app = streamApp(run.cue.kind);
    if (!app) return;
    run.stream = app;
    const Uuid runID = run.id;
    const auto* track = streamTrackOf(run.cue.kind);
    if (!controlsMusicApps_ || ports_.streams == nullptr) {
        // Nothing is sent: the run keeps its own clock.
        run.simulated = true;
        if (track && track->playFor) {
            run.durationSeconds = std::max(*track->playFor, 0.0);
            run.tasks.push_back(after(*run.durationSeconds, [this, runID] {
                finish(runID, true, 0.3, true);
                publish();
            }));
        }
        return;
    }
    if (onProviderWillStart) onProviderWillStart(*app);

    // The app is taken over: an earlier run in it ends where it stands, and
    // a fade of it stops (the new start silences it first anyway).
    std::vector<Uuid> sameApp;
    for (const Uuid& id : runOrder_)
        if (const Run* other = findRun(id); other && id != runID && other->stream == app && !other->simulated)
            sameApp.push_back(id);
    for (const Uuid& id : sameApp) finish(id, true, 0, false);
    if (auto fade = streamFades_.find(*app); fade != streamFades_.end()) {
        fade->second.cancel();
        streamFades_.erase(fade);
    }

    // The older music leaves while the new start is being confirmed.
    const double fadeIn = cueStreamFadeIn(run.cue);
    handOffMusic(run, fadeIn);
    handOffVideoSound(run, fadeIn);

    Run* started = findRun(runID);
    if (started == nullptr) return;
    const int level = dippers_.empty() ? cueStreamLevel(run.cue) : dipped(cueStreamLevel(run.cue));
    const CueKind kind = started->cue.kind;
    started->streamStartup =
        launchStreamWork([this, runID, app = *app, kind, level, fadeIn](const StreamRemote& remote, const StreamCancel& cancel,
                                                                         const PostBack& postBack) {
            std::optional<StreamError> error;
            if (const auto* song = streamTrackOf(kind))
                error = remote.startTrack(app, song->reference, song->startAt, level, fadeIn, {}, cancel);
            else if (const auto* list = std::get_if<StreamPlaylistCue>(&kind))
                error = remote.startPlaylist(app, list->reference, list->shuffle, level, fadeIn, cancel);
            if (error && error->cancelled) return;
            postBack([this, runID, error] { streamStartEnded(runID, error); });
        });
}

void LiveEngine::streamStartEnded(const Uuid& runID, const std::optional<StreamError>& error) {
    Run* run = findRun(runID);
    if (run == nullptr) return;
    run->streamStartup.reset();
    if (error) {
        fail(runID, error->message);
        publish();
        return;
    }
    run->streamConfirmed = true;
    if (const auto* track = streamTrackOf(run->cue.kind))
        scheduleStreamStop(*run, *track, 0);
    publish();
}

void LiveEngine::scheduleStreamStop(Run& run, const StreamTrackCue& track, double elapsedSeconds) {
    if (!track.playFor || !drivesApp(run)) return;
    const double fadeOut = std::isfinite(track.fadeOut) ? std::max(track.fadeOut, 0.0) : 0.0;
    const double wait = std::max(*track.playFor - fadeOut - elapsedSeconds, 0.0);
    const Uuid runID = run.id;
    run.tasks.push_back(after(wait, [this, runID, fadeOut] {
        Run* ending = findRun(runID);
        if (ending == nullptr || !ending->stream) return;
        ending->fadingOut = true;
        fadeStream(*ending->stream, currentStreamLevel(*ending), 0, fadeOut, true, [this, runID] {
            finish(runID, true, 0.3, true);
            publish();
        });
    }));
}

void LiveEngine::fadeStream(StreamApp app, int from, int to, double seconds, bool pausesAfter,
                            std::function<void()> done) {
    if (auto running = streamFades_.find(app); running != streamFades_.end()) {
        running->second.cancel();
        streamFades_.erase(running);
    }
    auto token = std::make_shared<StreamCancel>();
    StreamCancel cancel = launchStreamWork([this, app, from, to, seconds, pausesAfter, token,
                                            done = std::move(done)](const StreamRemote& remote, const StreamCancel& cancel,
                                                                    const PostBack& postBack) {
        if (seconds > 0) remote.ramp(app, from, to, seconds, cancel);
        else if (!pausesAfter) remote.setVolume(app, to);
        if (cancel.isCancelled()) return;
        if (pausesAfter) remote.command(app, streamCommand::Pause{});
        postBack([this, app, token, done] {
            if (auto own = streamFades_.find(app); own != streamFades_.end() && own->second == *token)
                streamFades_.erase(own);
            if (done) done();
        });
    });
    *token = cancel;
    streamFades_.insert_or_assign(app, cancel);
}

void LiveEngine::sendStream(StreamApp app, StreamCommand command) {
    launchStreamWork([app, command = std::move(command)](const StreamRemote& remote, const StreamCancel&, const PostBack&) {
        // A command to an app that went away has nothing left to do.
        remote.command(app, command);
    });
}

void LiveEngine::pollStream(Run& run) {
    if (!drivesApp(run) || run.streamPollPending) return;
    run.streamPollPending = true;
    const Uuid runID = run.id;
    const StreamApp app = *run.stream;
    launchStreamWork([this, runID, app](const StreamRemote& remote, const StreamCancel&, const PostBack& postBack) {
        StreamStatusReply reply = remote.status(app);
        const bool appGone = reply.error && remote.isAppRunning && !remote.isAppRunning(app);
        postBack([this, runID, app, reply, appGone] {
            Run* polled = findRun(runID);
            if (polled == nullptr) return;
            polled->streamPollPending = false;
            if (appGone) {
                log(HistoryEntry::Kind::warning, polled->cue.name + " stopped — " + reply.error->message);
                finish(runID, true, 0.3, false);
                publish();
                return;
            }
            if (reply.error) return;
            polled->streamStatus = reply.status;
            const auto* track = streamTrackOf(polled->cue.kind);
            // Spotify runs on into the next song when a track ends: stop it there.
            if (track && app == StreamApp::spotify && polled->streamConfirmed && reply.status &&
                reply.status->isPlaying && polled->wallElapsed(ports_.scheduler.now()) > 4.0 &&
                reply.status->reference != track->reference)
                sendStream(app, streamCommand::Pause{});
        });
    });
}

void LiveEngine::stopStream(Run& run, double fadeSeconds) {
    if (!drivesApp(run)) return;
    // A start not yet confirmed is still silent; it only needs pausing.
    const int from = currentStreamLevel(run);
    fadeStream(*run.stream, from, 0, from > 0 ? fadeSeconds : 0, true);
}

int LiveEngine::currentStreamLevel(const Run& run) const {
    if (!run.streamConfirmed) return 0;
    if (run.streamStatus) return run.streamStatus->volume;
    return dippers_.empty() ? cueStreamLevel(run.cue) : dipped(cueStreamLevel(run.cue));
}

void LiveEngine::setStreamLevel(int level, const Run& run) {
    if (!drivesApp(run) || !run.streamConfirmed || run.fadingOut) return;
    const int clamped = std::clamp(level, 0, 100);
    sendStream(*run.stream, streamCommand::SetVolume{dippers_.empty() ? clamped : dipped(clamped)});
}

void LiveEngine::rampStreams(double seconds) {
    for (Run* run : activeRuns()) {
        if (!drivesApp(*run) || !run->streamConfirmed || run->fadingOut) continue;
        const int level = cueStreamLevel(run->cue);
        const int present = run->streamStatus ? run->streamStatus->volume : -1;
        if (!dippers_.empty()) fadeStream(*run->stream, present >= 0 ? present : level, dipped(level), seconds, false);
        else fadeStream(*run->stream, present >= 0 ? present : dipped(level), level, seconds, false);
    }
}

} // namespace velarion
