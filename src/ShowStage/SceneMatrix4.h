#pragma once
// A 4x4 transform of a scene layer, in doubles. A plain value; any thread.
//
// Column-vector convention: a point p maps to M * p, so `a * b` applies b
// first and then a. Storage is column-major (`m[column * 4 + row]`), which is
// the order OpenGL takes without transposing.

#include "ShowStage/SceneCornerPin.h"

#include <array>

namespace velarion {

struct SceneMatrix4 {
    std::array<double, 16> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    static constexpr SceneMatrix4 identity() { return SceneMatrix4{}; }
    static SceneMatrix4 translation(double x, double y, double z = 0);
    static SceneMatrix4 scale(double x, double y, double z = 1);
    // Counter-clockwise when y points up.
    static SceneMatrix4 rotationZ(double radians);

    constexpr double at(int row, int column) const { return m[column * 4 + row]; }
    constexpr double& at(int row, int column) { return m[column * 4 + row]; }

    // The point (x, y, 0, 1) transformed and divided by its w.
    ScenePoint apply(ScenePoint point) const;

    friend SceneMatrix4 operator*(const SceneMatrix4& a, const SceneMatrix4& b);
    friend bool operator==(const SceneMatrix4&, const SceneMatrix4&) = default;
};

} // namespace velarion
