#pragma once
// Run: one firing of one cue, from GO through its pre-wait to its end.
// Owned by the engine's `runs`; tasks that wake later hold only its id and
// look it up again, since a stop may have removed it meanwhile. Main thread.
// Times are the Scheduler's monotonic seconds.

#include "Identity/Uuid.h"
#include "LiveEngine/StreamRemote.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/SoundFilePlayer.h"
#include "LiveEngine/ports/NetworkInput.h"
#include "LiveEngine/ports/VideoSurface.h"
#include "LiveModel/Cue.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace velarion {

// One playing sound file with the part of it the cue plays.
struct AudioPlayback {
    std::shared_ptr<SoundFilePlayer> player;
    double inPointSeconds = 0;
    double outPointSeconds = 0;
    double fadeOutSeconds = 0;
    double cueLevel = 1;     // the cue's own level; a live edit may change it
    bool isFadingOut = false; // from then on no level operation touches it
    bool isPaused = false;
    bool deviceMissing = false; // its device was gone when it opened
};

// A player opening off the main loop for what the run plays next: the next
// song of a playlist, or the next pass of a crossfading loop.
struct SoundAhead {
    std::filesystem::path file;
    Uuid token; // tells this opening from a later one of the same run
    bool isOpen = false; // answered; `player` is null when it couldn't open
    std::shared_ptr<SoundFilePlayer> player;
};

struct Run {
    Uuid id;
    Cue cue; // refreshed by live updates
    double started = 0; // when fired, before any pre-wait
    Uuid group;         // shared by all runs of one GO
    std::optional<double> pausedAt;
    double pausedTotalSeconds = 0;
    std::optional<double> waitingUntil; // set during the pre-wait
    std::optional<double> preWaitLeftSeconds; // a pre-wait held by a pause
    std::shared_ptr<VideoSurface> video;
    std::shared_ptr<NetworkInput> networkInput; // the same surface, for a live NDI source
    std::optional<NDIConnectionPhase> networkPhase; // last logged
    std::optional<AudioPlayback> audio;
    bool simulated = false;
    std::optional<double> durationSeconds;
    std::optional<int> slideIndex;
    std::optional<int> slideCount;
    bool isBackgroundOnly = false;
    std::optional<Uuid> backdropToken;
    // The deck background last put up for the run (none: none), so that only
    // a change puts it up again.
    std::optional<Backdrop> shownBackdrop;
    int slidePart = 0;
    bool fadingOut = false;
    bool soundHandedOff = false;
    bool soundDeviceMissing = false; // its device went; the system output plays it
    std::vector<TaskHandle> tasks;
    TaskHandle loopTask;
    std::vector<Uuid> playlistOrder;
    std::optional<std::vector<Uuid>> upcomingOrder; // a repeat's next order, drawn ahead
    int playlistIndex = 0;
    std::optional<double> songWaitingFadeSeconds; // the song at playlistIndex waits for its player
    std::optional<SoundAhead> soundAhead;
    std::vector<AudioPlayback> audioTails;
    // A music app the run drives, its last status, and its start in the app.
    std::optional<StreamApp> stream;
    std::optional<StreamStatus> streamStatus;
    std::optional<StreamCancel> streamStartup;
    bool streamConfirmed = false; // the app plays the cue's song, at its level
    bool streamPollPending = false;

    bool isPaused() const { return pausedAt.has_value(); }
    // Seconds the cue has really played: paused time and the pre-wait left
    // out, never below 0.
    double wallElapsed(double now) const;
    // `audio` followed by `audioTails`.
    std::vector<const AudioPlayback*> allAudio() const;
    void cancelTasks();
};

} // namespace velarion
