#pragma once
// The records of SceneRenderer's layer tree: one per layer it shows. Read
// through the renderer (managedLayer, fadingOutLayers); only the renderer
// changes them. Plain values, main thread like the renderer.

#include "ShowStage/SceneFrame.h"
#include "ShowStage/SceneLayer.h"
#include "ShowStage/SceneMatrix4.h"
#include "ShowStage/SceneVideoSource.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace velarion {

// A linear opacity change: `fromOpacity` until it starts, `toOpacity` from
// the moment it completes.
struct SceneOpacityRamp {
    float fromOpacity = 0;
    float toOpacity = 1;
    double startSeconds = 0;
    double durationSeconds = 0;

    bool isFinishedAt(double atSeconds) const {
        return atSeconds >= startSeconds + durationSeconds;
    }
    float valueAt(double atSeconds) const {
        if (isFinishedAt(atSeconds)) return toOpacity;
        if (atSeconds <= startSeconds) return fromOpacity;
        const double progress = (atSeconds - startSeconds) / durationSeconds;
        return static_cast<float>(fromOpacity + (toOpacity - fromOpacity) * progress);
    }
};

struct SceneManagedLayer {
    SceneLayer description; // as last applied

    // Placement in root pixels (origin bottom-left, y up): bounds have origin
    // 0 and the layer's size; position is the centre of its rectangle.
    ScenePixelRect bounds;
    ScenePoint position;
    double zPosition = 0;
    float opacity = 1;
    SceneMatrix4 transform; // about the centre; see SceneFrame.h

    SceneContent contents;
    std::shared_ptr<const SceneVideoSource> videoSource; // video: null while missing
    SceneGravity gravity = SceneGravity::resizeAspect;
    // Bumped each time the layer takes a different still, so a back end
    // knows when to upload again.
    std::uint64_t stillUploads = 0;

    // Heads for `opacity`: a change of opacity during the dissolve retargets
    // it rather than starting another.
    std::optional<SceneOpacityRamp> dissolveIn;

    float opacityAt(double atSeconds) const {
        return dissolveIn ? dissolveIn->valueAt(atSeconds) : opacity;
    }
};

// A layer no longer in the scene, drawn until its fade to 0 completes.
struct SceneFadingLayer {
    SceneManagedLayer layer;
    SceneOpacityRamp fadeOut;
};

} // namespace velarion
