#pragma once
// ProviderPreviewSession: the operator's audition of a Spotify or Music cue
// in its real app, without firing it. It starts the song by the same silent
// start as the engine, watches that the app stays on that song, honours the
// cue's play-for and fade-out, and gives way at once when live playback
// takes the app.
//
// Contract.
// - Main thread only. The app is reached through StreamTasks (off the main
//   thread); results come back through the Scheduler.
// - One test at a time. Every start and stop takes a new token, so that a
//   late answer of an old test changes nothing.
// - The scheduler and the tasks must outlive the session; after destruction
//   nothing it started touches it (its work is cancelled, its wake-ups hold
//   it weakly).

#include "Identity/Uuid.h"
#include "LiveEngine/StreamRemote.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/StreamTasks.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velarion {

struct ProviderPlaybackWindow {
    double remaining = 0;     // seconds
    double fadeDuration = 0;  // seconds
    static std::optional<ProviderPlaybackWindow> make(std::optional<double> playFor, double fadeOut,
                                                      double elapsed);
    friend bool operator==(const ProviderPlaybackWindow&, const ProviderPlaybackWindow&) = default;
};

class ProviderPreviewSession {
public:
    static constexpr double watchSeconds = 0.5;
    using IsLive = std::function<bool(StreamApp)>;

    ProviderPreviewSession(StreamRemote remote, StreamTasks& tasks, Scheduler& scheduler);
    ~ProviderPreviewSession();
    ProviderPreviewSession(const ProviderPreviewSession&) = delete;
    ProviderPreviewSession& operator=(const ProviderPreviewSession&) = delete;

    void start(const Uuid& cueID, StreamApp app, const StreamTrackCue& track, IsLive isLive);
    void stop();
    // Live playback is about to take `app`: the test ends without touching it.
    void cancelForLive(StreamApp app);

    // Published.
    const std::optional<Uuid>& cueID() const { return cueID_; }
    const std::optional<StreamApp>& app() const { return app_; }
    const std::optional<StreamStatus>& status() const { return status_; }
    const std::string& note() const { return note_; }
    bool isStarting() const { return isStarting_; }
    // Called on the main loop after any published value changed.
    std::function<void()> onChange;

private:
    void started(const Uuid& token, const std::optional<StreamError>& error, const StreamTrackCue& track);
    void watched(const Uuid& token, const StreamStatusReply& reply);
    void scheduleEnd(const ProviderPlaybackWindow& window, int startedLevel);
    void cancelTasks();
    void finish(const std::string& note);
    void changed();

    StreamRemote remote_;
    StreamTasks& tasks_;
    Scheduler& scheduler_;
    std::optional<Uuid> cueID_;
    std::optional<StreamApp> app_;
    std::optional<StreamStatus> status_;
    std::string note_;
    bool isStarting_ = false;
    std::optional<StreamCancel> task_;
    std::optional<StreamCancel> endTask_;
    TaskHandle endWait_;
    Uuid token_ = Uuid::random();
    IsLive isLive_;
    std::string expectedReference_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
