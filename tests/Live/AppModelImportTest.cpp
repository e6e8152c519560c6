// The application's import: copies on the import thread, items and cues on
// the main loop, one alert for the files that didn't make it.

#include "AppModelFixture.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace velarion::testing {
namespace {

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
