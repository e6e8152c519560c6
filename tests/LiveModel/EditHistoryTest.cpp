// Undo and redo at their edges, the step limit and the Show Mode lock; the
// walk through thousands of random steps is ShowEditFuzzTest's.

#include "LiveModel/CueLimits.h"
#include "LiveModel/EditHistory.h"

#include "ShowEditFixtures.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using namespace editTesting;

edit::SetTitle titled(int step) {
    return {"Step " + std::to_string(step), ""};
}

TEST(EditHistory, AnEditThatChangesNothingMakesNoStepAndKeepsRedo) {
    EditHistory history(100);
    const Show start = makeShow({makeSection("One", {makeCue("A")})});
    const Show changed = history.apply(titled(1), start);
    const auto undone = history.undo(changed);
    ASSERT_TRUE(undone);

    const Show same = history.apply(edit::SetOutputs{undone->outputs}, *undone);
    EXPECT_EQ(same, start);
    EXPECT_TRUE(history.undoStack().empty());
    EXPECT_EQ(history.redoStack().size(), 1u);

    // A real step after an undo empties redo.
    history.apply(titled(2), same);
    EXPECT_FALSE(history.canRedo());
}

TEST(EditHistory, TheLimitDropsTheOldestStep) {
    EditHistory history(100);
    const Show start = makeShow({});
    Show show = start;
    for (int step = 1; step <= 101; ++step)
        show = history.apply(titled(step), show);
    EXPECT_EQ(history.undoStack().size(), 100u);

    int undos = 0;
    while (auto previous = history.undo(show)) {
        show = *previous;
        ++undos;
    }
    EXPECT_EQ(undos, 100);
    EXPECT_EQ(show.title, "Step 1"); // the step from the start was dropped
    EXPECT_EQ(history.redoStack().size(), 100u);

    EXPECT_EQ(EditHistory(0).limit(), 1);
}

TEST(EditHistory, ShowModeRefusesEditsAndHidesUndo) {
    EditHistory history(100);
    const Show start = makeShow({});
    const Show one = history.apply(titled(1), start);
    const Show two = history.apply(titled(2), one);
    const Show back = *history.undo(two);

    history.isLocked = true;
    EXPECT_EQ(refusal([&] { history.apply(titled(3), back); }),
              "Show Mode is on. Return to Edit to make changes.");
    EXPECT_FALSE(history.canUndo());
    EXPECT_FALSE(history.canRedo());
    EXPECT_FALSE(history.undo(back));
    EXPECT_FALSE(history.redo(back));
    EXPECT_EQ(history.undoStack().size(), 1u);
    EXPECT_EQ(history.redoStack().size(), 1u);

    history.isLocked = false;
    EXPECT_EQ(history.redo(back), two);
}

TEST(EditHistory, EditsTogetherMakeOneStepOrNoneWhenOneIsRefused) {
    EditHistory history(100);
    const Show start = makeShow({makeSection("One", {makeCue("A"), makeCue("B")})});
    Cue a = *start.allCues()[0], b = *start.allCues()[1];
    a.notes = b.notes = "Both";
    const Show both = history.apply({edit::UpdateCue{a}, edit::UpdateCue{b}}, start);
    EXPECT_EQ(both.allCues()[1]->notes, "Both");
    EXPECT_EQ(history.undoStack().size(), 1u);

    Cue gone = makeCue("Gone");
    EXPECT_THROW(history.apply({edit::UpdateCue{a}, edit::UpdateCue{gone}}, start), ShowEditError);
    EXPECT_EQ(history.undoStack().size(), 1u);
}

TEST(CueLimits, TypedValuesLandOnTheirLimits) {
    const auto limited = [](CueKind kind) { return cueLimits::limited(makeCue("Cue", Follow::manual, true, kind)).kind; };
    VideoCue video;
    video.inPoint = -2;
    video.level = 3;
    video.fadeOut = -1;
    EXPECT_EQ(std::get<VideoCue>(limited(video)).inPoint, 0);
    EXPECT_EQ(std::get<VideoCue>(limited(video)).level, 1);
    EXPECT_EQ(std::get<VideoCue>(limited(video)).fadeOut, 0);
    EXPECT_EQ(std::get<PlaylistCue>(limited(PlaylistCue{{}, false, false, 45})).crossfade, 20);
    SpotifyTrack song;
    song.level = 140;
    EXPECT_EQ(std::get<SpotifyTrack>(limited(song)).level, 100);
    EXPECT_EQ(std::get<SlidesCue>(limited(SlidesCue{{}, -3, 12.0})), (SlidesCue{{}, 0, 10.0}));
    EXPECT_EQ(std::get<TimerCue>(limited(TimerCue{CountToMode{2000}})).mode, TimerMode{CountToMode{1439}});
}

} // namespace
} // namespace velarion
