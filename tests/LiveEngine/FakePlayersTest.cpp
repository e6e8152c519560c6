#include "FakePlayers.h"

#include "RecordingOutputManager.h"
#include "VirtualScheduler.h"

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

TEST(FakeSoundFilePlayerTest, FadesLinearlyInVirtualTime) {
    VirtualScheduler scheduler;
    FakeSoundFilePlayer player(scheduler, 30);
    player.setVolume(0.8);
    player.setVolume(0, 2);
    scheduler.advance(0.5);
    EXPECT_DOUBLE_EQ(player.volume(), 0.6);
    // A new fade starts from where the running one had got to.
    player.setVolume(1, 1);
    scheduler.advance(0.5);
    EXPECT_DOUBLE_EQ(player.volume(), 0.8);
    scheduler.advance(5);
    EXPECT_DOUBLE_EQ(player.volume(), 1);
    player.setVolume(3);
    EXPECT_DOUBLE_EQ(player.volume(), 1);
}

TEST(FakeSoundFilePlayerTest, LoopsForEverOrStopsAtItsDuration) {
    VirtualScheduler scheduler;
    FakeSoundFilePlayer looping(scheduler, 4);
    FakeSoundFilePlayer once(scheduler, 4);
    looping.setLoopCount(-1);
    looping.play();
    once.setCurrentSeconds(1);
    once.play();
    scheduler.advance(2);
    once.pause();
    scheduler.advance(5);
    EXPECT_DOUBLE_EQ(once.currentSeconds(), 3) << "a paused player holds its place";
    once.play();
    scheduler.advance(3.5);
    EXPECT_FALSE(once.isPlaying());
    EXPECT_DOUBLE_EQ(once.currentSeconds(), 4);
    EXPECT_TRUE(looping.isPlaying());
    EXPECT_DOUBLE_EQ(looping.currentSeconds(), 2.5);
    scheduler.advance(1000);
    EXPECT_TRUE(looping.isPlaying());
    looping.failEnd();
    EXPECT_FALSE(looping.isPlaying());
}

TEST(FakeSoundFilePlayerTest, MetersAndDevicesAnswerAsTold) {
    VirtualScheduler scheduler;
    FakeMediaPlayers players(scheduler);
    players.soundDurations["/a.wav"] = 5;
    players.missingDevices().insert("gone");
    ASSERT_FALSE(players.openSound("/b.wav"));
    auto opened = players.openSound("/a.wav");
    auto player = players.sound("/a.wav");
    ASSERT_TRUE(player);
    EXPECT_EQ(opened, player);
    EXPECT_FALSE(player->setDevice("gone"));
    EXPECT_TRUE(player->setDevice("desk"));
    EXPECT_EQ(player->device(), "desk");

    player->levelDecibels = -12;
    player->play();
    EXPECT_EQ(player->averagePowerDecibels(0), -160) << "nothing measured before an update";
    player->updateMeters();
    EXPECT_EQ(player->averagePowerDecibels(1), -12);
    player->endNow();
    player->updateMeters();
    EXPECT_EQ(player->averagePowerDecibels(0), -160);
    EXPECT_DOUBLE_EQ(player->currentSeconds(), 5);

    opened.reset();
    player.reset();
    EXPECT_FALSE(players.sound("/a.wav")) << "the factory keeps nothing alive";
}

struct VideoFixture : ::testing::Test {
    VirtualScheduler scheduler;
    FakeMediaPlayers players{scheduler};
    int ends = 0;

    std::shared_ptr<VideoSurface> playing(const std::string& path) {
        auto surface = players.makeVideoSurface(Uuid::random(), path);
        surface->setOnEnd([this] { ++ends; });
        surface->play();
        return surface;
    }
};

TEST_F(VideoFixture, EndsOnceUnlessLooping) {
    auto once = playing("/once.mov");
    auto looping = playing("/loop.mov");
    looping->setLoops(true);
    scheduler.advance(9.5);
    EXPECT_EQ(ends, 0);
    scheduler.advance(20);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(once->isPlaying());
    EXPECT_DOUBLE_EQ(once->currentSeconds(), 10);
    EXPECT_TRUE(looping->isPlaying());
    EXPECT_DOUBLE_EQ(looping->currentSeconds(), 9.5);

    looping->setLoops(false);
    scheduler.advance(0.5);
    EXPECT_EQ(ends, 2) << "the end after loops were turned off is delivered";
}

