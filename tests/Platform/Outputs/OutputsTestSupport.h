#pragma once
// What the output tests share: rasters as Qt images, and golden pictures
// compared within the back ends' own tolerance (2 levels a channel).

#include "Platform/Outputs/CpuCompositor.h"

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace velarion::testing {

inline constexpr int parityLevels = 2;
// A sampler places chroma with 8-bit sub-texel precision, so where the chroma
// changes hard a video's pixel may differ by a level more; a misplaced plane
// differs by tens.
inline constexpr int videoParityLevels = 3;

// A deep copy, so the image may outlive the raster.
QImage toImage(const RasterImage& raster);

// The largest channel difference, and how many pixels differ by more than
// `levels`; the sizes must match.
struct PictureDifference {
    int worst = 0;
    long differing = 0;
    QPoint first; // the first differing pixel, rows from the top
};
PictureDifference difference(const QImage& a, const QImage& b, int levels = parityLevels);

inline int channelDifference(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b)),
                     std::abs(qAlpha(a) - qAlpha(b))});
}

// Compares with golden/NAME.png; on a mismatch writes NAME.actual.png beside
// it. VELARION_UPDATE_GOLDEN=1 rewrites the golden instead.
::testing::AssertionResult matchesGolden(const QImage& actual, const std::string& name);

} // namespace velarion::testing
