#pragma once
// Where a layer's four corners go, in fractions of the layer's own rectangle
// (x to the right, y in the same sense as the rectangle's). The identity pin
// leaves the layer as it is.

namespace velarion {

struct ScenePoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const ScenePoint&, const ScenePoint&) = default;
};

struct SceneCornerPin {
    ScenePoint topLeft{0, 0};
    ScenePoint topRight{1, 0};
    ScenePoint bottomLeft{0, 1};
    ScenePoint bottomRight{1, 1};

    static constexpr SceneCornerPin identity() { return SceneCornerPin{}; }

    friend bool operator==(const SceneCornerPin&, const SceneCornerPin&) = default;
};

} // namespace velarion