TEST_F(VideoFixture, PreparesFailsOrTimesOut) {
    players.videoBehaviours["/bad.mov"].failure =
        VideoSurfaceError{VideoSurfaceError::Case::noVideoTrack, {}};
    players.videoBehaviours["/slow.mov"].neverReady = true;
    std::vector<VideoPreparation> answers;
    auto record = [&](VideoPreparation answer) { answers.push_back(std::move(answer)); };
    players.makeVideoSurface(Uuid::random(), "/dropped.mov")->prepare(3, record);
    auto good = players.makeVideoSurface(Uuid::random(), "/good.mov");
    auto bad = players.makeVideoSurface(Uuid::random(), "/bad.mov");
    auto slow = players.makeVideoSurface(Uuid::random(), "/slow.mov");
    for (const auto& surface : {good, bad, slow}) surface->prepare(3, record);
    EXPECT_TRUE(answers.empty()) << "answers never come inside prepare";
    scheduler.advance(2.9);
    // The first surface was let go at once, so it never answers.
    ASSERT_EQ(answers.size(), 2u);
    ASSERT_TRUE(std::holds_alternative<VideoSurfaceInfo>(answers[0]));
    EXPECT_DOUBLE_EQ(std::get<VideoSurfaceInfo>(answers[0]).durationSeconds, 10);
    EXPECT_TRUE(good->hasFrameToShow());
    EXPECT_EQ(std::get<VideoSurfaceError>(answers[1]).error, VideoSurfaceError::Case::noVideoTrack);
    EXPECT_FALSE(bad->hasFrameToShow());
    scheduler.advance(0.1);
    ASSERT_EQ(answers.size(), 3u);
    EXPECT_EQ(std::get<VideoSurfaceError>(answers[2]).error,
              VideoSurfaceError::Case::notReadyInTime);
    EXPECT_EQ(players.surfaces().size(), 4u);
    EXPECT_FALSE(players.surfaces()[0]);
    EXPECT_EQ(players.surface("/slow.mov"), slow);
}

TEST_F(VideoFixture, SeekAndPauseMoveTheEnd) {
    auto surface = playing("/clip.mov");
    bool seeked = false;
    surface->seek(7, [&] { seeked = true; });
    EXPECT_FALSE(seeked);
    scheduler.runDue();
    EXPECT_TRUE(seeked);
    scheduler.advance(2);
    EXPECT_DOUBLE_EQ(surface->currentSeconds(), 9);
    surface->pause();
    scheduler.advance(60);
    EXPECT_EQ(ends, 0);
    surface->play();
    scheduler.advance(0.5);
    EXPECT_EQ(ends, 0);
    scheduler.advance(0.5);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(scheduler.pendingCount(), 0u) << "no stale end is left waiting";
}

TEST(RecordingOutputManagerTest, ProgramLayersFollowRoutesAndTheOperatorsPick) {
    RecordingOutputManager outputs;
    EXPECT_TRUE(outputs.programLayerIDs().empty());
    const SceneID everywhere = Uuid::random(), onProgram = Uuid::random(), onLobby = Uuid::random();
    OutputScene scene;
    for (const SceneID& id : {everywhere, onProgram, onLobby}) scene.layers.push_back({id});
    const LayerRoutes routes = {{onProgram, {"_program", "side"}}, {onLobby, {"lobby"}}};
    outputs.apply(scene, {}, {}, routes, {}, std::nullopt);

    EXPECT_EQ(outputs.programLayerIDs(), (std::set<SceneID>{everywhere, onProgram}));
    outputs.selectProgramOutput("lobby");
    EXPECT_EQ(outputs.programOutputID(), "lobby");
    EXPECT_EQ(outputs.programLayerIDs(), (std::set<SceneID>{everywhere, onLobby}));
    EXPECT_EQ(outputs.applyCount(), 1u);
    EXPECT_EQ(outputs.lastApply().routes, routes);
}

} // namespace
} // namespace velarion::testing
