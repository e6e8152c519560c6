#pragma once
// NDIFeeds: the factories that make network feeds real: an NDI sender and a
// CPU compositor at the feed's size. Hand them to
// ScreenOutputManager::setFeedFactories. `clock` is the Scheduler's `now`,
// which the feeds read from their own threads.

#include "LiveEngine/ports/NetworkFeeds.h"
#include "Platform/NDI/CpuFeedCompositor.h"
#include "Platform/NDI/NDIFeedSender.h"

namespace velarion {

inline FeedFactories ndiFeedFactories(std::function<double()> clock, VideoFrameLookup videoFrames = {}) {
    FeedFactories factories;
    factories.makeFeedSender = [](const NetworkFeed& feed) { return std::make_shared<NDIFeedSender>(feed); };
    factories.makeFeedCompositor = [videoFrames](const NetworkFeed& feed) {
        return std::make_unique<CpuFeedCompositor>(feed.width, feed.height, feed.alphaMode != NDIAlphaMode::off,
                                                   videoFrames);
    };
    factories.clock = std::move(clock);
    return factories;
}

} // namespace velarion
