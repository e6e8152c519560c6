// Moving a moment up or down the run of show and flipping "start together",
// as the console asks for them: words, selection, undo and refusals.

#include "AppModelFixture.h"

namespace velarion::testing {
namespace {

class AppModelRundownTest : public AppModelFixture {
protected:
    // A with B starting together, then C and D on their own GO.
    AppModel& openBundledShow() {
        Show show = showWithCues("Gala", {"A", "B", "C", "D"});
        show.sections.edit(0).cues.edit(1).follow = Follow::withPrevious;
        AppModel& app = start();
        app.openShow(savePackage(show, "Gala"));
        return app;
    }
    std::string order() const {
        std::string names;
        for (const Cue* cue : model->show()->allCues()) names += cue->name;
        return names;
    }
};

TEST_F(AppModelRundownTest, AStepJumpsAWholeMomentAndSaysWhichWay) {
    using enum CueMoveDirection;
    struct Case {
        std::string cue;
        CueMoveDirection direction;
        std::string after; // empty: refused, nothing changes
    };
    const Case cases[] = {{"C", up, "CABD"},   {"A", down, "CABD"}, {"B", down, "CABD"},
                          {"D", up, "ABDC"},   {"A", up, ""},       {"B", up, ""},
                          {"D", down, ""}};
    AppModel& app = openBundledShow();
    for (const Case& c : cases) {
        const std::string step = c.cue + " " + std::string(toString(c.direction));
        SCOPED_TRACE(step);
        const Uuid id = cueNamed(c.cue).id;
        app.selectCue(id);
        app.setStatus("");
        app.setRename(Rename{id, [](const std::string&) {}});
        const bool moved = app.moveRundownCue(id, c.direction);
        ASSERT_EQ(moved, !c.after.empty());
        EXPECT_EQ(order(), moved ? c.after : "ABCD");
        EXPECT_EQ(app.status(), moved ? "Moved " + step : "");
        EXPECT_EQ(app.selectedCueID(), id);
        if (!moved) continue;
        EXPECT_FALSE(app.rename()) << "an open rename is closed";
        app.undo();
        EXPECT_EQ(order(), "ABCD") << "one undo step";
    }
    app.setLocked(true);
    EXPECT_FALSE(app.moveRundownCue(cueNamed("C").id, up));
}

} // namespace
} // namespace velarion::testing
