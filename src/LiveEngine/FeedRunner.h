#pragma once
// FeedRunner: one network feed running. A timer thread of its own ticks at
// the feed's frame rate, asks the compositor for the picture of that moment
// and hands it to the sender; a slow sender never slows the ticks, since the
// sender keeps only the newest picture.
//
// Contract.
// - Made, applied to and stopped on the main thread; the ticks run on the
//   runner's own thread. `stop` returns once no tick runs any more (at most
//   one picture's drawing), then closes nothing: the sender is closed by
//   whoever retires the feed, so that its name is freed off the main thread.
// - Ownership: holds the compositor; shares the sender with the closing code.

#include "LiveEngine/ports/NetworkFeeds.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace velarion {

class FeedRunner {
public:
    FeedRunner(NetworkFeed feed, std::shared_ptr<FeedSender> sender, std::unique_ptr<FeedCompositor> compositor,
               std::function<double()> clock);
    ~FeedRunner();
    FeedRunner(const FeedRunner&) = delete;
    FeedRunner& operator=(const FeedRunner&) = delete;

    void start();
    void apply(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds);
    void stop();

    const NetworkFeed& feed() const { return feed_; }
    const std::shared_ptr<FeedSender>& sender() const { return sender_; }
    // The feed's tick period: the rate as a fraction, at least one a second.
    static double periodSeconds(const VideoFrameRate& rate);

private:
    void run();

    NetworkFeed feed_;
    std::shared_ptr<FeedSender> sender_;
    std::unique_ptr<FeedCompositor> compositor_;
    std::function<double()> clock_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool stopping_ = false;
    std::thread timer_;
};

} // namespace velarion
