#pragma once
// A free text box on a made slide, in unit coordinates, origin top left.

#include "LiveModel/EnumNames.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string>

namespace velarion {

enum class TextAlign { left, center, right };
VELARION_ENUM_NAMES(TextAlign, "left", "center", "right");

struct TextBox {
    using Align = TextAlign;

    Uuid id;
    std::string text;
    double x = 0;
    double y = 0;
    double width = 1;
    double height = 1;
    std::optional<std::string> font; // absent: the default font
    double size = 64;                // points on a 1920-wide slide
    bool bold = false;
    std::optional<int> color; // 0xRRGGBB; absent: chosen against the background
    Align align = Align::center;
    bool bullets = false;

    // The box kept on the slide: width 0.05 to 1, height 0.04 to 1, then the
    // position so that the box fits, and size 8 to 400 points. Applied at
    // every edit of a box.
    TextBox clamped() const;

    friend bool operator==(const TextBox&, const TextBox&) = default;
};

} // namespace velarion
