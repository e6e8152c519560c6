// Edits, undo and redo reaching the engine, Show Mode, new cues, songs and
// the slide editors that follow their decks.

#include "AppModelFixture.h"

#include "Live/MIDISettingsJson.h"
#include "Live/ports/ManualMIDIInput.h"
#include "LiveModel/ShowEdit.h"

#include <fstream>

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

// Moving a moment up or down the run of show and flipping "start together",
// as the console asks for them: words, selection, undo and refusals.
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

// MIDI control inside the application model: bindings come from the
// computer's preferences, a bound button plays the show, and a learnt one
// is written back.
class AppModelMIDITest : public AppModelFixture {
protected:
    AppModel& startWithMIDI(const std::string& preferencesJson) {
        std::filesystem::create_directories(preferencesFile().parent_path());
        std::ofstream(preferencesFile()) << preferencesJson;
        preferences = std::make_unique<Preferences>(preferencesFile());
        AppPorts ports{scheduler, players, images, cards, slides, nullptr, outputs, slidePages,
                       desktop, folders, writer, application, *preferences};
        ports.makeMIDIInput = [this] {
            auto made = std::make_unique<ManualMIDIInput>(scheduler);
            input = made.get();
            return made;
        };
        model = std::make_unique<AppModel>(ports);
        model->startMIDI();
        return *model;
    }
    void press(std::vector<std::uint8_t> bytes) {
        input->send(bytes);
        scheduler.runDue();
    }

    ManualMIDIInput* input = nullptr;
};

TEST_F(AppModelMIDITest, ASavedButtonPlaysTheShowAndALearntOneIsKept) {
    AppModel& app = startWithMIDI(
        R"({"live.midi": {"isEnabled": true, "bindings": [{"action": "go", "trigger": {"note": {"channel": 1, "note": 60}}}]}})");
    ASSERT_NE(input, nullptr);
    app.openShow(savePackage(showWithCues("Service", {"Welcome", "Song"}), "Service"));
    press({0x90, 60, 100});
    EXPECT_EQ(app.engine()->state().lastFiredCueID, cueNamed("Welcome").id);

    app.midi().learn(MIDIAction::panic);
    press({0xB0, 64, 127});
    EXPECT_EQ(app.status(), "Panic is now Controller 64 on channel 1");
    const Preferences reread(preferencesFile());
    EXPECT_EQ(midiSettingsFromJson(reread.value(preferenceKeys::midi)).trigger(MIDIAction::panic),
              MIDITrigger(midi::ControlChangeTrigger{1, 64}));
}

} // namespace
} // namespace velarion::testing
