#pragma once
// Canvas: the raster surface every picture of this library is drawn on, and
// the hand-over between Qt images and the scene's StillImage.
//
// Contract.
// - A canvas is a QImage in premultiplied ARGB32, which is BGRA in memory on
//   the little-endian machines we build for: exactly the StillImage layout,
//   so converting is one copy of the rows.
// - Canvases report 72 dots per inch, so a font's point size is its size in
//   pixels, as the layouts (given in points on a 1920 by 1080 page) expect.
//   Text must therefore be measured against the canvas (QFontMetricsF(font,
//   &canvas)), never against the screen.
// - Layouts give rectangles with the origin at the lower left; `fromBottom`
//   turns one into Qt's top-left form.
// - Threads: plain functions over values; any thread. A QImage handed in is
//   only read during the call.

#include "ShowStage/StillImage.h"

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QRectF>

#include <optional>

namespace velarion {

// A canvas of that size filled with `fill` (transparent by default).
QImage makeCanvas(int widthPixels, int heightPixels, QColor fill = Qt::transparent);

// A rectangle given from the lower left of a canvas `canvasHeight` high.
constexpr QRectF fromBottom(double x, double y, double width, double height,
                            double canvasHeight) {
    return QRectF(x, canvasHeight - y - height, width, height);
}

// A colour from 0xRRGGBB at full alpha.
QColor colorFromRGB(int rgb);

// A still with a fresh id holding a copy of the picture's pixels; none for
// an empty picture.
std::optional<StillImage> toStill(const QImage& picture);

// A QImage reading the still's pixels in place; it keeps them alive for as
// long as it (or a copy of it) lives.
QImage toQImage(const StillImage& still);

// The picture as PNG bytes (RGB when opaque, else RGBA with straight
// alpha), or an empty array when it can't be encoded. Compression is light:
// pages are mostly flat colour, and a slide is written while the operator
// waits.
QByteArray encodePNG(const QImage& picture);

} // namespace velarion
