// The scene values whose equality is written by hand: a still image is the
// same picture as long as its id is, whatever its pixels.

#include "ShowStage/OutputScene.h"
#include "ShowStage/VideoFrame.h"

#include <gtest/gtest.h>

#include <algorithm>

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

// A frame of `width` by 2 in NV12 whose chroma columns are given.
std::shared_ptr<const VideoFrame> nv12(VideoColorimetry colorimetry, std::uint8_t luma,
                                       std::vector<std::pair<std::uint8_t, std::uint8_t>> chroma) {
    const int width = static_cast<int>(chroma.size()) * 2;
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(static_cast<std::size_t>(width) * 2, luma);
    for (const auto& [cb, cr] : chroma) bytes->insert(bytes->end(), {cb, cr});
    const std::uint8_t* data = bytes->data();
    return VideoFrame::make(VideoPlaneLayout::nv12, width, 2,
                            {VideoPlane{data, width, width, 2}, VideoPlane{data + width * 2, width, width / 2, 1}, {}},
                            colorimetry, bytes);
}

TEST(VideoFrameTest, ConvertsWithTheFramesOwnMatrixAndRange) {
    struct Case {
        VideoColorimetry colorimetry;
        std::uint8_t y, cb, cr;
        int red, green, blue;
    };
    using enum VideoColorMatrix;
    const Case cases[] = {
        {{bt709, false}, 16, 128, 128, 0, 0, 0},     {{bt709, false}, 235, 128, 128, 255, 255, 255},
        {{bt709, false}, 63, 102, 240, 255, 1, 0},   {{bt601, false}, 81, 90, 240, 254, 0, 0},
        {{bt601, true}, 76, 85, 255, 254, 0, 0},     {{bt2020, false}, 126, 160, 128, 128, 122, 197},
    };
    for (const Case& c : cases) {
        const auto pixels = nv12(c.colorimetry, c.y, {{c.cb, c.cr}})->bgra();
        const std::uint8_t* p = pixels->bgra.data();
        EXPECT_LE(std::max({std::abs(p[2] - c.red), std::abs(p[1] - c.green), std::abs(p[0] - c.blue)}), 1)
            << int(c.y) << "," << int(c.cb) << "," << int(c.cr);
        EXPECT_EQ(p[3], 255);
    }
}

TEST(VideoFrameTest, ChromaIsSampledBetweenItsSitesAsATextureSamplerWould) {
    // Studio-range grey with the red difference rising by 56 over one column.
    const auto frame = nv12({VideoColorMatrix::bt709, false}, 126, {{128, 128}, {128, 184}});
    const auto pixels = frame->bgra();
    EXPECT_EQ(pixels, frame->bgra()) << "converted once";
    const int expected[4] = {128, 153, 203, 228};
    for (int x = 0; x < 4; ++x)
        for (int y = 0; y < 2; ++y) EXPECT_NEAR(pixels->bgra[static_cast<std::size_t>((y * 4 + x) * 4 + 2)], expected[x], 1) << x;
}

} // namespace
} // namespace velarion
