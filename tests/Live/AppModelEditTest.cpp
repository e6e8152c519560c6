// Edits, undo and redo reaching the engine, Show Mode, new cues, songs and
// the slide editors that follow their decks.

#include "AppModelFixture.h"

#include "LiveModel/ShowEdit.h"

namespace velarion::testing {
namespace {

using AppModelEditTest = AppModelFixture;

Cue retitled(Cue cue, const std::string& title) {
    std::get<GraphicCue>(cue.kind).title = title;
    return cue;
}

std::string lastLowerThird(const FakeTextCards& cards) {
    for (auto call = cards.calls.rbegin(); call != cards.calls.rend(); ++call)
        if (call->card == "lowerThird") return call->texts.at(0);
    return "";
}

TEST_F(AppModelEditTest, UndoAndRedoReachTheEngineWithEveryCue) {
    AppModel& app = start();
    app.openShow(savePackage(showWithCues("Gala", {"Speaker", "Thanks"}), "Gala"));
    app.perform(command::Go{});
    ASSERT_EQ(lastLowerThird(cards), "Speaker");

    ASSERT_TRUE(app.edit(edit::UpdateCue{retitled(cueNamed("Speaker"), "Dr Ames")}));
    EXPECT_EQ(lastLowerThird(cards), "Dr Ames") << "the edited cue is redrawn on air";
    ASSERT_TRUE(app.edit(edit::DeleteCue{cueNamed("Thanks").id}));

    app.undo();
    EXPECT_EQ(app.status(), "Undone");
    EXPECT_EQ(app.engine()->show(), *app.show());
    EXPECT_NE(app.show()->cue(cueNamed("Thanks").id), nullptr);

    // Undo hands the engine every cue: the one on air is drawn as it was.
    app.undo();
    EXPECT_EQ(lastLowerThird(cards), "Speaker");
    EXPECT_EQ(app.engine()->show(), *app.show());

    app.redo();
    EXPECT_EQ(app.status(), "Redone");
    EXPECT_EQ(lastLowerThird(cards), "Dr Ames");
    EXPECT_EQ(app.engine()->show(), *app.show());
    EXPECT_TRUE(app.isDirty());
}

TEST_F(AppModelEditTest, ShowModeRefusesEditsWithABeepWhilePlaybackGoesOn) {
    AppModel& app = start();
    app.openShow(savePackage(showWithCues("Gala", {"Speaker", "Thanks"}), "Gala"));
    app.edit(edit::SetTitle{"Gala night", ""});

    app.setLocked(true);
    EXPECT_EQ(app.status(), "Show Mode — editing is off; playback controls are active");
    const int changes = changeCount;
    app.setLocked(true);
    EXPECT_EQ(changeCount, changes) << "no change, no word";

    EXPECT_FALSE(app.edit(edit::SetTitle{"Other", ""}));
    EXPECT_EQ(app.status(), "Show Mode is on. Return to Edit to make changes.");
    EXPECT_EQ(desktop.beepCount, 1);
    app.undo();
    EXPECT_EQ(app.show()->title, "Gala night");
    EXPECT_FALSE(app.agentUndo());
    EXPECT_EQ(app.agentEdit(edit::SetTitle{"Other", ""}),
              "Show Mode is on. Return to Edit to make changes.");
    EXPECT_EQ(desktop.beepCount, 2) << "every refused edit beeps, the same words or not";

    app.perform(command::Go{});
    EXPECT_EQ(app.engine()->state().running.size(), 1u);

    app.setLocked(false);
    EXPECT_EQ(app.status(), "Edit — changes apply live");
    EXPECT_TRUE(app.agentUndo());
    EXPECT_EQ(app.show()->title, "Gala");
}

TEST_F(AppModelEditTest, ASongBecomesADeckAndACueOrNothingWhenItsSlidesFail) {
    AppModel& app = start();
    app.newShow(ShowTemplate::blank, "Service");
    const Song song = Song::parsing("Title: Morning\n\n[Verse]\nLine one\nLine two\n", LyricLook::overBackground, 2);

    slidePages.failure = "The slide picture couldn't be saved.";
    app.addSong(song);
    EXPECT_EQ(app.status(), "Couldn't make the song's slides: The slide picture couldn't be saved.");
    EXPECT_TRUE(app.show()->library.empty());

    slidePages.failure.reset();
    ASSERT_TRUE(app.addSong(song));
    ASSERT_EQ(app.show()->library.size(), 1u);
    const MediaItem& item = app.show()->library[0];
    EXPECT_EQ(item.fileName, "made");
    EXPECT_EQ(item.deck->pages.size(), item.deck->made->size()) << "drawn before it went in";
    EXPECT_EQ(app.status(), "Added Morning");
}

// Pages are drawn in the background: the deck keeps its old pages until the
// new ones are all written, a newer change supersedes an unfinished one but
// builds on it, and closing the show drops what is left.
TEST_F(AppModelEditTest, SlidesRedrawInTheBackgroundAndGoInAsOneStep) {
    AppModel& app = start();
    app.newShow(ShowTemplate::blank, "Service");
    const Song song = Song::parsing("Title: Morning\n\n[Verse]\nOne\nTwo\n", LyricLook::overBackground, 1);
    app.addSong(song);
    const MediaItem before = app.show()->library[0];
    const std::size_t steps = app.history().undoStack().size();

    slidePages.holdsDraws = true;
    ASSERT_TRUE(app.updateSlides(before.id, [](auto& slides) { slides[0].notes = "first"; }));
    ASSERT_TRUE(app.updateSlides(before.id, [](auto& slides) { slides[1].notes = "second"; }));
    EXPECT_EQ(*app.show()->media(before.id), before) << "old pages until drawn";
    EXPECT_EQ(app.status(), AppModel::drawingPagesStatus);
    EXPECT_TRUE(app.isDrawingPages());

    slidePages.finishDraws();
    const DeckInfo& deck = *app.show()->media(before.id)->deck;
    EXPECT_EQ(deck.notes, (std::vector<std::string>{"first", "second"})) << "the later change built on the first";
    EXPECT_EQ(app.history().undoStack().size(), steps + 1) << "the superseded draw went nowhere";
    EXPECT_EQ(app.status(), "");

    // An agent's draw still under way when the show closes is told why.
    std::string abandoned;
    bool drawn = false;
    app.drawPages(*app.show()->media(before.id), [&drawn](DrawnPages) { drawn = true; },
                  [&abandoned](const std::string& reason) { abandoned = reason; });
    app.close();
    slidePages.finishDraws();
    EXPECT_FALSE(drawn);
    EXPECT_EQ(abandoned, "The show was closed before the slides' pictures were drawn.");
    EXPECT_FALSE(app.isDrawingPages());
}

} // namespace
} // namespace velarion::testing
