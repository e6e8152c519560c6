// Edits committed while the show plays.

#include "EngineFixture.h"

namespace velarion::testing {
namespace {

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
