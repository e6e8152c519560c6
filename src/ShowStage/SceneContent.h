#pragma once
// What a layer shows: a flat colour, a playing video or a still picture.

#include "ShowStage/SceneColor.h"
#include "ShowStage/SceneID.h"
#include "ShowStage/StillImage.h"

#include <variant>

namespace velarion {

struct SceneColorContent {
    SceneColor color;
    friend bool operator==(const SceneColorContent&, const SceneColorContent&) = default;
};

struct SceneVideoContent {
    SceneID surfaceID; // the video surface whose frames the layer shows
    friend bool operator==(const SceneVideoContent&, const SceneVideoContent&) = default;
};

struct SceneStillContent {
    StillImage image;
    friend bool operator==(const SceneStillContent&, const SceneStillContent&) = default;
};

using SceneContent = std::variant<SceneColorContent, SceneVideoContent, SceneStillContent>;

} // namespace velarion
