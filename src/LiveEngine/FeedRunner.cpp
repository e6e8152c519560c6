#include "LiveEngine/FeedRunner.h"

#include <algorithm>
#include <chrono>

namespace velarion {

FeedRunner::FeedRunner(NetworkFeed feed, std::shared_ptr<FeedSender> sender,
                       std::unique_ptr<FeedCompositor> compositor, std::function<double()> clock)
    : feed_(std::move(feed)), sender_(std::move(sender)), compositor_(std::move(compositor)),
      clock_(std::move(clock)) {}

FeedRunner::~FeedRunner() { stop(); }

double FeedRunner::periodSeconds(const VideoFrameRate& rate) {
    const double perSecond =
        rate.denominator > 0 ? static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator) : 0;
    return 1.0 / std::max(perSecond, 1.0);
}

void FeedRunner::start() {
    if (timer_.joinable()) return;
    timer_ = std::thread([this] { run(); });
}

void FeedRunner::apply(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) {
    compositor_->apply(scene, surfaces, nowSeconds);
}

void FeedRunner::stop() {
    {
        std::lock_guard lock(mutex_);
        if (stopping_ && !timer_.joinable()) return;
        stopping_ = true;
    }
    wake_.notify_all();
    if (timer_.joinable()) timer_.join();
    compositor_->stop();
}

void FeedRunner::run() {
    using Clock = std::chrono::steady_clock;
    const auto period = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(periodSeconds(feed_.frameRate)));
    auto next = Clock::now();
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        lock.unlock();
        if (auto picture = compositor_->frame(clock_())) sender_->send(std::move(picture));
        lock.lock();
        next += period;
        // A tick that fell far behind starts afresh rather than racing.
        if (Clock::now() - next > period * 4) next = Clock::now();
        wake_.wait_until(lock, next, [this] { return stopping_; });
    }
}

} // namespace velarion
