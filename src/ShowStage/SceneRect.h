#pragma once
// A rectangle in fractions of the output: (0, 0, 1, 1) is the whole of it.
// y counts upward from the bottom edge of the output.

namespace velarion {

struct SceneRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    static constexpr SceneRect full() { return SceneRect{0, 0, 1, 1}; }

    friend bool operator==(const SceneRect&, const SceneRect&) = default;
};

} // namespace velarion
