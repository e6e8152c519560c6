#pragma once
// What one output should show: a background and its layers, bottom first.
// A plain value, compared whole to tell whether anything changed.

#include "ShowStage/SceneColor.h"
#include "ShowStage/SceneID.h"
#include "ShowStage/SceneLayer.h"

#include <vector>

namespace velarion {

struct OutputScene {
    SceneID destinationID;
    SceneColor background = SceneColor::black();
    std::vector<SceneLayer> layers; // bottom first

    friend bool operator==(const OutputScene&, const OutputScene&) = default;
};

} // namespace velarion
