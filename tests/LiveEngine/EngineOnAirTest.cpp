// Panic, the safe slide, pause and seek.

#include "EngineFixture.h"

namespace velarion::testing {
namespace {

using OnAir = EngineFixture;

TEST_F(OnAir, PanicFadesThenStopsAndASecondPressStopsAtOnce) {
    video("Film");
    graphic("Title", std::nullopt, Follow::withPrevious);
    graphic("Next", std::nullopt);
    start();
    go();
    scheduler.advance(0.1);
    auto surface = players.surfaces().front();
    perform(command::Panic{});
    EXPECT_TRUE(std::holds_alternative<PanicFading>(engine->state().panic));
    EXPECT_EQ(engine->runs().size(), 2u) << "runs fade out first";
    scheduler.advance(1.0);
    EXPECT_NEAR(surface->volume(), 0.5, 0.05) << "the video's sound ramps down";
    scheduler.advance(1.05);
    EXPECT_TRUE(engine->runs().empty());
    EXPECT_TRUE(std::holds_alternative<PanicIdle>(engine->state().panic));
    EXPECT_EQ(engine->state().nextCueID, cueNamed("Next").id) << "Panic doesn't move Next";

    goLater();
    perform(command::Panic{});
    perform(command::Panic{});
    EXPECT_TRUE(logged("Panic — hard stop"));
    EXPECT_TRUE(std::holds_alternative<PanicIdle>(engine->state().panic));
    EXPECT_TRUE(engine->runs().empty());
    goLater(); // end of show
    perform(command::Fire{cueNamed("Title").id});
    scheduler.advance(3);
    EXPECT_TRUE(runOf("Title")) << "no delayed stop from the first press";
}

TEST_F(OnAir, PanicDropsWaitingCuesAndTakesTheSafeSlideDownButNotItsSwitch) {
    graphic("A", 1);
    graphic("A2", std::nullopt, Follow::afterPrevious);
    graphic("B", std::nullopt);
    start();
    perform(command::ToggleHold{});
    go();
    scheduler.advance(1.5);
    ASSERT_EQ(engine->state().heldCueIDs.size(), 1u);
    const auto next = engine->state().nextCueID;
    perform(command::SetHolding{true});
    perform(command::SetHolding{true});
    const auto log = logTexts();
    EXPECT_EQ(std::count(log.begin(), log.end(), "Safe slide up"), 1);
    EXPECT_EQ(engine->stack().layerID(LayerKind::holding).has_value(), true);
    EXPECT_EQ(cards.calls.back().card, "holding");

    perform(command::Panic{});
    EXPECT_TRUE(engine->state().heldCueIDs.empty());
    EXPECT_EQ(engine->state().nextCueID, next);
    EXPECT_FALSE(engine->stack().layerID(LayerKind::holding));
    EXPECT_TRUE(engine->state().holdingOn);
}

TEST_F(OnAir, TheSafeSlideCoversAPlayingVideoWhichGoesOnBehindIt) {
    video("Film");
    const Uuid logo = addItem("Logo.png", MediaKind::image);
    show.holding.mediaID = logo;
    start();
    go();
    scheduler.advance(0.5);
    perform(command::SetHolding{true});
    const OutputScene& scene = engine->audienceScene();
    ASSERT_EQ(scene.layers.size(), 2u);
    EXPECT_EQ(engine->audienceLayerKinds().at(scene.layers.back().id), LayerKind::holding);
    EXPECT_TRUE(std::holds_alternative<SceneStillContent>(scene.layers.back().content));
    EXPECT_EQ(scene.layers.back().scaling, SceneScaling::fill);
    EXPECT_TRUE(engine->state().programCoveredByHolding);
    scheduler.advance(3);
    EXPECT_TRUE(runOf("Film")->video->isPlaying()) << "everything goes on behind it";

    perform(command::SetHolding{false});
    EXPECT_TRUE(logged("Safe slide down"));
}

TEST_F(OnAir, PauseKeepsElapsedTimeAndSeekMovesAVideo) {
    graphic("Title", std::nullopt);
    video("Film");
    std::get<VideoCue>(show.sections.edit(0).cues.edit(1).kind).layer = LayerKind::background;
    start();
    go();
    scheduler.advance(2);
    const Uuid title = runOf("Title")->id;
    perform(command::Pause{title});
    ASSERT_EQ(engine->state().running.size(), 1u);
    const double elapsed = engine->state().running[0].elapsedSeconds;
    scheduler.advance(10);
    EXPECT_DOUBLE_EQ(engine->state().running[0].elapsedSeconds, elapsed);
    perform(command::Resume{title});
    EXPECT_DOUBLE_EQ(runOf("Title")->wallElapsed(scheduler.now()), elapsed);

    goLater();
    scheduler.advance(0.1);
    perform(command::PauseAll{});
    ASSERT_TRUE(runOf("Film"));
    EXPECT_FALSE(runOf("Film")->video->isPlaying());
    perform(command::Seek{runOf("Film")->id, 4});
    perform(command::ResumeAll{});
    EXPECT_TRUE(logged("Film moved to 0:04"));
    EXPECT_NEAR(runOf("Film")->video->currentSeconds(), 4, 1e-9);
    EXPECT_TRUE(logged("Resumed everything"));
}

TEST_F(OnAir, AClearCueInsideAGroupLeavesTheGroupPlaying) {
    image("Still").groupDuration = 2;
    clearCue("Wipe", ClearTarget::everything);
    show.sections.edit(0).cues.edit(1).groupDuration = 1;
    show.cueGroups = std::vector<CueGroup>{
        CueGroup{Uuid::random(), "Loop", {cueNamed("Still").id, cueNamed("Wipe").id}, true}};
    start();
    go();
    scheduler.advance(2.05);
    EXPECT_TRUE(logged("Cleared everything"));
    ASSERT_TRUE(engine->state().cueGroup) << "the group still plays";
    EXPECT_EQ(engine->state().cueGroup->step, 2);
    EXPECT_FALSE(runOf("Still"));
}

// Edits committed while the show plays.
class Updates : public EngineFixture {
protected:
    // Edits the engine's present show and hands it back, as the app's edit path does.
    template <class Change> void edit(Change change, std::set<Uuid> touched = {}) {
        Show next = engine->show();
        change(next);
        engine->apply(std::move(next), touched);
    }
    static Cue& cueIn(Show& show, const std::string& name) {
        auto& cues = show.sections.edit(0).cues;
        for (std::size_t i = 0; i < cues.size(); ++i)
            if (cues[i].name == name) return cues.edit(i);
        throw std::runtime_error("no cue " + name);
    }
};

TEST_F(Updates, DeletingAPlayingCueFadesItOutAndItsFollowerStaysPut) {
    graphic("Title", 5);
    graphic("After", std::nullopt, Follow::afterPrevious);
    graphic("Later", std::nullopt);
    start();
    go();
    const Uuid title = cueNamed("Title").id;
    edit([&](Show& show) { erase_if(show.sections.edit(0).cues, [&](const Cue& cue) { return cue.id == title; }); });
    EXPECT_FALSE(runOf("Title"));
    EXPECT_EQ(engine->stack().scene().layers.size(), 0u);
    EXPECT_EQ(outputs.lastScene().layers.at(0).dissolveSeconds, 0.3);
    scheduler.advance(6);
    EXPECT_FALSE(runOf("After"));
    EXPECT_EQ(engine->state().nextCueID, cueNamed("Later").id);
}

TEST_F(Updates, MovingAPictureKeepsTheVideoPlayingOnItsLayer) {
    video("Film");
    start();
    go();
    scheduler.advance(0.5);
    const auto surface = runOf("Film")->video;
    const SceneID layer = *engine->stack().layerID(LayerKind::media);
    edit([](Show& show) { cueIn(show, "Film").geometry = CueGeometry{0.5, 0, 0, 0, 1}; });
    EXPECT_EQ(runOf("Film")->video, surface);
    EXPECT_EQ(engine->stack().layerID(LayerKind::media), layer);
    EXPECT_EQ(engine->audienceScene().layers.at(0).frame, (SceneRect{0.25, 0.25, 0.5, 0.5}));
    EXPECT_TRUE(surface->isPlaying());
}

TEST_F(Updates, NextFollowsDeletionsAndAGroupThatChangesIsCancelled) {
    graphic("One", std::nullopt);
    image("Two", Follow::withPrevious);
    graphic("Three", std::nullopt);
    graphic("Four", std::nullopt);
    show.cueGroups = std::vector<CueGroup>{
        CueGroup{Uuid::random(), "Pair", {cueNamed("One").id, cueNamed("Two").id}, false}};
    start();
    go();
    ASSERT_TRUE(engine->playbackGroup());
    const Uuid three = cueNamed("Three").id;
    edit([&](Show& show) {
        show.cueGroups->front().cueIDs.push_back(three);
        erase_if(show.sections.edit(0).cues, [&](const Cue& cue) { return cue.id == three; });
    });
    EXPECT_FALSE(engine->playbackGroup());
    EXPECT_TRUE(runOf("One")) << "its runs go on";
    EXPECT_EQ(engine->state().nextCueID, cueNamed("Four").id);
}

TEST_F(Updates, OutputsAreConfiguredWhenTheirSetupChangesAndTheStageHearsEachPublish) {
    add("Talk", TimerCue{CountdownMode{60}, std::nullopt, 0, true, false, std::nullopt});
    graphic("Next", std::nullopt);
    start();
    ASSERT_EQ(outputs.setups.size(), 1u);
    EXPECT_EQ(outputs.setups.back(), show.outputs);
    edit([](Show& show) { cueIn(show, "Next").name = "Q&A"; });
    EXPECT_EQ(outputs.setups.size(), 1u) << "a cue edit leaves the screens alone";
    edit([](Show& show) { show.outputs.screens[1].lyricLines = 3; });
    ASSERT_EQ(outputs.setups.size(), 2u);
    EXPECT_EQ(outputs.setups.back().screens[1].lyricLines, 3);

    go();
    perform(command::SendMessage{"Wrap up", MessageTarget::stage});
    const StageUpdateCall& stage = outputs.stageUpdates.back();
    EXPECT_EQ(stage.confidence.stageMessage, "Wrap up");
    ASSERT_TRUE(stage.timer);
    EXPECT_EQ(stage.timer->name, "Talk");
    EXPECT_EQ(stage.nextCueName, "Q&A");
    EXPECT_EQ(stage.wallSeconds, scheduler.wallNow());
}

} // namespace
} // namespace velarion::testing
