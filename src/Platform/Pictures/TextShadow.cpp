#include "Platform/Pictures/TextShadow.h"

#include "Platform/Pictures/Canvas.h"

#include <QPaintDevice>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace velarion {

namespace {

// The smallest rectangle holding every pixel with some coverage.
QRect coveredRect(const QImage& layer) {
    int left = layer.width(), right = -1, top = layer.height(), bottom = -1;
    for (int y = 0; y < layer.height(); ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(layer.constScanLine(y));
        int first = -1, last = -1;
        for (int x = 0; x < layer.width(); ++x) {
            if (row[x] >> 24) {
                if (first < 0) first = x;
                last = x;
            }
        }
        if (first < 0) continue;
        left = std::min(left, first);
        right = std::max(right, last);
        top = std::min(top, y);
        bottom = y;
    }
    if (right < 0) return {};
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

// One box pass of radius r over `count` values `stride` apart, with zero
// beyond the ends.
void boxPass(std::vector<float>& values, std::size_t start, std::size_t stride, int count, int r,
             std::vector<float>& scratch) {
    scratch.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) scratch[static_cast<std::size_t>(i)] = values[start + stride * static_cast<std::size_t>(i)];
    const float scale = 1.0f / static_cast<float>(2 * r + 1);
    float sum = 0;
    for (int i = 0; i <= std::min(r, count - 1); ++i) sum += scratch[static_cast<std::size_t>(i)];
    for (int i = 0; i < count; ++i) {
        values[start + stride * static_cast<std::size_t>(i)] = sum * scale;
        const int enter = i + r + 1;
        const int leave = i - r;
        if (enter < count) sum += scratch[static_cast<std::size_t>(enter)];
        if (leave >= 0) sum -= scratch[static_cast<std::size_t>(leave)];
    }
}

} // namespace

void drawWithShadow(QPainter& painter, const Shadow& shadow,
                    const std::function<void(QPainter&)>& content) {
    QPaintDevice* device = painter.device();
    QImage layer = makeCanvas(device->width(), device->height());
    {
        QPainter layerPainter(&layer);
        layerPainter.setRenderHints(painter.renderHints());
        content(layerPainter);
    }
    const QRect covered = coveredRect(layer);
    if (covered.isEmpty()) return;

    // Three box passes of width w approximate a Gaussian of sigma blur / 2.
    const double sigma = shadow.blurPixels / 2;
    const int radius = std::max(0, static_cast<int>(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2)));
    const int margin = 3 * radius + 1;
    const QRect area = covered.adjusted(-margin, -margin, margin, margin);
    const int width = area.width(), height = area.height();

    std::vector<float> alpha(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    for (int y = 0; y < height; ++y) {
        const int sourceY = area.top() + y;
        if (sourceY < 0 || sourceY >= layer.height()) continue;
        const auto* row = reinterpret_cast<const std::uint32_t*>(layer.constScanLine(sourceY));
        for (int x = 0; x < width; ++x) {
            const int sourceX = area.left() + x;
            if (sourceX < 0 || sourceX >= layer.width()) continue;
            alpha[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] =
                static_cast<float>(row[sourceX] >> 24);
        }
    }
    if (radius > 0) {
        std::vector<float> scratch;
        for (int pass = 0; pass < 3; ++pass) {
            for (int y = 0; y < height; ++y)
                boxPass(alpha, static_cast<std::size_t>(y) * static_cast<std::size_t>(width), 1, width, radius, scratch);
            for (int x = 0; x < width; ++x)
                boxPass(alpha, static_cast<std::size_t>(x), static_cast<std::size_t>(width), height, radius, scratch);
        }
    }

    QImage shadowImage(width, height, QImage::Format_ARGB32_Premultiplied);
    const double tintAlpha = shadow.color.alphaF();
    const double red = shadow.color.redF(), green = shadow.color.greenF(), blue = shadow.color.blueF();
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(shadowImage.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const double a = std::clamp(
                alpha[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] / 255.0 * tintAlpha,
                0.0, 1.0);
            row[x] = qPremultiply(qRgba(static_cast<int>(std::lround(red * 255)),
                                        static_cast<int>(std::lround(green * 255)),
                                        static_cast<int>(std::lround(blue * 255)),
                                        static_cast<int>(std::lround(a * 255))));
        }
    }
    painter.drawImage(QPointF(area.topLeft()) + shadow.offsetPixels, shadowImage);
    painter.drawImage(QPointF(0, 0), layer);
}

} // namespace velarion
