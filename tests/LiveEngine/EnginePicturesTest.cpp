// Pictures across screens: what a new picture displaces, what it leaves,
// and the scenes and routes the outputs are given.

#include "EngineFixture.h"

namespace velarion::testing {
namespace {

using Pictures = EngineFixture;

std::optional<SceneLayer> layerWithID(const OutputScene& scene, const SceneID& id) {
    for (const SceneLayer& layer : scene.layers)
        if (layer.id == id) return layer;
    return std::nullopt;
}

TEST_F(Pictures, APictureForOneScreenLeavesTheOldOneOnTheOthers) {
    image("Wide");
    image("Left").visualOutputIDs = std::vector<std::string>{"A"};
    start();
    go();
    const Uuid wideRun = runOf("Wide")->id;
    const SceneID wideLayer = *engine->stack().layerID(LayerKind::media);
    goLater();
    EXPECT_TRUE(runOf("Wide")) << "still showing on B";
    EXPECT_EQ(engine->audienceLayerRoutes().at(wideLayer), DestinationKeys{"B"});
    const SceneID leftLayer = *engine->stack().layerID(LayerKind::media);
    EXPECT_EQ(engine->audienceLayerRoutes().at(leftLayer), (DestinationKeys{"A", "_program"}));
    EXPECT_EQ(outputs.lastApply().routes, engine->audienceLayerRoutes());
    EXPECT_EQ(engine->state().programRunID, runOf("Left")->id);
    EXPECT_EQ(engine->stack().layerRuns().at(wideLayer), wideRun) << "the same picture, not shown again";
}

TEST_F(Pictures, APictureCoveringEveryScreenClearsTheOldOneWithItsFade) {
    image("Left").visualOutputIDs = std::vector<std::string>{"A"};
    image("Wide");
    std::get<ImageCue>(show.sections.edit(0).cues.edit(1).kind).fadeIn = 1.5;
    start();
    go();
    const SceneID leftLayer = *engine->stack().layerID(LayerKind::media);
    goLater();
    EXPECT_FALSE(runOf("Left"));
    EXPECT_TRUE(logged("Stopped Left"));
    // One more scene carries the old layer with the new picture's fade …
    const auto applies = outputs.applied.size();
    const auto leaving = layerWithID(outputs.applied[applies - 1].scene, leftLayer);
    ASSERT_TRUE(leaving);
    EXPECT_EQ(leaving->dissolveSeconds, 1.5);
    // … and the next publish, straight after this turn, leaves it out.
    scheduler.runDue();
    EXPECT_FALSE(layerWithID(outputs.lastScene(), leftLayer));
}

TEST_F(Pictures, AVideoGoesUpWhenPreparedAndItsEndFiresTheFollower) {
    video("Film");
    graphic("Credits", std::nullopt, Follow::afterPrevious);
    players.defaultVideoBehaviour.durationSeconds = 4;
    start();
    go();
    EXPECT_FALSE(engine->stack().layer(runOf("Film")->id)) << "not before the video is ready";
    scheduler.advance(0.1);
    const auto* film = runOf("Film");
    ASSERT_TRUE(film && film->video);
    EXPECT_EQ(engine->stack().layer(film->id), LayerKind::media);
    EXPECT_TRUE(film->video->isPlaying());
    EXPECT_TRUE(engine->surfaces().contains(film->video->id()));
    EXPECT_EQ(engine->state().running[0].durationSeconds, 10) << "the library's length";
    const Uuid filmRun = film->id;

    scheduler.advance(4);
    EXPECT_FALSE(runOf("Film"));
    EXPECT_TRUE(runOf("Credits"));
    EXPECT_FALSE(engine->stack().layer(filmRun));
}

TEST_F(Pictures, AHeldLastFrameOutlivesItsRunWithItsRoutes) {
    video("Film").visualOutputIDs = std::vector<std::string>{"B"};
    std::get<VideoCue>(show.sections.edit(0).cues.edit(0).kind).holdLastFrame = true;
    players.defaultVideoBehaviour.durationSeconds = 2;
    start();
    go();
    scheduler.advance(0.1);
    const Uuid runID = runOf("Film")->id;
    const SceneID surface = runOf("Film")->video->id();
    scheduler.advance(2.5);
    EXPECT_FALSE(runOf("Film"));
    const SceneID layer = *engine->stack().layerID(LayerKind::media);
    EXPECT_EQ(engine->stack().runID(LayerKind::media), runID);
    EXPECT_TRUE(engine->surfaces().contains(surface)) << "the frame still shows";
    EXPECT_EQ(engine->audienceLayerRoutes().at(layer), (DestinationKeys{"B", "_program"}));

    perform(command::Clear{ClearTarget::media, 0});
    scheduler.runDue();
    EXPECT_FALSE(engine->surfaces().contains(surface));
    EXPECT_FALSE(engine->visualRoutes().contains(runID));
}

TEST_F(Pictures, AVideoThatFailsToPrepareSaysWhy) {
    video("Broken");
    video("Gone");
    players.videoBehaviours["/shows/Test.velarion/Media/Broken.mp4"].failure =
        VideoSurfaceError{VideoSurfaceError::Case::noVideoTrack, ""};
    players.missingPaths.insert("/shows/Test.velarion/Media/Gone.mp4");
    start();
    go();
    scheduler.advance(0.1);
    EXPECT_TRUE(logged("Broken didn't play — " +
                       VideoSurfaceError{VideoSurfaceError::Case::noVideoTrack, ""}.text()));
    goLater();
    EXPECT_TRUE(logged("Gone didn't play — the video is missing"));
    EXPECT_TRUE(engine->runs().empty());
}

TEST_F(Pictures, AClearCueStopsItsTargetAndReleasesItsFollower) {
    graphic("Title", std::nullopt);
    image("Photo", Follow::withPrevious);
    clearCue("Blank", ClearTarget::everything);
    graphic("Then", std::nullopt, Follow::afterPrevious);
    add("Stop title", ClearCue{ClearTarget::everything, 0, Uuid::random()});
    start();
    go();
    goLater();
    EXPECT_TRUE(logged("Cleared everything"));
    EXPECT_EQ(runningNames(), std::vector<std::string>{"Then"});
    goLater();
    EXPECT_TRUE(logged("That cue wasn't running"));
}

} // namespace
} // namespace velarion::testing
