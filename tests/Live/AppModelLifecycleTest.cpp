// Loading and organizing, the session key and crash reopening, closing,
// the scratch shows, copies for another computer, and quitting.

#include "AppModelFixture.h"

#include "LiveAgentKit/AgentFailure.h"
#include "LiveModel/ShowEdit.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

namespace velarion::testing {
namespace {

using AppModelLifecycleTest = AppModelFixture;
namespace fs = std::filesystem;

TEST_F(AppModelLifecycleTest, AnOpenShowHoldsTheSessionKeyAndKeepsTheComputerAwake) {
    AppModel& app = start();
    app.newShow(ShowTemplate::presentation, "Keynote");
    EXPECT_EQ(preferences->value(preferenceKeys::openShow), app.package()->url().string());
    EXPECT_EQ(desktop.awakeCount(), 1);
    EXPECT_EQ(desktop.awakeReasons.back(), "A Velarion show is open");

    app.newShow(ShowTemplate::blank, "Second");
    EXPECT_EQ(desktop.awakeCount(), 1) << "one activity for as long as shows are open";

    app.close();
    EXPECT_FALSE(preferences->stored(preferenceKeys::openShow));
    EXPECT_EQ(desktop.awakeCount(), 0);

    // A snapshot run leaves neither behind.
    model.reset();
    AppModel& snapshot = start({.isSnapshotRun = true});
    snapshot.newShow(ShowTemplate::blank, "Picture");
    EXPECT_FALSE(preferences->stored(preferenceKeys::openShow));
    EXPECT_EQ(desktop.awakeCount(), 0);
}

TEST_F(AppModelLifecycleTest, RecoveryReopensTheShowWithNothingPlayingAndSaysSo) {
    const fs::path location = savePackage(showWithCues("Gala", {"Welcome"}), "Gala");
    AppModel& first = start();
    first.openShow(location);
    first.perform(command::Go{});
    model.reset(); // a crash: the key stays

    AppModel& app = start();
    app.recoverAfterUnexpectedQuit();
    ASSERT_TRUE(app.show());
    EXPECT_EQ(app.package()->url(), location);
    EXPECT_TRUE(app.engine()->state().running.empty());
    EXPECT_EQ(app.status(), AppModel::recoveredWarning);
    EXPECT_TRUE(engineLogged(AppModel::recoveredWarning));

    app.prepareToQuit();
    EXPECT_FALSE(preferences->stored(preferenceKeys::openShow));
    model.reset();
    AppModel& orderly = start();
    orderly.recoverAfterUnexpectedQuit();
    EXPECT_FALSE(orderly.show()) << "an orderly end leaves nothing to recover";
}

TEST_F(AppModelLifecycleTest, RecoveryGivesWayToAShowOpenedAtLaunchAndReportsABrokenPackage) {
    const fs::path crashed = savePackage(showWithCues("Crashed", {}), "Crashed");
    start().openShow(crashed);
    model.reset();

    AppModel& app = start();
    app.openShow(savePackage(showWithCues("Asked for", {}), "Asked"));
    app.recoverAfterUnexpectedQuit();
    EXPECT_EQ(app.show()->title, "Asked for");
    EXPECT_EQ(app.status(), "Opened Asked");

    model.reset();
    std::ofstream(crashed / "show.json") << "{ not json";
    AppModel& broken = start();
    preferences->set(preferenceKeys::openShow, crashed.string());
    broken.recoverAfterUnexpectedQuit();
    EXPECT_FALSE(broken.show());
    EXPECT_TRUE(broken.status().starts_with("Couldn't reopen the last show: The show couldn't be read: "))
        << broken.status();
}

TEST_F(AppModelLifecycleTest, LoadingTidiesTheShowNamesItsMediaAndDrawsItsDecksBeforeItIsUsed) {
    Show show = showWithCues("Old", {});
    const MediaItem flat{Uuid::random(), MediaKind::image, Uuid::random().text(), "logo.png"};
    MediaItem made{Uuid::random(), MediaKind::deck, "Welcome", "made"};
    made.deck = DeckInfo{};
    made.deck->made = std::vector<MadeSlide>{MadeSlide{Uuid::random(), MadeSlide::Layout::title, "Hello"}};
    show.library = {flat, made};
    const fs::path location = savePackage(show, "Old");
    std::ofstream(location / "Media" / "logo.png") << "png";

    AppModel& app = start();
    app.openShow(location);
    const Show& loaded = *app.show();
    EXPECT_EQ(loaded.library[0].fileName, "Images/logo.png");
    EXPECT_EQ(loaded.library[0].name, "Image");
    EXPECT_EQ(loaded.library[1].deck->pages.size(), 1u);
    EXPECT_EQ(slidePages.pruneCount, 1);
    EXPECT_EQ(ShowPackage(location).open(), loaded) << "what was organized is on disk";
    EXPECT_FALSE(fs::exists(location / "Media" / "logo.png")) << "the old copy goes once saved";
    EXPECT_FALSE(app.isDirty());
}

TEST_F(AppModelLifecycleTest, ACopyForAnotherComputerCountsItsFilesAndNamesWhatIsMissing) {
    Show show = showWithCues("Tour", {});
    show.library = {MediaItem{Uuid::random(), MediaKind::image, "Logo", "Images/Logo.png"},
                    MediaItem{Uuid::random(), MediaKind::video, "Intro", "Video/Intro.mov"}};
    const fs::path location = savePackage(show, "Tour");
    fs::create_directories(location / "Media" / "Images");
    std::ofstream(location / "Media" / "Images" / "Logo.png") << std::string(1500, 'x');

    AppModel& app = start();
    app.openShow(location);
    EXPECT_EQ(app.collectSuggestedName(), "Tour (for another computer).velarion");
    const auto collected = app.collectForAnotherMac(folders.showsFolder() / "Tour copy.velarion");
    ASSERT_TRUE(collected);
    EXPECT_EQ(collected->alert.title, "Copied, with files missing");
    EXPECT_EQ(collected->alert.text,
              "2 files, 2 KB, saved as Tour copy.velarion.\n\nMissing: Intro. Use Find it in the "
              "Ready check to put them back.");
    EXPECT_EQ(app.package()->url(), location) << "the operator stays in the open package";

    const MediaItem intro = app.show()->library[1];
    const fs::path found = temp / "Intro.mov";
    std::ofstream(found) << "movie";
    EXPECT_EQ(AppModel::findMissingPrompt(intro), "Find \u201CIntro\u201D");
    ASSERT_TRUE(app.findMissing(intro.id, found));
    EXPECT_EQ(app.status(), "Found Intro");
    EXPECT_EQ(app.show()->media(intro.id)->fileName, "Video/Intro.mov");

    const auto complete = app.collectForAnotherMac(folders.showsFolder() / "Tour copy.velarion");
    EXPECT_EQ(complete->alert.title, "Ready for another computer");
}

TEST_F(AppModelLifecycleTest, QuittingAsksWhileCuesRunAndTheAgentQuitsWithoutAsking) {
    AppModel& app = start();
    const fs::path location = savePackage(showWithCues("Gala", {"Welcome"}), "Gala");
    app.openShow(location);
    EXPECT_FALSE(app.quitQuestion());
    app.perform(command::Go{});
    const auto question = app.quitQuestion();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->title, "Quit while the show is running?");
    EXPECT_EQ(question->text,
              "1 cue is playing. The audience screens will go dark and all sound will stop.");
    EXPECT_EQ(question->buttons, (std::vector<std::string>{"Keep Running", "Quit"}));

