#pragma once
// The layers of a picture, bottom to top.

#include "LiveModel/EnumNames.h"

#include <string_view>

namespace velarion {

enum class LayerKind { background, media, slides, graphics, holding, messages };
VELARION_ENUM_NAMES(LayerKind, "background", "media", "slides", "graphics", "holding", "messages");

// The operator's name of a layer.
constexpr std::string_view displayName(LayerKind layer) {
    constexpr std::string_view names[] = {"Background",   "Video and pictures",
                                          "Slides",       "Lower thirds and timers",
                                          "Safe slide",   "Messages to the audience"};
    return names[static_cast<int>(layer)];
}

} // namespace velarion
