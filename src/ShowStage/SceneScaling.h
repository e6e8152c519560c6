#pragma once
// How a picture or video is fitted into its layer's rectangle.

#include <optional>
#include <string_view>

namespace velarion {

// fit: whole picture, aspect kept; fill: covers the rectangle, aspect kept,
// edges cropped; stretch: covers the rectangle, aspect ignored.
enum class SceneScaling { fit, fill, stretch };

std::string_view toString(SceneScaling scaling);
std::optional<SceneScaling> parseSceneScaling(std::string_view text);

} // namespace velarion
