#pragma once
// SceneFrame: what a drawing back end executes to show one output at one
// moment, as produced by SceneRenderer::drawList. Plain values; they share
// still pixels and video sources with the renderer, so a frame may be kept
// after the renderer has moved on.
//
// Coordinates are root pixels with the origin at the bottom-left corner and
// y counting upward. Each operation's transform acts about the centre of its
// rectangle, in the same sense (x right, y up): a point q of the layer,
// relative to that centre, is drawn at centre + transform.apply(q).

#include "ShowStage/SceneColor.h"
#include "ShowStage/SceneContent.h"
#include "ShowStage/SceneID.h"
#include "ShowStage/SceneMatrix4.h"
#include "ShowStage/SceneVideoSource.h"

#include <memory>
#include <vector>

namespace velarion {

// How contents fill a layer's rectangle, in SceneScaling's order:
// fit -> resizeAspect, fill -> resizeAspectFill, stretch -> resize.
enum class SceneGravity { resizeAspect, resizeAspectFill, resize };

struct ScenePixelRect {
    double left = 0;
    double bottom = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const ScenePixelRect&, const ScenePixelRect&) = default;
};

struct SceneDrawOperation {
    // Not unique: while a layer fades out, a new layer with the same id may
    // be drawn beside it. Back ends key uploaded pictures by the still's id.
    SceneID layerID;
    SceneContent content;
    SceneGravity gravity = SceneGravity::resizeAspect;
    ScenePixelRect rect;
    SceneMatrix4 transform;
    float opacity = 1; // effective at the frame's moment, above 0
    std::shared_ptr<const SceneVideoSource> surface; // video only, never null there
};

struct SceneFrame {
    SceneColor background = SceneColor::black();
    std::vector<SceneDrawOperation> operations; // back to front
};

} // namespace velarion
