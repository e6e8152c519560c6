// Moving a moment up or down the run of show and flipping "start together",
// as the console asks for them: words, selection, undo and refusals.

#include "AppModelFixture.h"

namespace velarion::testing {
namespace {

class AppModelRundownTest : public AppModelFixture {
protected:
    // A with B starting together, then C and D on their own GO.
    static Show bundledShow() {
        Show show = showWithCues("Gala", {"A", "B", "C", "D"});
        show.sections.edit(0).cues.edit(1).follow = Follow::withPrevious;
        return show;
    }
};

std::string order(const AppModel& app) {
    std::string names;
    for (const Cue* cue : app.show()->allCues()) names += cue->name;
    return names;
}

TEST_F(AppModelRundownTest, AStepJumpsAWholeMomentAndSaysWhichWay) {
    struct Case {
        std::string cue;
        CueMoveDirection direction;
        std::string after; // empty: refused, nothing changes
        std::string status;
    };
    const Case cases[] = {
        {"C", CueMoveDirection::up, "CABD", "Moved C up"},
        {"A", CueMoveDirection::down, "CABD", "Moved A down"},
        {"B", CueMoveDirection::down, "CABD", "Moved B down"}, // B takes its bundle along
        {"D", CueMoveDirection::up, "ABDC", "Moved D up"},
        {"A", CueMoveDirection::up, "", ""},
        {"B", CueMoveDirection::up, "", ""},
        {"D", CueMoveDirection::down, "", ""},
    };
    AppModel& app = start();
    app.openShow(savePackage(bundledShow(), "Gala"));
    for (const Case& c : cases) {
        SCOPED_TRACE(c.cue + " " + std::string(toString(c.direction)));
        const Uuid id = cueNamed(c.cue).id;
        app.selectCue(id);
        app.setStatus("");
        app.setRename(Rename{id, [](const std::string&) {}});
        const bool moved = app.moveRundownCue(id, c.direction);
        EXPECT_EQ(moved, !c.after.empty());
        EXPECT_FALSE(app.canMoveRundownCue(id, c.direction) && !moved);
        EXPECT_EQ(order(app), moved ? c.after : "ABCD");
        EXPECT_EQ(app.status(), c.status);
        EXPECT_EQ(app.selectedCueID(), id);
        if (!moved) continue;
        EXPECT_FALSE(app.rename()) << "an open rename is closed";
        EXPECT_EQ(app.engine()->show(), *app.show());
        app.undo();
        EXPECT_EQ(order(app), "ABCD") << "one undo step";
    }

    app.setLocked(true);
    EXPECT_FALSE(app.canMoveRundownCue(cueNamed("C").id, CueMoveDirection::up));
    EXPECT_FALSE(app.moveRundownCue(cueNamed("C").id, CueMoveDirection::up));
    EXPECT_EQ(order(app), "ABCD");
}

TEST_F(AppModelRundownTest, StartTogetherFlipsBetweenWithPreviousAndGo) {
    Show show = bundledShow();
    show.sections.edit(0).cues.edit(3).isEnabled = false; // D
    AppModel& app = start();
    app.openShow(savePackage(show, "Gala"));
    const Uuid b = cueNamed("B").id;
    const Uuid c = cueNamed("C").id;

    ASSERT_TRUE(app.toggleStartTogether(b));
    EXPECT_EQ(cueNamed("B").follow, Follow::manual);
    ASSERT_TRUE(app.toggleStartTogether(c));
    EXPECT_EQ(cueNamed("C").follow, Follow::withPrevious);
    app.undo();
    EXPECT_EQ(cueNamed("C").follow, Follow::manual);

    // The first cue has nothing above it; a disabled cue on either side can't join.
    for (const char* name : {"A", "D"}) {
        EXPECT_FALSE(app.canToggleStartTogether(cueNamed(name).id)) << name;
        EXPECT_FALSE(app.toggleStartTogether(cueNamed(name).id)) << name;
    }
    app.setLocked(true);
    EXPECT_FALSE(app.toggleStartTogether(c));
    EXPECT_EQ(cueNamed("C").follow, Follow::manual);
}

} // namespace
} // namespace velarion::testing
