#pragma once
// NDIAudioPlayback: an NDI input's sound played to a chosen output, with at
// most a quarter of a second waiting, so the sound stays close to the
// picture. What would wait longer is dropped.
//
// Contract.
// - Main thread. `append` takes planar float frames and (re)builds the
//   sound path when the frame's rate or channel count changes.
// - Failures silence the sound only; `lastError` holds the operator's words.
// - `stop` (or destruction) takes the sound path down off the main thread;
//   nothing plays after it.

#include "LiveEngine/ports/NetworkFeeds.h"
#include "Platform/Gst/GstHandles.h"

#include <optional>
#include <string>

namespace velarion {

class NDIAudioPlayback {
public:
    static constexpr const char* openFailedWords = "The NDI sound output could not be opened.";
    static constexpr const char* oversizedWords = "The NDI audio packet exceeds the live playback buffer.";
    static constexpr const char* invalidWords = "The NDI source returned an invalid audio buffer.";
    static constexpr const char* bufferWords = "The NDI audio buffer could not be prepared.";
    static constexpr double bufferSeconds = 0.25;

    NDIAudioPlayback(std::optional<std::string> deviceUID, double volume);
    ~NDIAudioPlayback();
    NDIAudioPlayback(const NDIAudioPlayback&) = delete;
    NDIAudioPlayback& operator=(const NDIAudioPlayback&) = delete;

    void append(const NDIAudioFrame& frame);
    void setVolume(double level);
    void setDevice(const std::optional<std::string>& deviceUID);
    void setPaused(bool paused) { paused_ = paused; }
    void stop();
    bool isStopped() const { return stopped_; }
    const std::optional<std::string>& lastError() const { return lastError_; }

private:
    bool prepare(int sampleRate, int channels);
    void takeDown();

    std::optional<std::string> deviceUID_;
    double volume_;
    bool paused_ = false;
    bool stopped_ = false;
    int sampleRate_ = 0;
    int channels_ = 0;
    std::uint64_t generation_ = 0;
    gst::Element pipeline_;
    gst::Element source_;
    gst::Element level_;
    std::vector<float> interleaved_;
    std::optional<std::string> lastError_;
};

} // namespace velarion
