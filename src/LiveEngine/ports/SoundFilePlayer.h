#pragma once
// SoundFilePlayer: one decoded sound file, ready to play on one device. The
// engine wraps each in an AudioPlayback with the cue's in and out points.
//
// Contract.
// - Made by MediaPlayers::openSound already prepared, so `play` starts at
//   once. Main thread only.
// - Levels are linear amplitude factors, 0 to 1. `setVolume` with a fade
//   moves linearly from the present level to `level` over `fadeSeconds` on
//   the player's own clock; a later call replaces a running fade.
// - `loopCount` -1 loops the whole file seamlessly for ever; 0 plays once.
//   A player that reached its end (not looping) reports `isPlaying` false.
// - `stop` ends playback for good; after it, only reading calls make sense.
// - `averagePowerDecibels(channel)` is the average power since the last
//   `updateMeters`, in dB (0 is full scale; silence is very negative).
// - `failure` is empty until playback broke off (the output dropped the
//   stream, the file stopped decoding); then it says why in a few words and
//   `isPlaying` is false.
// - Ownership: shared by the engine's run and any task that finishes a fade;
//   the last owner to let go releases the decoder and the device.

#include <optional>
#include <string>

namespace velarion {

class SoundFilePlayer {
public:
    virtual ~SoundFilePlayer() = default;

    virtual double durationSeconds() const = 0;
    virtual double currentSeconds() const = 0;
    virtual void setCurrentSeconds(double seconds) = 0;

    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    virtual bool isPlaying() const = 0;

    virtual double volume() const = 0;
    virtual void setVolume(double level, double fadeSeconds = 0) = 0;

    virtual int loopCount() const = 0;
    virtual void setLoopCount(int count) = 0;

    // None is the system output. A device that is gone plays on the system
    // output; the answer says whether the named device was found.
    virtual bool setDevice(const std::optional<std::string>& deviceUID) = 0;

    virtual void updateMeters() = 0;
    virtual double averagePowerDecibels(int channel) const = 0;

    virtual std::string failure() const { return {}; }
};

} // namespace velarion
