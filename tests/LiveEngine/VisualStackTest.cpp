#include "LiveEngine/VisualStack.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

SceneContent colour(double red) {
    return SceneColorContent{SceneColor{red, 0, 0, 1}};
}

std::vector<Uuid> sceneIDs(const OutputScene& scene) {
    std::vector<Uuid> ids;
    for (const SceneLayer& layer : scene.layers)
        ids.push_back(layer.id);
    return ids;
}

Uuid showMedia(VisualStack& stack, std::optional<Uuid> run, double fadeSeconds = 0,
               std::optional<CueGeometry> geometry = std::nullopt) {
    return stack.show(colour(0.5), LayerKind::media, run, fadeSeconds, SceneScaling::fit, geometry);
}

TEST(VisualStackTest, NewerPictureRetainsOlderAndClearingItLeavesForOneScene) {
    VisualStack stack;
    const Uuid runA = Uuid::random(), runB = Uuid::random(), runC = Uuid::random();
    const Uuid a = showMedia(stack, runA);
    const Uuid b = showMedia(stack, runB);
    EXPECT_EQ(stack.layerID(LayerKind::media), b);
    EXPECT_EQ(stack.runID(LayerKind::media), runB);
    ASSERT_EQ(stack.retained.size(), 1u);
    EXPECT_TRUE(stack.retained.contains(a));
    EXPECT_EQ(stack.layer(runA), LayerKind::media);
    EXPECT_EQ(sceneIDs(stack.scene()), (std::vector<Uuid>{a, b}));

    // With two pictures underneath, the newer of them comes back.
    const Uuid c = showMedia(stack, runC);
    stack.clear(runC, 2);
    EXPECT_EQ(stack.layerID(LayerKind::media), b);
    EXPECT_TRUE(stack.retained.contains(a));
    const OutputScene last = stack.scene();
    ASSERT_EQ(sceneIDs(last), (std::vector<Uuid>{a, b, c}));
    EXPECT_EQ(last.layers[2].dissolveSeconds, 2);
    EXPECT_EQ(last.destinationID, Uuid::parse("5B6C7D8E-0000-4000-8000-00000000A0D1"));
    EXPECT_TRUE(stack.settle());
    EXPECT_FALSE(stack.settle());
    EXPECT_EQ(sceneIDs(stack.scene()), (std::vector<Uuid>{a, b}));
    EXPECT_FALSE(stack.order.contains(c));

    stack.clear(runB, 1);
    EXPECT_EQ(stack.layerID(LayerKind::media), a);
    EXPECT_TRUE(stack.retained.empty());
}

TEST(VisualStackTest, SameRunShowingAgainReplacesInPlace) {
    VisualStack stack;
    const Uuid run = Uuid::random(), other = Uuid::random();
    const Uuid first = showMedia(stack, run);
    stack.exclude({"side"}, first);
    const Uuid below = showMedia(stack, other);
    // The run's picture is now retained under another's; showing again still
    // replaces it, and the other run's picture moves underneath.
    const Uuid second = showMedia(stack, run);
    EXPECT_NE(second, first);
    EXPECT_GT(stack.order.at(second), stack.order.at(below));
    EXPECT_FALSE(stack.order.contains(first));
    EXPECT_TRUE(stack.leaving.empty());
    ASSERT_NE(stack.entry(run, LayerKind::media), nullptr);
    EXPECT_EQ(stack.entry(run, LayerKind::media)->excludedDestinations, DestinationKeys{"side"});
    EXPECT_EQ(sceneIDs(stack.scene()), (std::vector<Uuid>{below, second}));

    // An engine picture (no run) replaces the active engine picture.
    const Uuid engineFirst = showMedia(stack, std::nullopt);
    const Uuid engineSecond = showMedia(stack, std::nullopt);
    EXPECT_FALSE(stack.layerKinds().contains(engineFirst));
    EXPECT_EQ(stack.layerID(LayerKind::media), engineSecond);
}

TEST(VisualStackTest, SceneLimitsDissolveAndPlacesGeometry) {
    VisualStack stack;
    const Uuid run = Uuid::random();
    showMedia(stack, run, 12, CueGeometry{0.5, 0, 0, 30, 1.5});
    const SceneLayer layer = stack.scene().layers.at(0);
    EXPECT_EQ(layer.dissolveSeconds, 10);
    EXPECT_EQ(stack.entry(run, LayerKind::media)->dissolveSeconds, 12);
    EXPECT_EQ(layer.frame, (SceneRect{0.25, 0.25, 0.5, 0.5}));
    EXPECT_EQ(layer.rotationDegrees, -30);
    EXPECT_EQ(layer.opacity, 1);

    stack.setGeometry(CueGeometry{1, 0.25, -0.1, 0, -2}, run);
    stack.clear(run, -3);
    const SceneLayer leaving = stack.scene().layers.at(0);
    EXPECT_EQ(leaving.dissolveSeconds, 0);
    EXPECT_EQ(leaving.opacity, 0);
    EXPECT_DOUBLE_EQ(leaving.frame.x, 0.25);
    EXPECT_DOUBLE_EQ(leaving.frame.y, -0.1);
}

TEST(VisualStackTest, LeavingEntriesKeepTheirRunButNoLayer) {
    VisualStack stack;
    const Uuid run = Uuid::random();
    const Uuid layerID = showMedia(stack, run);
    stack.exclude({"stage"}, layerID);
    stack.clearLayer(layerID, 1);
    EXPECT_EQ(stack.layer(run), std::nullopt);
    EXPECT_EQ(stack.entry(run, LayerKind::media), nullptr);
    EXPECT_EQ(stack.layerRuns().at(layerID), run);

    stack.exclude({"side"}, layerID);
    EXPECT_EQ(stack.leaving.at(layerID).second.excludedDestinations,
              (DestinationKeys{"side", "stage"}));
    EXPECT_EQ(stack.layerExclusions().at(layerID), (DestinationKeys{"side", "stage"}));
}

TEST(VisualStackTest, UpdateChangesContentInPlace) {
    VisualStack stack;
    const Uuid run = Uuid::random();
    const Uuid layerID = showMedia(stack, run);
    stack.update(colour(0.9), LayerKind::media, run);
    stack.update(colour(0.1), LayerKind::media, Uuid::random()); // another run: no match
    EXPECT_EQ(stack.layerID(LayerKind::media), layerID);
    EXPECT_EQ(stack.scene().layers.at(0).content, colour(0.9));
}

} // namespace
} // namespace velarion
