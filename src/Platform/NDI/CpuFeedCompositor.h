#pragma once
// CpuFeedCompositor: a network feed's pictures drawn by the CPU compositor
// at the feed's own size, on the feed's own clock. The layer tree (arrivals,
// dissolves out) is kept here, so fades run on the feed as on a screen.
//
// Contract: as FeedCompositor. Pictures come from a small pool: a picture
// the sender still holds is never drawn over. The background is opaque black,
// or clear for a feed that sends alpha.

#include "LiveEngine/ports/NetworkFeeds.h"
#include "Platform/Outputs/CpuCompositor.h"
#include "ShowStage/SceneRenderer.h"

#include <mutex>
#include <vector>

namespace velarion {

class CpuFeedCompositor final : public FeedCompositor {
public:
    CpuFeedCompositor(int widthPixels, int heightPixels, bool isTransparent, VideoFrameLookup videoFrames = {});

    void apply(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) override;
    std::shared_ptr<const FeedPicture> frame(double atSeconds) override;
    void stop() override;

private:
    std::shared_ptr<FeedPicture> makeBuffer();

    const int width_;
    const int height_;
    const bool isTransparent_;
    VideoFrameLookup videoFrames_;
    std::mutex lock_; // the renderer between apply and frame
    SceneRenderer renderer_;
    bool stopped_ = false;
    SceneFrame drawList_;                        // frame's own, reused
    std::vector<std::shared_ptr<FeedPicture>> pool_; // frame's own
};

} // namespace velarion
