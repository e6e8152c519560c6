#include "FakePictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velarion::testing {
namespace {

TEST(FakePicturesTest, SolidStillsArePremultipliedBGRA) {
    const StillImage still = solidStill(2, 1, SceneColor{1, 0.5, 0, 0.5});
    ASSERT_EQ(still.bgra().size(), 8u);
    const std::vector<std::uint8_t> expected = {0, 64, 128, 128, 0, 64, 128, 128};
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), still.bgra().begin()));
}

TEST(FakePicturesTest, LoaderRecordsEveryPathAndFailsWhereTold) {
    FakeImageLoader loader;
    loader.failingPaths.insert("/missing.png");
    auto first = loader.load("/a.png");
    auto again = loader.load("/a.png");
    ASSERT_TRUE(first && again);
    EXPECT_NE(*first, *again) << "each load is a fresh picture";
    EXPECT_FALSE(loader.load("/missing.png"));
    loader.failEverything = true;
    EXPECT_FALSE(loader.load("/a.png"));
    EXPECT_EQ(loader.loadedPaths,
              (std::vector<std::string>{"/a.png", "/a.png", "/missing.png", "/a.png"}));
}

TEST(FakePicturesTest, CardsRecordTheirArgumentsAndFailWhenTold) {
    FakeTextCards cards;
    const StillImage logo = solidStill(1, 1, SceneColor::black());
    auto timer = cards.countdownFull("Doors", "5:00", logo);
    auto slide = cards.holding("Welcome", "");
    ASSERT_TRUE(timer && slide);
    EXPECT_NE(timer->width(), logo.width());
    cards.failing = true;
    EXPECT_FALSE(cards.banner("Hello"));
    const std::vector<TextCardCall> expected = {
        {"countdownFull", {"Doors", "5:00"}, logo.id()},
        {"holding", {"Welcome", ""}},
        {"banner", {"Hello"}},
    };
    EXPECT_EQ(cards.calls, expected);
}

} // namespace
} // namespace velarion::testing
