#include "Platform/Pictures/Canvas.h"

#include <QtEndian>

#include <cstring>
#include <memory>

namespace velarion {

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN,
              "premultiplied ARGB32 is BGRA in memory only on little-endian machines");

namespace {

// 72 dots per inch, in Qt's unit.
constexpr int dotsPerMeter72 = 2835;

} // namespace

QImage makeCanvas(int widthPixels, int heightPixels, QColor fill) {
    QImage canvas(widthPixels, heightPixels, QImage::Format_ARGB32_Premultiplied);
    canvas.setDotsPerMeterX(dotsPerMeter72);
    canvas.setDotsPerMeterY(dotsPerMeter72);
    canvas.fill(fill);
    return canvas;
}

QColor colorFromRGB(int rgb) {
    return QColor((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}

std::optional<StillImage> toStill(const QImage& picture) {
    if (picture.isNull()) return std::nullopt;
    const QImage pixels = picture.format() == QImage::Format_ARGB32_Premultiplied
                              ? picture
                              : picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const auto rowBytes = static_cast<std::size_t>(pixels.width()) * 4;
    std::vector<std::uint8_t> bgra(rowBytes * static_cast<std::size_t>(pixels.height()));
    for (int y = 0; y < pixels.height(); ++y)
        std::memcpy(bgra.data() + rowBytes * static_cast<std::size_t>(y), pixels.constScanLine(y),
                    rowBytes);
    return StillImage::fromBGRA(pixels.width(), pixels.height(), std::move(bgra));
}

QImage toQImage(const StillImage& still) {
    // The QImage borrows the shared buffer; the cleanup drops our reference.
    auto* keeper = new std::shared_ptr<const StillPixels>(still.pixels());
    return QImage(
        still.bgra().data(), still.width(), still.height(), still.width() * 4,
        QImage::Format_ARGB32_Premultiplied,
        [](void* info) { delete static_cast<std::shared_ptr<const StillPixels>*>(info); }, keeper);
}


} // namespace velarion
