#include "ShowStage/OutputScene.h"

#include <gtest/gtest.h>

#include <unordered_set>

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

TEST(SceneIDTest, FreshIdsAreDistinctVersionFourIds) {
    std::unordered_set<SceneID> seen;
    for (int i = 0; i < 1000; ++i) {
        SceneID id = Uuid::random();
        EXPECT_EQ(id.bytes[6] >> 4, 4);
        EXPECT_EQ(id.bytes[8] >> 6, 2);
        EXPECT_TRUE(seen.insert(id).second);
    }
}

TEST(SceneValuesTest, NamedConstantsAreTheAgreedValues) {
    EXPECT_EQ(SceneColor::black(), (SceneColor{0, 0, 0, 1}));
    EXPECT_EQ(SceneRect::full(), (SceneRect{0, 0, 1, 1}));
    const SceneCornerPin identity = SceneCornerPin::identity();
    EXPECT_EQ(identity.topLeft, (ScenePoint{0, 0}));
    EXPECT_EQ(identity.topRight, (ScenePoint{1, 0}));
    EXPECT_EQ(identity.bottomLeft, (ScenePoint{0, 1}));
    EXPECT_EQ(identity.bottomRight, (ScenePoint{1, 1}));
}

TEST(SceneValuesTest, ScalingNamesRoundTripInVariantOrder) {
    const SceneScaling all[] = {SceneScaling::fit, SceneScaling::fill, SceneScaling::stretch};
    const std::string_view names[] = {"fit", "fill", "stretch"};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(toString(all[i]), names[i]);
        EXPECT_EQ(parseSceneScaling(names[i]), all[i]);
    }
    EXPECT_FALSE(parseSceneScaling("Fit"));
    EXPECT_FALSE(parseSceneScaling(""));
}

TEST(SceneLayerTest, EveryFieldTakesPartInEquality) {
    const SceneLayer base{.id = Uuid::random(),
                          .content = SceneColorContent{SceneColor{1, 0, 0, 1}},
                          .frame = SceneRect{0.1, 0.2, 0.5, 0.5},
                          .scaling = SceneScaling::fill,
                          .opacity = 0.8,
                          .dissolveSeconds = 1.5,
                          .rotationDegrees = 10,
                          .cornerPin = SceneCornerPin::identity()};
    EXPECT_EQ(base, base);

    std::vector<SceneLayer> changed(9, base);
    changed[0].id = Uuid::random();
    changed[1].content = SceneColorContent{SceneColor{1, 0, 0, 0.5}};
    changed[2].frame.height = 0.25;
    changed[3].scaling = SceneScaling::stretch;
    changed[4].opacity = 0.7;
    changed[5].dissolveSeconds = 0;
    changed[6].rotationDegrees = -10;
    changed[7].cornerPin->bottomRight = ScenePoint{0.9, 1};
    changed[8].cornerPin.reset(); // absent differs from the identity pin
    for (std::size_t i = 0; i < changed.size(); ++i) EXPECT_NE(changed[i], base) << "field " << i;
}

TEST(SceneLayerTest, ContentComparesByKindAndPayload) {
    const SceneID surface = Uuid::random();
    auto picture = StillImage::fromBGRA(1, 1, solid(1, 1, 255));
    ASSERT_TRUE(picture);

    EXPECT_EQ(SceneContent{SceneVideoContent{surface}}, SceneContent{SceneVideoContent{surface}});
    EXPECT_NE(SceneContent{SceneVideoContent{surface}},
              SceneContent{SceneVideoContent{Uuid::random()}});
    EXPECT_EQ(SceneContent{SceneStillContent{*picture}}, SceneContent{SceneStillContent{*picture}});
    EXPECT_NE(SceneContent{SceneStillContent{*picture}},
              SceneContent{SceneStillContent{picture->freshCopy()}});
}

TEST(OutputSceneTest, OrderOfLayersAndBackgroundAreChanges) {
    SceneLayer lower{.id = Uuid::random()};
    SceneLayer upper{.id = Uuid::random(), .opacity = 0.5};
    const OutputScene scene{.destinationID = Uuid::random(), .layers = {lower, upper}};
    EXPECT_EQ(scene.background, SceneColor::black());

    OutputScene reordered = scene;
    reordered.layers = {upper, lower};
    EXPECT_NE(reordered, scene);

    OutputScene white = scene;
    white.background = SceneColor{1, 1, 1, 1};
    EXPECT_NE(white, scene);

    OutputScene elsewhere = scene;
    elsewhere.destinationID = Uuid::random();
    EXPECT_NE(elsewhere, scene);

    OutputScene same = scene;
    EXPECT_EQ(same, scene);
}

} // namespace
} // namespace velarion
