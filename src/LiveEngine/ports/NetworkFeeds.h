#pragma once
// NetworkFeeds: what the output manager needs of a network feed, without the
// runtime behind it. A feed is a compositor drawing the feed's scene at its
// own size and rate, and a sender that takes the pictures and the sound.
//
// Contract.
// - `FeedSender`: `send` and `sendAudio` may be called from any thread and
//   never block on the network; what can't go is dropped, the newest picture
//   kept. `status` is a snapshot, any thread. `close` ends sending at once and
//   calls `completion` from the sender's own thread once the name is free;
//   nothing is sent after it. The sender outlives its last call.
// - `FeedCompositor`: `apply` from the main thread only; `frame` from the
//   feed's render thread; the two may overlap, the compositor locks.
//   `stop` (main thread) drops the pool; `frame` answers nothing after it.
// - Factories throw `NDIError` with the operator's words when a feed can't be
//   made; the output manager shows them in health and retries on the next
//   configuration.

#include "LiveEngine/OutputHealth.h"
#include "LiveModel/NDISource.h"
#include "LiveModel/OutputSetup.h"
#include "ShowStage/OutputScene.h"
#include "ShowStage/SceneVideoSource.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion {

struct NDIRuntimeStatus {
    bool isAvailable = false;
    std::optional<std::string> version;
    std::string message;
    friend bool operator==(const NDIRuntimeStatus&, const NDIRuntimeStatus&) = default;
};

// `unavailable` and `creationFailed` carry their words; `invalidSource` has
// its own.
class NDIError : public std::runtime_error {
public:
    enum class Case { unavailable, creationFailed, invalidSource };
    static constexpr const char* invalidSourceWords = "Choose an NDI source before starting this cue.";

    NDIError(Case which, const std::string& text)
        : std::runtime_error(which == Case::invalidSource ? invalidSourceWords : text), case_(which) {}
    Case which() const { return case_; }

private:
    Case case_;
};

// Planar float sound, one channel after another.
struct NDIAudioFrame {
    std::vector<float> samples;
    int sampleRate = 0;
    int channels = 0;
    int samplesPerChannel = 0;
    std::int64_t timecode = 0;

    double durationSeconds() const {
        return sampleRate > 0 ? static_cast<double>(samplesPerChannel) / sampleRate : 0;
    }
    // Fields that agree with each other and with the samples held.
    bool isWellFormed() const {
        return sampleRate >= 1 && sampleRate <= 384000 && channels >= 1 && channels <= 64 &&
               samplesPerChannel > 0 &&
               samples.size() == static_cast<std::size_t>(channels) * static_cast<std::size_t>(samplesPerChannel);
    }
};

// A composed picture: premultiplied BGRA, rows top to bottom, no padding.
struct FeedPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bgra;
    double atSeconds = 0; // the feed's clock when it was drawn
};

class FeedSender {
public:
    virtual ~FeedSender() = default;
    virtual NDISource source() const = 0;
    virtual NDISenderStatus status() const = 0;
    virtual void send(std::shared_ptr<const FeedPicture> picture) = 0;
    virtual void sendAudio(NDIAudioFrame frame) = 0;
    virtual void close(std::function<void()> completion) = 0;
};

class FeedCompositor {
public:
    virtual ~FeedCompositor() = default;
    virtual void apply(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) = 0;
    virtual std::shared_ptr<const FeedPicture> frame(double atSeconds) = 0;
    virtual void stop() = 0;
};

struct FeedFactories {
    std::function<std::shared_ptr<FeedSender>(const NetworkFeed&)> makeFeedSender;
    std::function<std::unique_ptr<FeedCompositor>(const NetworkFeed&)> makeFeedCompositor;
    // The clock the feed renders by; the Scheduler's `now`, safe off the
    // main thread.
    std::function<double()> clock;
};

} // namespace velarion
