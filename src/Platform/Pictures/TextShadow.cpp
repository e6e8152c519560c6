#include "Platform/Pictures/TextShadow.h"

#include "Platform/Pictures/Canvas.h"


#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace velarion {

namespace {

// The smallest rectangle holding every pixel with some coverage.
QRect coveredRect(const QImage& layer) {
    const int width = layer.width(), height = layer.height();
    int left = width, right = -1, top = height, bottom = -1;
    for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(layer.constScanLine(y));
        int first = -1, last = -1;
        for (int x = 0; x < width; ++x) {
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

// The shadow's blur runs on a grid this many times coarser.
constexpr int blurScale = 2;

// Coverage values of a width by height area, row by row.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<float> values;
    float* row(int y) { return values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width); }
};

// One box pass of radius r along every row, with zero beyond the ends.
void boxRows(Plane& plane, int r, std::vector<float>& scratch) {
    const float scale = 1.0f / static_cast<float>(2 * r + 1);
    scratch.resize(static_cast<std::size_t>(plane.width));
    for (int y = 0; y < plane.height; ++y) {
        float* row = plane.row(y);
        std::copy(row, row + plane.width, scratch.begin());
        float sum = 0;
        for (int i = 0; i <= std::min(r, plane.width - 1); ++i) sum += scratch[static_cast<std::size_t>(i)];
        for (int x = 0; x < plane.width; ++x) {
            row[x] = sum * scale;
            if (x + r + 1 < plane.width) sum += scratch[static_cast<std::size_t>(x + r + 1)];
            if (x - r >= 0) sum -= scratch[static_cast<std::size_t>(x - r)];
        }
    }
}

// The same down every column, walking rows so that memory is read in order.
void boxColumns(Plane& plane, int r, std::vector<float>& scratch) {
    const float scale = 1.0f / static_cast<float>(2 * r + 1);
    const auto width = static_cast<std::size_t>(plane.width);
    scratch = plane.values;
    std::vector<float> sums(width, 0);
    for (int y = 0; y <= std::min(r, plane.height - 1); ++y) {
        const float* row = scratch.data() + static_cast<std::size_t>(y) * width;
        for (std::size_t x = 0; x < width; ++x) sums[x] += row[x];
    }
    for (int y = 0; y < plane.height; ++y) {
        float* out = plane.row(y);
        for (std::size_t x = 0; x < width; ++x) out[x] = sums[x] * scale;
        if (y + r + 1 < plane.height) {
            const float* entering = scratch.data() + static_cast<std::size_t>(y + r + 1) * width;
            for (std::size_t x = 0; x < width; ++x) sums[x] += entering[x];
        }
        if (y - r >= 0) {
            const float* leaving = scratch.data() + static_cast<std::size_t>(y - r) * width;
            for (std::size_t x = 0; x < width; ++x) sums[x] -= leaving[x];
        }
    }
}

} // namespace

void drawWithShadow(QPainter& painter, const Shadow& shadow, const QRect& area,
                    const std::function<void(QPainter&)>& content) {
    const QRect bounds = area.intersected(QRect(0, 0, painter.device()->width(), painter.device()->height()));
    if (bounds.isEmpty()) return;
    QImage layer = makeCanvas(bounds.width(), bounds.height());
    {
        QPainter layerPainter(&layer);
        layerPainter.setRenderHints(painter.renderHints());
        layerPainter.translate(-bounds.topLeft());
        content(layerPainter);
    }
    const QRect covered = coveredRect(layer);
    if (covered.isEmpty()) return;

    // The shadow is blurred at half resolution: it is soft enough that the
    // difference doesn't show, and it costs a quarter. Three box passes of
    // width w approximate a Gaussian of sigma blur / 2.
    const double sigma = shadow.blurPixels / 2 / blurScale;
    const int radius = std::max(0, static_cast<int>(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2)));
    const int margin = blurScale * (3 * radius + 1);
    // In layer pixels, aligned to the half-resolution grid.
    const QRect blurred(QPoint((covered.left() - margin) & ~1, (covered.top() - margin) & ~1),
                        QPoint((covered.right() + margin) | 1, (covered.bottom() + margin) | 1));
    const int width = blurred.width() / blurScale, height = blurred.height() / blurScale;

    Plane plane{width, height, std::vector<float>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0)};
    const QRect inside = blurred.intersected(layer.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(layer.constScanLine(y));
        float* out = plane.row((y - blurred.top()) / blurScale);
        for (int x = inside.left(); x <= inside.right(); ++x)
            out[(x - blurred.left()) / blurScale] += static_cast<float>(row[x] >> 24) / (blurScale * blurScale);
    }
    if (radius > 0) {
        std::vector<float> scratch;
        for (int pass = 0; pass < 3; ++pass) {
            boxRows(plane, radius, scratch);
            boxColumns(plane, radius, scratch);
        }
    }

    // Premultiplied tint: every channel scales with the blurred coverage.
    QImage shadowImage(width, height, QImage::Format_ARGB32_Premultiplied);
    const float tint = static_cast<float>(shadow.color.alphaF()) / 255.0f;
    const float channels[4] = {static_cast<float>(shadow.color.blueF()), static_cast<float>(shadow.color.greenF()),
                               static_cast<float>(shadow.color.redF()), 1.0f};
    for (int y = 0; y < height; ++y) {
        auto* out = reinterpret_cast<std::uint32_t*>(shadowImage.scanLine(y));
        const float* coverage = plane.row(y);
        for (int x = 0; x < width; ++x) {
            const float a = std::clamp(coverage[x] * tint, 0.0f, 1.0f) * 255.0f;
            std::uint32_t pixel = 0;
            for (int c = 0; c < 4; ++c)
                pixel |= static_cast<std::uint32_t>(channels[c] * a + 0.5f) << (8 * c);
            out[x] = pixel;
        }
    }
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(bounds.topLeft() + blurred.topLeft()) + shadow.offsetPixels,
                             QSizeF(width * blurScale, height * blurScale)),
                      shadowImage);
    painter.restore();
    painter.drawImage(QPointF(bounds.topLeft()), layer);
}

} // namespace velarion