    application.failsRelaunch = true;
    app.agentQuit(true);
    EXPECT_EQ(application.terminateCount, 1) << "a failed relaunch doesn't stop the quit";
    application.failsRelaunch = false;
    app.agentQuit(true);
    EXPECT_EQ(application.relaunches, (std::vector<std::optional<fs::path>>{location}));
    EXPECT_FALSE(app.quitQuestion());

    app.edit(edit::SetTitle{"Gala, last", ""});
    app.finishQuit();
    EXPECT_EQ(ShowPackage(location).open().title, "Gala, last");
    EXPECT_EQ(app.engine(), nullptr);
    EXPECT_FALSE(preferences->stored(preferenceKeys::openShow));
}

TEST_F(AppModelLifecycleTest, TheAgentMakesOpensAndSavesShowsInItsOwnWords) {
    AppModel& app = start();
    EXPECT_EQ(app.allowedTiers(), (std::set<AgentTier>{AgentTier::observe}));

    app.agentNewShow("Panel night", ShowTemplate::panel, std::nullopt);
    EXPECT_EQ(app.show()->title, "Panel night");
    try {
        app.agentSaveShow(std::nullopt);
        FAIL() << "a scratch show needs a path";
    } catch (const AgentFailure& failure) {
        EXPECT_EQ(failure.message,
                  "This show hasn't been saved to a file yet. Give a path, such as ~/Documents/"
                  "Velarion Shows/Name.velarion.");
    }
    const fs::path saved = folders.showsFolder() / "Panel.velarion";
    app.agentSaveShow(saved);
    EXPECT_EQ(app.package()->url(), saved);

    EXPECT_THROW(app.agentNewShow("  Spaced  ", ShowTemplate::blank, std::nullopt), AgentFailure);
    EXPECT_THROW(app.agentOpenShow(temp / "missing.velarion"), AgentFailure);
}

struct NullSink final : SceneSink {
    void sceneChanged(const OutputScene&, const SceneSurfaces&, double) override {}
};

TEST_F(AppModelFixture, ScreenToolsReachTheShowsOutputsAndRefusalsReachTheStatus) {
    AppModel& app = start();
    const auto mirror = std::make_shared<NullSink>();
    app.addMirror(mirror);
    app.newShow(ShowTemplate::blank, "Screens");
    RecordingOutputManager& first = *outputs.latest;
    EXPECT_EQ(first.mirrors.size(), 1u);

    first.refusal = "Screen tests are unavailable while Safe Slide or Panic is active.";
    app.setTestPattern("a", OutputTestPattern::grid);
    EXPECT_EQ(app.status(), first.refusal);
    app.selectProgramOutput("b");
    EXPECT_EQ(first.programOutputSelection(), std::optional<std::string>("b"));

    // No test window in the setup: the preview's offer adds one and opens it.
    EXPECT_TRUE(app.offersTestWindow());
    app.openAudienceTestWindow();
    const auto screens = app.show()->outputs.effectiveScreens();
    EXPECT_TRUE(std::any_of(screens.begin(), screens.end(),
                            [](const LogicalScreen& screen) { return screen.id == "test-window"; }));
    EXPECT_TRUE(app.testWindowIsVisible("test-window"));
    EXPECT_FALSE(app.offersTestWindow());

    app.newShow(ShowTemplate::blank, "Next"); // the mirror follows the next show's outputs
    EXPECT_EQ(outputs.latest->mirrors.size(), 1u);
}

// The application's import: copies on the import thread, items and cues on
// the main loop, one alert for the files that didn't make it.
using AppModelImportTest = AppModelFixture;

// Turns the main loop until the import has come back.
void waitForImport(AppModel& model, VirtualScheduler& scheduler) {
    for (int turn = 0; turn < 2000 && model.isImporting(); ++turn) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        scheduler.runDue();
    }
    ASSERT_FALSE(model.isImporting());
}

