#include "ShowStage/SceneScaling.h"

#include <array>
#include <cstddef>

namespace velarion {

namespace {

constexpr std::array<std::string_view, 3> scalingNames = {"fit", "fill", "stretch"};

} // namespace

std::string_view toString(SceneScaling scaling) {
    return scalingNames[static_cast<std::size_t>(scaling)];
}

std::optional<SceneScaling> parseSceneScaling(std::string_view text) {
    for (std::size_t i = 0; i < scalingNames.size(); ++i) {
        if (scalingNames[i] == text) return static_cast<SceneScaling>(i);
    }
    return std::nullopt;
}

} // namespace velarion
