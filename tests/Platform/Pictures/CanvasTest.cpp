#include "GoldenPicture.h"

#include "Platform/Pictures/Canvas.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

QImage decoded(const QByteArray& png) {
    return QImage::fromData(png, "png");
}

int worstDifference(const QImage& a, const QImage& b) {
    const QImage left = a.convertToFormat(QImage::Format_ARGB32), right = b.convertToFormat(QImage::Format_ARGB32);
    int worst = 0;
    for (int y = 0; y < left.height(); ++y)
        for (int x = 0; x < left.width(); ++x)
            worst = std::max(worst, testing::channelDifference(left.pixel(x, y), right.pixel(x, y)));
    return worst;
}

TEST(Canvas, PNGKeepsEveryPixelAndAlphaOnlyWhenNeeded) {
    // Tall enough to be deflated in bands on a machine with two cores.
    const QImage photo = testing::generatedPhoto(301, 600).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage opaque = decoded(encodePNG(photo));
    ASSERT_EQ(opaque.size(), photo.size());
    EXPECT_FALSE(opaque.hasAlphaChannel());
    EXPECT_EQ(worstDifference(opaque, photo), 0);

    QImage translucent = makeCanvas(64, 48);
    translucent.setPixel(3, 4, qPremultiply(qRgba(250, 120, 10, 77)));
    translucent.setPixel(63, 47, qPremultiply(qRgba(255, 255, 255, 255)));
    const QImage clear = decoded(encodePNG(translucent));
    ASSERT_EQ(clear.size(), translucent.size());
    EXPECT_TRUE(clear.hasAlphaChannel());
    // Straight alpha in the file: colours come back within premultiplied rounding.
    EXPECT_LE(worstDifference(clear, translucent), 2);
    EXPECT_EQ(qAlpha(clear.pixel(3, 4)), 77);
    EXPECT_EQ(qAlpha(clear.pixel(0, 0)), 0);
}

TEST(Canvas, StillsAndQtImagesShareOnePixelLayout) {
    QImage picture = makeCanvas(3, 2, QColor(10, 20, 30));
    picture.setPixel(2, 1, qPremultiply(qRgba(200, 100, 50, 128)));
    const auto still = toStill(picture);
    ASSERT_TRUE(still);
    EXPECT_EQ(std::vector<std::uint8_t>(still->bgra().begin(), still->bgra().begin() + 4),
              (std::vector<std::uint8_t>{30, 20, 10, 255}));
    QImage back = toQImage(*still);
    EXPECT_EQ(back.pixel(2, 1), picture.pixel(2, 1));
}

} // namespace
} // namespace velarion