TEST_F(AppModelImportTest, FilesBecomeItemsAndCuesAtTheDropPointAsOneStep) {
    AppModel& app = start();
    app.openShow(savePackage(showWithCues("Gala", {"Welcome", "Close"}), "Gala"));
    for (const char* name : {"Walk in.mp3", "Opener.mov", "readme.txt"}) std::ofstream(home / name) << name;
    const Uuid before = cueNamed("Close").id;
    const std::size_t undoSteps = app.history().undoStack().size();

    app.importFiles({home / "Walk in.mp3", home / "Opener.mov", home / "readme.txt"}, true,
                    CueInsertionPoint{app.show()->sections[0].id, before});
    EXPECT_EQ(app.status(), "Importing 3 files");
    const std::optional<Uuid> running = app.importRequestID();
    app.importFiles({home / "Opener.mov"}, false); // one import at a time
    EXPECT_EQ(app.importRequestID(), running);
    waitForImport(app, scheduler);

    std::vector<std::string> names;
    for (const Cue& cue : app.show()->sections[0].cues) names.push_back(cue.name);
    EXPECT_EQ(names, (std::vector<std::string>{"Welcome", "Walk in", "Opener", "Close"}));
    EXPECT_EQ(app.show()->library.size(), 2u);
    EXPECT_EQ(app.history().undoStack().size(), undoSteps + 3); // two items, one block of cues
    EXPECT_EQ(app.selectedCueID(), cueNamed("Opener").id);
    EXPECT_EQ(app.status(), "1 file(s) couldn't be imported");
    ASSERT_TRUE(app.importAlert());
    EXPECT_EQ(app.importAlert()->title, "Some files couldn't be imported");
    EXPECT_EQ(app.importAlert()->text, "readme.txt: readme.txt isn't a file Velarion can play.");
}

TEST_F(AppModelImportTest, AnImportFinishingAfterAnotherShowOpenedAddsNothing) {
    AppModel& app = start();
    app.openShow(savePackage(showWithCues("First", {"A"}), "First"));
    std::ofstream(home / "Clip.mov") << "clip";
    app.importFiles({home / "Clip.mov"}, true);
    app.openShow(savePackage(showWithCues("Second", {"B"}), "Second"));
    for (int turn = 0; turn < 200; ++turn) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        scheduler.runDue();
    }
    EXPECT_TRUE(app.show()->library.empty());
    EXPECT_FALSE(app.isImporting());
    EXPECT_FALSE(app.importProgress());
}

} // namespace
} // namespace velarion::testing
