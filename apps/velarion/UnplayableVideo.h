#pragma once
// UnplayableVideo: the video surface of a build without a video player. It
// never shows a frame; its `prepare` answers with a failure in the
// operator's words, so a video cue logs why it didn't play and its run ends,
// as for any file that can't play.
//
// Contract: as VideoSurface. Main thread; the answer comes on the main loop.

#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/VideoSurface.h"

#include <memory>

namespace velarion {

class UnplayableVideo final : public VideoSurface {
public:
    static constexpr const char* reason = "this build has no video player yet";

    UnplayableVideo(Scheduler& scheduler, SceneID id, std::filesystem::path path);

    bool hasFrameToShow() const override { return false; }
    const SceneID& id() const override { return id_; }
    const std::filesystem::path& path() const override { return path_; }
    const std::optional<VideoSurfaceInfo>& info() const override { return info_; }

    void prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) override;
    void play() override {}
    void pause() override {}
    bool isPlaying() const override { return false; }
    void seek(double, std::function<void()> done = {}) override;
    double currentSeconds() const override { return 0; }

    void setVolume(double level, bool muted) override;
    double volume() const override { return volume_; }
    bool isMuted() const override { return muted_; }
    bool loops() const override { return loops_; }
    void setLoops(bool loops) override { loops_ = loops; }
    void setOnEnd(std::function<void()>) override {}
    std::optional<std::string> audioOutputDeviceUID() const override { return device_; }
    void setAudioOutputDeviceUID(const std::optional<std::string>& device) override { device_ = device; }
    void setAudioSink(VideoAudioSink) override {} // never plays, so never has sound to hand over

private:
    Scheduler& scheduler_;
    SceneID id_;
    std::filesystem::path path_;
    std::optional<VideoSurfaceInfo> info_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    double volume_ = 1;
    bool muted_ = false;
    bool loops_ = false;
    std::optional<std::string> device_;
};

} // namespace velarion
