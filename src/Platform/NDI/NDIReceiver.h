#pragma once
// NDIReceiver: one live NDI source received on a worker thread of its own,
// which keeps the latest picture (premultiplied BGRA) and at most a quarter
// of a second of sound, and the receiver's state.
//
// Contract.
// - Construction throws NDIError: `invalidSource` for an empty name,
//   `unavailable` without a runtime, `creationFailed` when the runtime
//   refuses the receiver.
// - `status`, `latestVideo`, `takeAudio` from any thread; one lock guards
//   the snapshot and the queues and is never held across a runtime call.
// - `close` (or destruction) ends the loop; the runtime's receiver is
//   destroyed on the worker, which keeps what it needs alive.

#include "LiveEngine/ports/NetworkFeeds.h"
#include "LiveEngine/ports/NetworkInput.h"
#include "ShowStage/StillImage.h"

#include <memory>
#include <vector>

namespace velarion {

struct NDIReceivedVideo {
    std::shared_ptr<const StillPixels> pixelBuffer;
    std::uint64_t sequence = 0;
    std::int64_t timecode = 0;
};

class NDIReceiver {
public:
    static constexpr const char* creationWords =
        "This NDI input could not start. Check the source and Local Network access.";
    static constexpr const char* sizeWords = "The NDI source returned an unsupported picture size.";
    static constexpr const char* formatWords = "The NDI source returned an unsupported video format.";
    static constexpr const char* disconnectedWords = "The NDI source disconnected. Waiting for it to return…";
    static constexpr const char* unavailableWords = "The NDI source is unavailable. Waiting for it to return…";
    static constexpr const char* videoAndAudioWords = "Receiving NDI video and audio.";
    static constexpr const char* audioOnlyWords = "Receiving NDI audio.";
    static constexpr double audioSecondsLimit = 0.25;
    // The scale the runtime's sound is brought to the system's level by.
    static constexpr float levelScale = 0.1f;

    explicit NDIReceiver(NDISource source);
    ~NDIReceiver();
    NDIReceiver(const NDIReceiver&) = delete;
    NDIReceiver& operator=(const NDIReceiver&) = delete;

    const NDISource& source() const { return source_; }
    NDIReceiverStatus status() const;
    std::optional<NDIReceivedVideo> latestVideo() const;
    std::vector<NDIAudioFrame> takeAudio();
    void close();

private:
    struct Worker;
    NDISource source_;
    std::shared_ptr<Worker> worker_;
};

} // namespace velarion
