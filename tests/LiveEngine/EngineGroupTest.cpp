// Cue group playback: steps, drivers, repeats, held steps and cancellation.

#include "EngineFixture.h"

namespace velarion::testing {
namespace {

class Groups : public EngineFixture {
protected:
    void group(const std::string& name, std::vector<std::string> members, bool repeats = false) {
        CueGroup made{Uuid::random(), name, {}, repeats};
        for (const std::string& member : members) made.cueIDs.push_back(cueNamed(member).id);
        if (!show.cueGroups) show.cueGroups.emplace();
        show.cueGroups->push_back(made);
    }
    const GroupPlayback* playback() const {
        return engine->playbackGroup() ? &*engine->playbackGroup() : nullptr;
    }
};

TEST_F(Groups, ARepeatingStepRestartsOnItsGroupDuration) {
    image("Loop").groupDuration = 5;
    graphic("Caption", std::nullopt, Follow::withPrevious);
    group("Walk-in", {"Loop", "Caption"}, true);
    start();
    go();
    ASSERT_TRUE(runOf("Loop"));
    const Uuid first = runOf("Loop")->id;
    EXPECT_TRUE(logged("Walk-in · repeating group"));
    scheduler.advance(5.15);
    ASSERT_TRUE(runOf("Loop"));
    const Uuid second = runOf("Loop")->id;
    EXPECT_NE(second, first);
    EXPECT_EQ(engine->runs().size(), 2u) << "the earlier runs are stopped";
    EXPECT_TRUE(logged("Stopped Loop"));
    scheduler.advance(5.1);
    EXPECT_NE(runOf("Loop")->id, second);
    ASSERT_TRUE(engine->state().cueGroup);
    EXPECT_EQ(engine->state().cueGroup->step, 1);
    EXPECT_TRUE(engine->state().cueGroup->repeats);
}

TEST_F(Groups, AStepWithoutAnEndWaitsForGoWhichEndsTheGroup) {
    image("Still");
    graphic("Title", 1, Follow::withPrevious);
    graphic("After", std::nullopt);
    group("Stills", {"Still", "Title"});
    start();
    go();
    EXPECT_TRUE(logged("Still has no group duration or natural end. GO takes over after the group."));
    EXPECT_EQ(engine->state().nextCueID, cueNamed("After").id);
    scheduler.advance(2); // the title ending is not the driver
    EXPECT_TRUE(playback());
    go();
    EXPECT_FALSE(playback());
    EXPECT_TRUE(runOf("After"));
}

TEST_F(Groups, AHeldStepWaitsAndGoReleasesIt) {
    graphic("One", 1);
    image("Two");
    std::get<ImageCue>(show.sections.edit(0).cues.edit(1).kind).layer = LayerKind::background;
    group("Pair", {"One", "Two"});
    start();
    perform(command::ToggleHold{});
    go();
    scheduler.advance(1.1);
    ASSERT_TRUE(engine->state().cueGroup);
    EXPECT_TRUE(engine->state().cueGroup->waitingForGO);
    EXPECT_EQ(engine->state().nextCueID, cueNamed("Two").id);
    EXPECT_TRUE(logged("Held for GO: Two"));
    goLater();
    EXPECT_TRUE(logged("Released held group step: Two"));
    EXPECT_TRUE(runOf("Two"));
    EXPECT_EQ(engine->state().cueGroup->step, 2);
}

TEST_F(Groups, StoppingAnyRunOfTheStepEndsTheGroup) {
    graphic("Driver", 5);
    image("Side", Follow::withPrevious);
    graphic("Next", std::nullopt);
    group("Both", {"Driver", "Side"});
    start();
    go();
    ASSERT_TRUE(playback());
    perform(command::Stop{runOf("Side")->id});
    EXPECT_FALSE(playback());
    scheduler.advance(6);
    EXPECT_FALSE(runOf("Next")) << "nothing advances after the group was ended";
}

TEST_F(Groups, TheFollowerBehindAGroupStartsOnlyWhenTheGroupEnds) {
    graphic("First", 1);
    graphic("Second", 1);
    graphic("Behind", std::nullopt, Follow::afterPrevious);
    group("Run", {"First", "Second"});
    start();
    go();
    scheduler.advance(1.05);
    EXPECT_TRUE(runOf("Second"));
    EXPECT_FALSE(runOf("Behind"));
    scheduler.advance(1.05);
    EXPECT_TRUE(runOf("Behind"));
    EXPECT_FALSE(playback());

    perform(command::Stop{runOf("Behind")->id});
    goLater(); // Next is the end of the show; fire the group again by hand
    perform(command::Fire{cueNamed("First").id});
    perform(command::Stop{runOf("First")->id});
    scheduler.advance(3);
    EXPECT_FALSE(runOf("Behind")) << "a stopped group releases nothing";
}

TEST_F(Groups, AnInvalidGroupStartsNothingAndKeepsNext) {
    graphic("A", std::nullopt);
    graphic("B", std::nullopt);
    group("Broken", {"B", "A"}); // out of show order
    start();
    const auto next = engine->state().nextCueID;
    go();
    EXPECT_TRUE(logged("Broken cannot play — check its cue group in Ready Check"));
    EXPECT_TRUE(engine->runs().empty());
    EXPECT_EQ(engine->state().nextCueID, next);
}

} // namespace
} // namespace velarion::testing
