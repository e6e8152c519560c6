#pragma once
// GstVideoSurface: one video file on a GStreamer pipeline,
//   uridecodebin ┬ videoconvert → videoflip (auto) → appsink (I420 or NV12)
//                └ audioconvert → audioresample → F32 → volume → pulsesink
// the engine's VideoSurface.
//
// How it keeps its promises:
// - Frames: the appsink renders on the pipeline clock, so each decoded frame
//   reaches the latest-frame slot at its moment; render threads and the CPU
//   compositor read the slot without waiting. A frame is the decoder's own
//   buffer in its planes (I420 or NV12, which H.264 decoders give), with no
//   copy and no conversion on the way: the GL back end uploads the planes
//   and converts in its shader, and a CPU reader gets BGRA converted once
//   per frame on its own thread when it asks (VideoFrame). At 1080p60 the
//   streaming threads then do nothing but decode.
// - Loops by segment seeks issued from the bus thread the moment a pass is
//   read, as the sound player does, so the join has no gap and no repeated
//   frame. A pass that doesn't loop ends by EOS, holding its last frame.
// - `prepare` never blocks: the preroll's answer comes from the bus thread
//   and reaches the main loop by `Scheduler::post`, raced by a timer.
// - Sound: level and mute are `volume`'s; the audio tap sits after it, so
//   the sink hears what the device hears. Without a sound server the sound
//   goes to a clocked null sink and the picture still plays.
//
// Contract: as VideoSurface. Main thread; the streaming and bus threads
// touch only the shared state behind the pimpl. `scheduler` (and `devices`,
// when given) must outlive the surface. Destruction hands the pipeline to
// the reaper thread.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/VideoSurface.h"

#include <cstdint>
#include <memory>

namespace velarion {

struct GstVideoOptions {
    // A null sink stalls a clock it provides; tests turn this off.
    bool sinkProvidesClock = true;
};

class GstVideoSurface final : public VideoSurface, public std::enable_shared_from_this<GstVideoSurface> {
public:
    static std::shared_ptr<GstVideoSurface> make(Scheduler& scheduler, const AudioDevices* devices, SceneID id,
                                                 std::filesystem::path path, GstVideoOptions options = {});
    ~GstVideoSurface() override;
    GstVideoSurface(const GstVideoSurface&) = delete;
    GstVideoSurface& operator=(const GstVideoSurface&) = delete;

    bool hasFrameToShow() const override;
    std::shared_ptr<const StillPixels> latestFrame() const override;
    std::shared_ptr<const VideoFrame> latestVideoFrame() const override;

    const SceneID& id() const override { return id_; }
    const std::filesystem::path& path() const override { return path_; }
    const std::optional<VideoSurfaceInfo>& info() const override { return info_; }

    void prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) override;
    void play() override;
    void pause() override;
    bool isPlaying() const override;
    void seek(double seconds, std::function<void()> done = {}) override;
    double currentSeconds() const override;

    void setVolume(double level, bool muted) override;
    double volume() const override { return volume_; }
    bool isMuted() const override { return muted_; }

    bool loops() const override { return loops_; }
    void setLoops(bool loops) override;
    void setOnEnd(std::function<void()> onEnd) override { onEnd_ = std::move(onEnd); }

    std::optional<std::string> audioOutputDeviceUID() const override { return device_; }
    void setAudioOutputDeviceUID(const std::optional<std::string>& deviceUID) override;

    void setAudioSink(VideoAudioSink sink) override;

    // Diagnostics for benchmarks and logs.
    struct FrameCounts {
        std::uint64_t shown = 0;   // frames that reached the slot
        std::uint64_t dropped = 0; // frames the sink or the decoder dropped as late
    };
    FrameCounts frameCounts() const;
    // The pipeline's failure after a good prepare, in GStreamer's words.
    std::string failure() const override;

    struct Shared; // state shared with the bus and streaming threads

private:
    GstVideoSurface(Scheduler& scheduler, const AudioDevices* devices, SceneID id, std::filesystem::path path);
    void prepared(VideoPreparation result);
    void ended();
    void seeked();
    void seekNow(double seconds);

    Scheduler& scheduler_;
    const AudioDevices* devices_;
    SceneID id_;
    std::filesystem::path path_;
    std::shared_ptr<Shared> shared_;
    std::optional<VideoSurfaceInfo> info_;

    std::function<void(VideoPreparation)> preparing_;
    TaskHandle prepareTimeout_;
    std::vector<std::function<void()>> seekDone_;
    std::function<void()> onEnd_;
    std::optional<double> pendingSeconds_; // asked before the surface was ready
    double seekingSeconds_ = 0;
    bool seeking_ = false;
    bool playing_ = false;
    bool segmentMode_ = false;
    bool loops_ = false;
    double volume_ = 1;
    bool muted_ = false;
    std::optional<std::string> device_;
};

} // namespace velarion
