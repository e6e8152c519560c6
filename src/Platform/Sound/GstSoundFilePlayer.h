#pragma once
// GstSoundFilePlayer: one sound file on a GStreamer pipeline,
//   uridecodebin → audioconvert → audioresample → volume → level → pulsesink
// prepared (prerolled) when it is opened, so `play` starts at once.
//
// How it keeps its promises:
// - Fades are control points on `volume`, interpolated per sample, so a fade
//   costs no timer. The points live on the player's own timeline: the audio
//   that has passed `volume` since the player was made, which goes on
//   through seeks and loop seams. (A probe gives `volume` that timeline as
//   its stream time and gives the sink the file's own back.)
// - A loop of -1 loops by segment seeks issued from the bus thread the
//   moment a pass has been read, so the join has no gap.
// - `level` posts the average power per channel; `updateMeters` takes the
//   latest.
// - `stop` lets a fade that is heading for silence be heard to its end, or
//   else fades over 10 ms, and then the pipeline is taken down on the reaper
//   thread; nothing here waits on the sound server after the file is open.
//
// Contract: as SoundFilePlayer. Main thread only; bus and streaming threads
// touch only the shared state behind the pimpl.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/SoundFilePlayer.h"

#include <memory>
#include <optional>
#include <string>

namespace velarion {

struct GstSoundOptions {
    // A null sink stalls a clock it provides; tests turn this off.
    bool sinkProvidesClock = true;
    double prepareTimeoutSeconds = 5;
    // How much sound the sink holds ahead; also how late a fade is heard.
    double sinkBufferSeconds = 0.1;
};

class GstSoundFilePlayer final : public SoundFilePlayer {
public:
    // A player for `uri` (file:// or data:), prerolled on the system output.
    // Null with `failure` set when the file can't be played. `devices`, when
    // given, must outlive the player; `setDevice` checks presence there.
    static std::shared_ptr<GstSoundFilePlayer> open(const std::string& uri, const AudioDevices* devices,
                                                    const GstSoundOptions& options, std::string& failure);
    ~GstSoundFilePlayer() override;
    GstSoundFilePlayer(const GstSoundFilePlayer&) = delete;
    GstSoundFilePlayer& operator=(const GstSoundFilePlayer&) = delete;

    double durationSeconds() const override;
    double currentSeconds() const override;
    void setCurrentSeconds(double seconds) override;

    void play() override;
    void pause() override;
    void stop() override;
    bool isPlaying() const override;

    double volume() const override;
    void setVolume(double level, double fadeSeconds = 0) override;

    int loopCount() const override { return loopCount_; }
    void setLoopCount(int count) override;

    bool setDevice(const std::optional<std::string>& deviceUID) override;

    void updateMeters() override;
    double averagePowerDecibels(int channel) const override;
    // The pipeline's error (a stream the sound server dropped, a file that
    // stopped decoding), in GStreamer's words.
    std::string failure() const override;

    // Diagnostics for benchmarks and logs.
    // Seconds from the last `play` to the first buffer the sink took after it.
    std::optional<double> secondsToFirstBufferAfterPlay() const;
    // QoS reports of late buffers at the sink since the player was made.
    int lateBufferReports() const;
    // The output the sound server actually plays on (its sink name).
    std::string currentDevice() const;

    struct Shared; // state shared with the bus and streaming threads

private:
    struct Fade {
        double fromLevel = 1;
        double toLevel = 1;
        std::int64_t startNanoseconds = 0;
        std::int64_t endNanoseconds = 0;
        double levelAt(std::int64_t nanoseconds) const;
    };

    GstSoundFilePlayer(std::shared_ptr<Shared> shared, const AudioDevices* devices);
    void seekNow(double seconds, bool flush);
    void installFade(const Fade& fade);
    void finishStop(double drainSeconds);

    std::shared_ptr<Shared> shared_;
    const AudioDevices* devices_;
    int loopCount_ = 0;
    bool playing_ = false;
    bool stopped_ = false;
    // Set when what was prerolled no longer matches: a new position, or a
    // level set since the prerolled audio passed `volume`.
    std::optional<double> pendingSeconds_;
    bool prerollStale_ = false;
    double frozenSeconds_ = 0;
    Fade fade_;
    double meteredDecibels_[2] = {-160, -160};
};

} // namespace velarion
