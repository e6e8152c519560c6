#pragma once
// VideoSurface: one playing video. The engine prepares it, starts it, seeks,
// loops and levels it; renderers show its frames by `id`.
//
// Contract.
// - Main thread only, callbacks included: `prepare`'s answer, `seek`'s
//   answer and `onEnd` are delivered on the main loop, never inside the call
//   that caused them.
// - `prepare(timeoutSeconds, done)` loads the file and answers once, with
//   the video's facts or the failure. When the timeout passes first the
//   answer is `notReadyInTime`.
// - `seek` is exact (no tolerance either side).
// - The end of the file pauses on the last frame. With `loops` on, the
//   surface seeks to zero and plays on without calling `onEnd`; otherwise it
//   calls `onEnd` once for that end.
// - Volume is a linear factor clamped to 0 … 1; muted plays silence.
// - Ownership: shared by the engine (its run, its `surfaces`) and by
//   renderers through SceneVideoSource. Destruction stops playback and drops
//   pending callbacks.

#include "LiveEngine/ports/VideoAudioSink.h"
#include "ShowStage/SceneID.h"
#include "ShowStage/SceneVideoSource.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <variant>

namespace velarion {

struct VideoSurfaceInfo {
    int pixelWidth = 0;
    int pixelHeight = 0;
    double nominalFrameRate = 0;
    double durationSeconds = 0;
    bool hasAudio = false;
    friend bool operator==(const VideoSurfaceInfo&, const VideoSurfaceInfo&) = default;
};

struct VideoSurfaceError {
    enum class Case { loadFailed, noPlayableDuration, noVideoTrack, notReadyInTime };
    Case error = Case::loadFailed;
    std::string reason; // loadFailed only; empty gives the general words

    // The operator's words for the failure.
    std::string text() const;
    friend bool operator==(const VideoSurfaceError&, const VideoSurfaceError&) = default;
};

using VideoPreparation = std::variant<VideoSurfaceInfo, VideoSurfaceError>;

class VideoSurface : public SceneVideoSource {
public:
    virtual const SceneID& id() const = 0;
    virtual const std::filesystem::path& path() const = 0;
    // Set by a successful prepare.
    virtual const std::optional<VideoSurfaceInfo>& info() const = 0;

    virtual void prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual bool isPlaying() const = 0;
    virtual void seek(double seconds, std::function<void()> done = {}) = 0;
    virtual double currentSeconds() const = 0;

    virtual void setVolume(double level, bool muted) = 0;
    virtual double volume() const = 0;
    virtual bool isMuted() const = 0;

    virtual bool loops() const = 0;
    virtual void setLoops(bool loops) = 0;
    virtual void setOnEnd(std::function<void()> onEnd) = 0;

    // None is the system output.
    virtual std::optional<std::string> audioOutputDeviceUID() const = 0;
    virtual void setAudioOutputDeviceUID(const std::optional<std::string>& deviceUID) = 0;

    // The audio tap (see VideoAudioSink.h); an empty sink removes it.
    virtual void setAudioSink(VideoAudioSink sink) = 0;

    // Why playback broke off after a good prepare (a file deleted, a device
    // gone), in the player's words; empty while nothing went wrong. The end
    // it causes still arrives through `onEnd`.
    virtual std::string failure() const { return {}; }
};

} // namespace velarion
