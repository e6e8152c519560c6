// The clamp that keeps a text box on its slide.

#include "LiveModel/SlideTemplate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velarion {
namespace {

TEST(TextBoxClamp, KeepsEveryBoxOnTheSlide) {
    TextBox box;
    box.x = 0.9;
    box.width = 0.5;
    box.size = 4;
    EXPECT_DOUBLE_EQ(box.clamped().x, 0.5);
    EXPECT_DOUBLE_EQ(box.clamped().size, 8);
    box.size = 1000;
    EXPECT_DOUBLE_EQ(box.clamped().size, 400);

    // Size first, then position against the clamped size.
    box.width = 0.001;
    box.height = 3;
    box.x = -2;
    box.y = 0.5;
    const TextBox clamped = box.clamped();
    EXPECT_DOUBLE_EQ(clamped.width, 0.05);
    EXPECT_DOUBLE_EQ(clamped.height, 1);
    EXPECT_DOUBLE_EQ(clamped.x, 0);
    EXPECT_DOUBLE_EQ(clamped.y, 0);

    // A damaged value can't take a box off the slide either.
    box.x = std::nan("");
    box.width = std::nan("");
    box.y = std::numeric_limits<double>::infinity();
    box.height = 0.2;
    const TextBox repaired = box.clamped();
    EXPECT_DOUBLE_EQ(repaired.width, 0.05);
    EXPECT_DOUBLE_EQ(repaired.x, 0);
    EXPECT_DOUBLE_EQ(repaired.y, 0.8);
}

} // namespace
} // namespace velarion
