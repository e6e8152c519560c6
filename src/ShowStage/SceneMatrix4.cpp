#include "ShowStage/SceneMatrix4.h"

#include <cmath>

namespace velarion {

SceneMatrix4 SceneMatrix4::translation(double x, double y, double z) {
    SceneMatrix4 result;
    result.at(0, 3) = x;
    result.at(1, 3) = y;
    result.at(2, 3) = z;
    return result;
}

SceneMatrix4 SceneMatrix4::scale(double x, double y, double z) {
    SceneMatrix4 result;
    result.at(0, 0) = x;
    result.at(1, 1) = y;
    result.at(2, 2) = z;
    return result;
}

SceneMatrix4 SceneMatrix4::rotationZ(double radians) {
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    SceneMatrix4 result;
    result.at(0, 0) = c;
    result.at(0, 1) = -s;
    result.at(1, 0) = s;
    result.at(1, 1) = c;
    return result;
}

ScenePoint SceneMatrix4::apply(ScenePoint point) const {
    const double x = at(0, 0) * point.x + at(0, 1) * point.y + at(0, 3);
    const double y = at(1, 0) * point.x + at(1, 1) * point.y + at(1, 3);
    const double w = at(3, 0) * point.x + at(3, 1) * point.y + at(3, 3);
    return ScenePoint{x / w, y / w};
}

SceneMatrix4 operator*(const SceneMatrix4& a, const SceneMatrix4& b) {
    SceneMatrix4 result;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = 0;
            for (int k = 0; k < 4; ++k) sum += a.at(row, k) * b.at(k, column);
            result.at(row, column) = sum;
        }
    }
    return result;
}

} // namespace velarion
