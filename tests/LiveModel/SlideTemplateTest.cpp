// The fixed boxes of older slide layouts, and the clamp that keeps a box on its slide.

#include "LiveModel/SlideTemplate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace velarion {
namespace {

std::vector<std::string> texts(const std::vector<TextBox>& boxes) {
    std::vector<std::string> result;
    for (const TextBox& box : boxes)
        result.push_back(box.text);
    return result;
}

MadeSlide olderSlide(MadeSlide::Layout layout, std::string title, std::string text) {
    MadeSlide slide;
    slide.id = Uuid::random();
    slide.layout = layout;
    slide.title = std::move(title);
    slide.text = std::move(text);
    return slide;
}

TEST(MadeSlideBoxes, ASlideWithoutBoxesDrawsItsLayoutsFixedBoxes) {
    const MadeSlide slide = olderSlide(MadeSlide::Layout::titleAndText, "Welcome", "");
    const auto boxes = slide.effectiveBoxes();
    ASSERT_EQ(boxes.size(), 2u);
    // The stored words, not a template's placeholder: an empty text stays empty.
    EXPECT_EQ(texts(boxes), (std::vector<std::string>{"Welcome", ""}));
    // A query gives the same answer each time, ids included.
    EXPECT_EQ(slide.effectiveBoxes(), boxes);
}

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
