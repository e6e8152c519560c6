// The scene values whose equality is written by hand: a still image is the
// same picture as long as its id is, whatever its pixels.

#include "ShowStage/OutputScene.h"

#include <gtest/gtest.h>




namespace velarion {
namespace {

std::vector<std::uint8_t> solid(int width, int height, std::uint8_t value) {
    return std::vector<std::uint8_t>(static_cast<std::size_t>(width * height * 4), value);
}

TEST(StillImageTest, EqualityFollowsTheIdNotThePixels) {
    auto red = StillImage::fromBGRA(2, 2, solid(2, 2, 10));
    auto sameRedAgain = StillImage::fromBGRA(2, 2, solid(2, 2, 10));
    ASSERT_TRUE(red && sameRedAgain);
    EXPECT_NE(*red, *sameRedAgain) << "a fresh still of the same picture is another picture";

    StillImage copy = *red;
    EXPECT_EQ(copy, *red);

    // Same id, other pixels: still the same picture, so a renderer won't upload it again.
    auto repainted = StillImage::withID(red->id(), 1, 1, solid(1, 1, 200));
    ASSERT_TRUE(repainted);
    EXPECT_EQ(*repainted, *red);
    EXPECT_EQ(repainted->width(), 1);

    StillImage renamed = red->freshCopy();
    EXPECT_NE(renamed, *red);
    EXPECT_EQ(renamed.pixels().get(), red->pixels().get()) << "a fresh id must not copy pixels";
}

TEST(StillImageTest, RejectsBuffersThatDoNotMatchTheSize) {
    EXPECT_FALSE(StillImage::fromBGRA(0, 2, {}));
    EXPECT_FALSE(StillImage::fromBGRA(2, -1, {}));
    EXPECT_FALSE(StillImage::fromBGRA(2, 2, {1, 2, 3}));
    auto wrongLength = solid(3, 2, 0);
    wrongLength.pop_back();
    EXPECT_FALSE(StillImage::fromBGRA(3, 2, wrongLength));

    auto picture = StillImage::fromBGRA(3, 2, solid(3, 2, 7));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width(), 3);
    EXPECT_EQ(picture->height(), 2);
    EXPECT_EQ(picture->bgra().size(), 24u);
}

} // namespace
} // namespace velarion
