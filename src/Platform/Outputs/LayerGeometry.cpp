#include "Platform/Outputs/LayerGeometry.h"

#include <algorithm>
#include <cmath>

namespace velarion {

std::optional<LayerQuad> colorQuad(const ScenePixelRect& rect) {
    if (!(rect.width > 0) || !(rect.height > 0)) return std::nullopt;
    return LayerQuad{-rect.width / 2, -rect.height / 2, rect.width / 2, rect.height / 2};
}

std::optional<LayerQuad> pictureQuad(const ScenePixelRect& rect, SceneGravity gravity,
                                      int pictureWidth, int pictureHeight) {
    if (!(rect.width > 0) || !(rect.height > 0) || pictureWidth <= 0 || pictureHeight <= 0)
        return std::nullopt;
    double width = rect.width;
    double height = rect.height;
    if (gravity != SceneGravity::resize) {
        const double scaleX = rect.width / pictureWidth;
        const double scaleY = rect.height / pictureHeight;
        const double scale = gravity == SceneGravity::resizeAspect ? std::min(scaleX, scaleY)
                                                                   : std::max(scaleX, scaleY);
        width = pictureWidth * scale;
        height = pictureHeight * scale;
    }
    // The placed picture, centred on the layer.
    const double pictureLeft = -width / 2;
    const double pictureTop = height / 2;
    LayerQuad quad;
    quad.left = std::max(-width / 2, -rect.width / 2);
    quad.right = std::min(width / 2, rect.width / 2);
    quad.bottom = std::max(-height / 2, -rect.height / 2);
    quad.top = std::min(height / 2, rect.height / 2);
    if (!(quad.right > quad.left) || !(quad.top > quad.bottom)) return std::nullopt;
    quad.uLeft = (quad.left - pictureLeft) / width;
    quad.uRight = (quad.right - pictureLeft) / width;
    quad.vTop = (pictureTop - quad.top) / height;
    quad.vBottom = (pictureTop - quad.bottom) / height;
    return quad;
}

PlaneMatrix planeOf(const SceneMatrix4& t) {
    return PlaneMatrix{t.at(0, 0), t.at(0, 1), t.at(0, 3), //
                       t.at(1, 0), t.at(1, 1), t.at(1, 3), //
                       t.at(3, 0), t.at(3, 1), t.at(3, 3)};
}

std::optional<PlaneMatrix> inverted(const PlaneMatrix& m) {
    const double c00 = m[4] * m[8] - m[5] * m[7];
    const double c01 = m[5] * m[6] - m[3] * m[8];
    const double c02 = m[3] * m[7] - m[4] * m[6];
    const double det = m[0] * c00 + m[1] * c01 + m[2] * c02;
    if (!(std::abs(det) > 1e-12)) return std::nullopt;
    const double r = 1 / det;
    return PlaneMatrix{c00 * r, (m[2] * m[7] - m[1] * m[8]) * r, (m[1] * m[5] - m[2] * m[4]) * r,
                       c01 * r, (m[0] * m[8] - m[2] * m[6]) * r, (m[2] * m[3] - m[0] * m[5]) * r,
                       c02 * r, (m[1] * m[6] - m[0] * m[7]) * r, (m[0] * m[4] - m[1] * m[3]) * r};
}

} // namespace velarion
