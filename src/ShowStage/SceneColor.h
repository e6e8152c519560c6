#pragma once
// A colour of a scene: straight (not premultiplied) components from 0 to 1.

namespace velarion {

struct SceneColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static constexpr SceneColor black() { return SceneColor{0, 0, 0, 1}; }

    friend bool operator==(const SceneColor&, const SceneColor&) = default;
};

} // namespace velarion
