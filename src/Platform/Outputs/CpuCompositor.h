#pragma once
// CpuCompositor: draws a SceneFrame into a premultiplied BGRA raster, for the
// program preview, mirrors, network feeds, snapshots and tests. It draws what
// the OpenGL windows draw, with the same geometry (LayerGeometry.h) and the
// same sampling (bilinear, edges clamped, pixel centres), so the two agree
// within rounding.
//
// Contract.
// - The target's size is the root's: the frame must have been made by a
//   renderer of that size. Rows run top to bottom; scene y runs upward.
// - Video layers draw the surface's latest frame (from `videoFrames` when
//   given, else from the surface itself); a surface with no frame yet draws
//   nothing, as on screen.
// - Threads: a compositor has no state; any thread, one target at a time.

#include "ShowStage/SceneFrame.h"
#include "ShowStage/StillImage.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace velarion {

// A picture being drawn: premultiplied BGRA, rows top to bottom, no padding.
struct RasterImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bgra;

    RasterImage() = default;
    RasterImage(int widthPixels, int heightPixels)
        : width(widthPixels), height(heightPixels),
          bgra(static_cast<std::size_t>(widthPixels) * static_cast<std::size_t>(heightPixels) * 4) {}
};

// The latest decoded frame of a video surface, or null. Called from the
// drawing thread, so it must be safe there.
using VideoFrameLookup = std::function<std::shared_ptr<const StillPixels>(const SceneID& surfaceID)>;

namespace CpuCompositor {

void draw(const SceneFrame& frame, RasterImage& target, const VideoFrameLookup& videoFrames = {});

} // namespace CpuCompositor

} // namespace velarion
