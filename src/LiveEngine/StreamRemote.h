#pragma once
// StreamRemote: drives the two music apps (Spotify, and the operator's own
// player) and does the careful part of it: a selected song is confirmed as
// playing, at the right position, with its level still at zero, before
// anybody hears it.
//
// Contract.
// - A plain value of replaceable functions: `send` (one operation to an
//   app, answered by a text or an error), `isAppRunning`, `sleep`, `now`
//   and `displayName`. The application fills them with its platform remote
//   behind one serial worker; tests fill them with doubles.
// - Every operation here blocks its caller and is meant for a background
//   task, never the main thread. The functions given must be safe to call
//   from any thread. No state lives in the value.
// - Cancellation: each long operation takes a StreamCancel; a cancelled
//   operation ends at its next step with a StreamError whose `cancelled` is
//   set, and never raises the level after that.
// - Nothing here ever launches an app: an app that isn't running fails with
//   its display name and " isn't running".

#include "LiveModel/CueKind.h"
#include "LiveModel/StreamApp.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velarion {

struct StreamStatus {
    std::string title;
    std::string artist;
    double position = 0; // seconds
    double duration = 0; // seconds
    bool isPlaying = false;
    std::string reference;
    int volume = 0; // whole percent
    friend bool operator==(const StreamStatus&, const StreamStatus&) = default;
};

struct StreamError {
    std::string message;
    bool cancelled = false; // ended by its task's cancellation, not by the app
    friend bool operator==(const StreamError&, const StreamError&) = default;
};

// A song found in the operator's music library; its identity is `reference`.
struct StreamTrackResult {
    std::string reference;
    std::string title;
    std::string artist;
    friend bool operator==(const StreamTrackResult& a, const StreamTrackResult& b) {
        return a.reference == b.reference;
    }
};

// One cancellation shared by a task and whoever may stop it. Copies share
// the flag; a sleep through it wakes at once when it is set.
class StreamCancel {
public:
    StreamCancel() : state_(std::make_shared<State>()) {}
    void cancel() const;
    bool isCancelled() const;
    // Waits `seconds` on the steady clock; false when cancelled first.
    bool waitFor(double seconds) const;
    // The same cancellation, not merely an equal one.
    friend bool operator==(const StreamCancel& a, const StreamCancel& b) { return a.state_ == b.state_; }

private:
    struct State {
        mutable std::mutex lock;
        std::condition_variable changed;
        bool cancelled = false;
    };
    std::shared_ptr<State> state_;
};

// The operations an app is sent, the same for both apps.
namespace streamCommand {
struct Play { std::string reference; friend bool operator==(const Play&, const Play&) = default; };
struct SetVolume { int percent = 0; friend bool operator==(const SetVolume&, const SetVolume&) = default; };
struct Seek { double seconds = 0; friend bool operator==(const Seek&, const Seek&) = default; };
struct SetShuffle { bool on = false; friend bool operator==(const SetShuffle&, const SetShuffle&) = default; };
struct Next { friend bool operator==(const Next&, const Next&) = default; };
struct Pause { friend bool operator==(const Pause&, const Pause&) = default; };
struct Resume { friend bool operator==(const Resume&, const Resume&) = default; };
// Answered by the status text: "stopped", or seven fields joined by tabs:
// state, title, artist, position, duration (Spotify in milliseconds, the
// other in seconds), reference, volume.
struct Status { friend bool operator==(const Status&, const Status&) = default; };
} // namespace streamCommand
using StreamCommand = std::variant<streamCommand::Play, streamCommand::SetVolume, streamCommand::Seek,
                                   streamCommand::SetShuffle, streamCommand::Next, streamCommand::Pause,
                                   streamCommand::Resume, streamCommand::Status>;

struct StreamReply {
    std::string text;
    std::optional<StreamError> error;
};

struct StreamStatusReply {
    std::optional<StreamStatus> status; // none: the app plays nothing
    std::optional<StreamError> error;
};

struct StreamRemote {
    using Send = std::function<StreamReply(StreamApp, const StreamCommand&)>;
    using IsAppRunning = std::function<bool(StreamApp)>;
    using Sleep = std::function<bool(double seconds, const StreamCancel&)>; // false: cancelled
    using Now = std::function<double()>;                                   // continuous seconds
    using DisplayName = std::function<std::string(StreamApp)>;
    using IsLive = std::function<bool()>;

    static constexpr double positionToleranceSeconds = 1.5;
    static constexpr int rampStepsPerSecond = 20;

    Send send;
    IsAppRunning isAppRunning;
    Sleep sleep = [](double seconds, const StreamCancel& cancel) { return cancel.waitFor(seconds); };
    Now now = steadySeconds;
    DisplayName displayName = defaultDisplayName;
    // How often a start asks the app while it confirms, and how long it
    // waits for the song and then for the position.
    double confirmPollSeconds = 0.2;
    double songConfirmSeconds = 8.0;
    double positionConfirmSeconds = 6.0;

    static double steadySeconds();
    static std::string defaultDisplayName(StreamApp app);

    std::optional<StreamError> requireRunning(StreamApp app) const;
    // `requireRunning`, then the command.
    std::optional<StreamError> command(StreamApp app, const StreamCommand& command) const;
    std::optional<StreamError> setVolume(StreamApp app, int percent) const;
    StreamStatusReply status(StreamApp app) const;

    // The silent start: level 0, play, confirm the song, seek and confirm
    // the position, and only then raise the level. `isLive` is asked before
    // each step; when it says no the start ends with the level at zero.
    std::optional<StreamError> startTrack(StreamApp app, const std::string& reference, double startAt,
                                          int level, double fadeInSeconds, const IsLive& isLive,
                                          const StreamCancel& cancel) const;
    // A playlist or album: level 0, shuffle, play, then the ramp.
    std::optional<StreamError> startPlaylist(StreamApp app, const std::string& reference, bool shuffle,
                                             int level, double fadeInSeconds, const StreamCancel& cancel) const;
    // A straight line in whole percents, 20 steps a second; cancellation
    // leaves the level where it was.
    std::optional<StreamError> ramp(StreamApp app, int from, int to, double seconds,
                                    const StreamCancel& cancel) const;

    // The status text as the app answers it; none for "stopped", an empty
    // text, or anything malformed.
    static std::optional<StreamStatus> parseStatus(StreamApp app, std::string_view text);
    // Where a track cue's clock stands in the song.
    static double absolutePosition(double cueSeconds, double startAt);
    // A Spotify URI from a link or URI the operator pasted; none when it
    // isn't a Spotify song, album or playlist.
    static std::optional<std::string> spotifyURI(std::string_view text);
    static bool isAlbum(std::string_view reference);

private:
    bool confirm(StreamApp app, const std::function<bool(const StreamStatus&)>& wanted, double seconds,
                 const IsLive& isLive, const StreamCancel& cancel, std::optional<StreamError>& error) const;
};

// The song of a Spotify or Music track cue; none for any other kind.
inline const StreamTrackCue* streamTrackOf(const CueKind& kind) {
    if (const auto* song = std::get_if<SpotifyTrack>(&kind)) return song;
    if (const auto* song = std::get_if<MusicTrack>(&kind)) return song;
    return nullptr;
}

inline StreamError streamCancelled() { return {"The music app start was cancelled", true}; }

} // namespace velarion
