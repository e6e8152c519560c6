#include "Platform/NDI/CpuFeedCompositor.h"

#include "LiveModel/Shared.h"

namespace velarion {

namespace {
constexpr std::size_t poolLimit = 4; // drawn, queued, being sent, one spare
}

CpuFeedCompositor::CpuFeedCompositor(int widthPixels, int heightPixels, bool isTransparent,
                                     VideoFrameLookup videoFrames)
    : width_(widthPixels), height_(heightPixels), isTransparent_(isTransparent),
      videoFrames_(std::move(videoFrames)), renderer_(widthPixels, heightPixels) {}

void CpuFeedCompositor::apply(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) {
    std::lock_guard guard(lock_);
    renderer_.apply(scene, surfaces, nowSeconds);
    renderer_.collectFinished(nowSeconds);
}

std::shared_ptr<FeedPicture> CpuFeedCompositor::makeBuffer() {
    for (const auto& picture : pool_)
        if (isSoleOwner(picture)) return picture;
    auto picture = std::make_shared<FeedPicture>();
    picture->width = width_;
    picture->height = height_;
    picture->bgra.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4);
    if (pool_.size() < poolLimit) pool_.push_back(picture);
    return picture;
}

std::shared_ptr<const FeedPicture> CpuFeedCompositor::frame(double atSeconds) {
    {
        std::lock_guard guard(lock_);
        if (stopped_) return nullptr;
        renderer_.drawList(atSeconds, drawList_);
    }
    drawList_.background = isTransparent_ ? SceneColor{0, 0, 0, 0} : SceneColor{0, 0, 0, 1};
    std::shared_ptr<FeedPicture> picture = makeBuffer();
    RasterImage target;
    target.width = width_;
    target.height = height_;
    target.bgra = std::move(picture->bgra);
    CpuCompositor::draw(drawList_, target, videoFrames_);
    picture->bgra = std::move(target.bgra);
    picture->atSeconds = atSeconds;
    return picture;
}

void CpuFeedCompositor::stop() {
    std::lock_guard guard(lock_);
    stopped_ = true;
    pool_.clear();
}

} // namespace velarion
