#include "LiveEngine/ProviderPreviewSession.h"

#include "LiveModel/TimeText.h"

#include <algorithm>
#include <cmath>

namespace velarion {

std::optional<ProviderPlaybackWindow> ProviderPlaybackWindow::make(std::optional<double> playFor, double fadeOut,
                                                                   double elapsed) {
    if (!playFor) return std::nullopt;
    const auto clean = [](double value) { return std::isfinite(value) && value > 0 ? value : 0.0; };
    ProviderPlaybackWindow window;
    window.remaining = clean(*playFor - elapsed);
    window.fadeDuration = std::min(clean(fadeOut), window.remaining);
    return window;
}

ProviderPreviewSession::ProviderPreviewSession(StreamRemote remote, StreamTasks& tasks, Scheduler& scheduler)
    : remote_(std::move(remote)), tasks_(tasks), scheduler_(scheduler) {}

ProviderPreviewSession::~ProviderPreviewSession() { cancelTasks(); }

namespace {

// For work off the main thread: it reaches the session only through the
// scheduler, and only while the session lives.
void postWhileAlive(Scheduler& scheduler, const std::weak_ptr<int>& life, std::function<void()> task) {
    scheduler.post([life, task = std::move(task)] {
        if (!life.expired()) task();
    });
}

} // namespace

void ProviderPreviewSession::changed() {
    if (onChange) onChange();
}

void ProviderPreviewSession::cancelTasks() {
    if (task_) task_->cancel();
    if (endTask_) endTask_->cancel();
    endWait_.cancel();
    task_.reset();
    endTask_.reset();
}

void ProviderPreviewSession::start(const Uuid& cueID, StreamApp app, const StreamTrackCue& track, IsLive isLive) {
    if (app_ && *app_ != app) {
        note_ = "Stop the current provider test before testing another app.";
        return changed();
    }
    cancelTasks();
    token_ = Uuid::random();
    cueID_ = cueID;
    app_ = app;
    expectedReference_ = track.reference;
    isLive_ = std::move(isLive);
    status_.reset();
    isStarting_ = true;
    note_ = "Starting " + remote_.displayName(app) + " and confirming the song and start point…";

    const Uuid token = token_;
    StreamCancel cancel;
    task_ = cancel;
    tasks_.launch(
        [this, token, app, track, remote = remote_, &scheduler = scheduler_,
         life = std::weak_ptr<int>(life_)](const StreamCancel& stop) {
            const auto post = [&](std::function<void()> task) { postWhileAlive(scheduler, life, std::move(task)); };
            std::optional<StreamError> error =
                remote.startTrack(app, track.reference, track.startAt, track.level, track.fadeIn, {}, stop);
            if (error && error->cancelled) return;
            post([this, token, error, track] { started(token, error, track); });
            if (error) return;
            while (remote.sleep(watchSeconds, stop)) {
                StreamStatusReply reply = remote.status(app);
                if (stop.isCancelled()) return;
                post([this, token, reply] { watched(token, reply); });
            }
        },
        cancel);
    changed();
}

void ProviderPreviewSession::started(const Uuid& token, const std::optional<StreamError>& error,
                                     const StreamTrackCue& track) {
    if (token != token_ || !app_) return;
    if (error) return finish(error->message);
    isStarting_ = false;
    const std::string name = remote_.displayName(*app_);
    note_ = track.startAt > 0 ? "Testing from " + TimeText::duration(track.startAt) + " in " + name +
                                    ". Audio uses that app’s output."
                              : "Testing in " + name + ". Audio uses that app’s output.";
    if (auto window = ProviderPlaybackWindow::make(track.playFor, track.fadeOut, 0))
        scheduleEnd(*window, std::clamp(track.level, 0, 100));
    changed();
}

void ProviderPreviewSession::watched(const Uuid& token, const StreamStatusReply& reply) {
    if (token != token_ || !app_) return;
    if (reply.error) return finish(reply.error->message);
    status_ = reply.status;
    if (!reply.status || reply.status->reference != expectedReference_)
        return finish("The provider changed songs; this test has ended.");
    if (isLive_ && isLive_(*app_)) return cancelForLive(*app_);
    changed();
}

void ProviderPreviewSession::scheduleEnd(const ProviderPlaybackWindow& window, int startedLevel) {
    const Uuid token = token_;
    std::weak_ptr<int> life = life_;
    endWait_ = scheduler_.after(window.remaining - window.fadeDuration, [this, life, token, window, startedLevel] {
        if (life.expired() || token != token_ || !app_) return;
        note_ = "Finishing provider test with the cue’s fade out…";
        const StreamApp app = *app_;
        // Before the first watch the app is where the start left it.
        const int from = status_ ? status_->volume : startedLevel;
        StreamCancel cancel;
        endTask_ = cancel;
        tasks_.launch(
            [this, token, app, from, window, remote = remote_, &scheduler = scheduler_,
             life = std::weak_ptr<int>(life_)](const StreamCancel& stop) {
                if (window.fadeDuration > 0) remote.ramp(app, from, 0, window.fadeDuration, stop);
                if (stop.isCancelled()) return;
                remote.command(app, streamCommand::Pause{});
                postWhileAlive(scheduler, life, [this, token] {
                    if (token == token_) finish("Provider test finished.");
                });
            },
            cancel);
        changed();
    });
}

void ProviderPreviewSession::stop() {
    if (!app_) return;
    cancelTasks();
    token_ = Uuid::random();
    tasks_.launch([app = *app_, remote = remote_](const StreamCancel&) { remote.command(app, streamCommand::Pause{}); },
                  StreamCancel{});
    finish("Provider test stopped.");
}

void ProviderPreviewSession::cancelForLive(StreamApp app) {
    if (app_ != app) return;
    cancelTasks();
    token_ = Uuid::random();
    finish("Live playback has taken control of " + remote_.displayName(app) + ".");
}

void ProviderPreviewSession::finish(const std::string& note) {
    cancelTasks();
    cueID_.reset();
    app_.reset();
    status_.reset();
    isStarting_ = false;
    isLive_ = {};
    note_ = note;
    changed();
}

} // namespace velarion
