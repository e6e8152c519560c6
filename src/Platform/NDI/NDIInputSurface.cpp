#include "Platform/NDI/NDIInputSurface.h"

namespace velarion {

NDIInputSurface::NDIInputSurface(Scheduler& scheduler, SceneID id, const NDISource& source)
    : scheduler_(scheduler), id_(std::move(id)), path_("ndi:" + source.name), receiver_(source),
      playback_(std::nullopt, 1) {}

NDIInputSurface::~NDIInputSurface() {
    drainTask_.cancel();
    receiver_.close();
}

std::shared_ptr<const StillPixels> NDIInputSurface::latestFrame() const {
    const auto video = receiver_.latestVideo();
    return video ? video->pixelBuffer : nullptr;
}

void NDIInputSurface::prepare(double, std::function<void(VideoPreparation)> done) {
    const NDIReceiverStatus status = receiver_.status();
    info_ = VideoSurfaceInfo{status.width, status.height, status.framesPerSecond, 0, true};
    std::weak_ptr<int> life = life_;
    scheduler_.post([life, done = std::move(done), info = *info_] {
        if (!life.expired()) done(info);
    });
}

void NDIInputSurface::play() {
    if (playing_) return;
    playing_ = true;
    playedFrom_ = scheduler_.now();
    playback_.setPaused(false);
    receiver_.takeAudio(); // what waited while paused is stale
    drain();
}

void NDIInputSurface::pause() {
    playing_ = false;
    playback_.setPaused(true);
    drainTask_.cancel();
}

void NDIInputSurface::seek(double, std::function<void()> done) {
    if (!done) return;
    std::weak_ptr<int> life = life_;
    scheduler_.post([life, done = std::move(done)] {
        if (!life.expired()) done();
    });
}

double NDIInputSurface::currentSeconds() const { return playing_ ? scheduler_.now() - playedFrom_ : 0; }

void NDIInputSurface::setVolume(double level, bool muted) {
    volume_ = std::clamp(level, 0.0, 1.0);
    muted_ = muted;
    playback_.setVolume(muted ? 0 : volume_);
}

void NDIInputSurface::setAudioOutputDeviceUID(const std::optional<std::string>& deviceUID) {
    deviceUID_ = deviceUID;
    playback_.setDevice(deviceUID);
}

void NDIInputSurface::setAudioSink(VideoAudioSink sink) {
    std::lock_guard guard(sinkLock_);
    sink_ = std::move(sink);
}

void NDIInputSurface::drain() {
    if (!playing_) return;
    std::vector<NDIAudioFrame> frames = receiver_.takeAudio();
    VideoAudioSink sink;
    {
        std::lock_guard guard(sinkLock_);
        sink = sink_;
    }
    const float gain = muted_ ? 0.0f : static_cast<float>(volume_);
    std::vector<float> levelled;
    for (const NDIAudioFrame& frame : frames) {
        playback_.append(frame);
        if (!sink) continue;
        // The sink gets the sound after the surface's level, as a video's tap does.
        levelled.resize(frame.samples.size());
        for (std::size_t i = 0; i < levelled.size(); ++i) levelled[i] = frame.samples[i] * gain;
        std::vector<const float*> channels;
        for (int c = 0; c < frame.channels; ++c)
            channels.push_back(levelled.data() + static_cast<std::size_t>(c) * frame.samplesPerChannel);
        sink(VideoAudioBlock{channels, static_cast<std::size_t>(frame.samplesPerChannel),
                             static_cast<double>(frame.sampleRate)});
    }
    std::weak_ptr<int> life = life_;
    drainTask_ = scheduler_.after(drainSeconds, [this, life] {
        if (!life.expired()) drain();
    });
}

} // namespace velarion
