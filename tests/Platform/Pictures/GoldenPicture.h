#pragma once
// Golden pictures: a drawing compared with a PNG kept in golden/, with a
// small tolerance for differences in antialiasing. On a mismatch the actual
// picture is written beside the golden one as NAME.actual.png for a reviewer
// to look at. VELARION_UPDATE_GOLDEN=1 rewrites the goldens instead; look at
// every one before committing it.

#include <QImage>

#include <gtest/gtest.h>

#include <string>

namespace velarion::testing {

::testing::AssertionResult matchesGolden(const QImage& actual, const std::string& name);

// The largest difference of any channel between two pixels.
int channelDifference(QRgb a, QRgb b);

// A photograph-like picture made here: a diagonal gradient with shapes.
QImage generatedPhoto(int width, int height);

// The smallest rectangle of pixels that differ from `background` by more
// than `threshold` in any channel.
QRect inkBounds(const QImage& picture, QRgb background, int threshold = 40);

} // namespace velarion::testing
