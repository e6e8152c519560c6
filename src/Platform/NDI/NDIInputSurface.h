#pragma once
// NDIInputSurface: a live NDI source as a video cue's surface: the receiver
// for the picture, NDIAudioPlayback for the sound on the cue's output, and a
// 10 ms drain on the main loop from one to the other (and to an audio sink,
// so a feed can send the input's sound on).
//
// Contract: as NetworkInput. Construction throws NDIError as NDIReceiver
// does. `latestFrame` may be called from render threads.

#include "LiveEngine/ports/NetworkInput.h"
#include "LiveEngine/ports/Scheduler.h"
#include "Platform/NDI/NDIAudioPlayback.h"
#include "Platform/NDI/NDIReceiver.h"

#include <memory>
#include <mutex>

namespace velarion {

class NDIInputSurface final : public NetworkInput {
public:
    static constexpr double drainSeconds = 0.01;

    NDIInputSurface(Scheduler& scheduler, SceneID id, const NDISource& source);
    ~NDIInputSurface() override;

    // The latest picture, premultiplied BGRA; null before the first.
    std::shared_ptr<const StillPixels> latestFrame() const override;
    NDIReceiverStatus receiverStatus() const override { return receiver_.status(); }
    const std::optional<std::string>& soundError() const { return playback_.lastError(); }

    bool hasFrameToShow() const override { return latestFrame() != nullptr; }
    const SceneID& id() const override { return id_; }
    const std::filesystem::path& path() const override { return path_; }
    const std::optional<VideoSurfaceInfo>& info() const override { return info_; }
    void prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) override;
    void play() override;
    void pause() override;
    bool isPlaying() const override { return playing_; }
    void seek(double seconds, std::function<void()> done = {}) override;
    double currentSeconds() const override;
    void setVolume(double level, bool muted) override;
    double volume() const override { return volume_; }
    bool isMuted() const override { return muted_; }
    bool loops() const override { return false; }
    void setLoops(bool) override {}
    void setOnEnd(std::function<void()>) override {} // a live source has no end
    std::optional<std::string> audioOutputDeviceUID() const override { return deviceUID_; }
    void setAudioOutputDeviceUID(const std::optional<std::string>& deviceUID) override;
    void setAudioSink(VideoAudioSink sink) override;

private:
    void drain();

    Scheduler& scheduler_;
    SceneID id_;
    std::filesystem::path path_;
    NDIReceiver receiver_;
    NDIAudioPlayback playback_;
    std::optional<VideoSurfaceInfo> info_;
    std::optional<std::string> deviceUID_;
    double volume_ = 1;
    bool muted_ = false;
    bool playing_ = false;
    double playedFrom_ = 0;
    mutable std::mutex sinkLock_;
    VideoAudioSink sink_;
    TaskHandle drainTask_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
