#pragma once
// One layer of a scene. A layer with the same id in two successive scenes is
// the same layer: it moves or changes in place (a cut). A picture change that
// should dissolve comes as a new id.

#include "ShowStage/SceneContent.h"
#include "ShowStage/SceneCornerPin.h"
#include "ShowStage/SceneID.h"
#include "ShowStage/SceneRect.h"
#include "ShowStage/SceneScaling.h"

#include <optional>

namespace velarion {

struct SceneLayer {
    SceneID id;
    SceneContent content = SceneColorContent{};
    SceneRect frame = SceneRect::full();
    SceneScaling scaling = SceneScaling::fit;
    double opacity = 1;
    // How long the layer takes to appear when new and to vanish when it goes;
    // 0 is a cut.
    double dissolveSeconds = 0;
    double rotationDegrees = 0;
    std::optional<SceneCornerPin> cornerPin;

    friend bool operator==(const SceneLayer&, const SceneLayer&) = default;
};

} // namespace velarion
