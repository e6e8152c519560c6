#pragma once
// The golden scenes both drawing back ends are checked on: each a short
// history of scenes applied to a renderer and the moment drawn, on a small
// canvas so their pictures stay tiny in the repository.

#include "ShowStage/SceneFrame.h"
#include "ShowStage/SceneRenderer.h"
#include "ShowStage/StillImage.h"
#include "ShowStage/VideoFrame.h"

#include <string>
#include <utility>
#include <vector>

namespace velarion::testing {

struct GoldenScene {
    std::string name;
    int width = 160;
    int height = 90;
    std::vector<std::pair<OutputScene, double>> applied; // scene, at seconds
    double drawAtSeconds = 0;
    SceneSurfaces surfaces; // for the scenes that show videos

    SceneFrame frame() const;
};

std::vector<GoldenScene> goldenScenes();

// A picture made here: smooth gradients with a few hard-edged shapes, so
// both placement and filtering show. With `translucent`, its alpha falls off
// towards the bottom. Premultiplied BGRA, a fresh id each call.
StillImage generatedStill(int width, int height, bool translucent = false);

// A decoded frame in NV12 (BT.709, studio range): gradients with a
// hard-edged block in each plane, so that placement and filtering show.
std::shared_ptr<const VideoFrame> generatedVideoFrame(int width, int height);

// A video surface that always shows one frame, in planes.
class OneFrameVideo final : public SceneVideoSource {
public:
    explicit OneFrameVideo(std::shared_ptr<const VideoFrame> frame) : frame_(std::move(frame)) {}
    bool hasFrameToShow() const override { return true; }
    std::shared_ptr<const StillPixels> latestFrame() const override { return frame_->bgra(); }
    std::shared_ptr<const VideoFrame> latestVideoFrame() const override { return frame_; }

private:
    std::shared_ptr<const VideoFrame> frame_;
};

// A layer of a still with everything else default.
SceneLayer stillLayer(const StillImage& still, SceneRect frame = SceneRect::full(),
                      SceneScaling scaling = SceneScaling::fit);

} // namespace velarion::testing
