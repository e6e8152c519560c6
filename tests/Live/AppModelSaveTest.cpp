// Autosave, opening and saving, on real packages in a temporary home.

#include "AppModelFixture.h"
#include "ChildProcess.h"

#include "LiveModel/ShowEdit.h"

#include <fstream>
#include <sstream>

namespace velarion::testing {
namespace {

using AppModelSaveTest = AppModelFixture;
namespace fs = std::filesystem;

edit::SetTitle titled(const std::string& title) {
    return edit::SetTitle{title, ""};
}

TEST_F(AppModelSaveTest, EditsMoveTheAutosaveAlongAndOneWriteFollowsTheLast) {
    const Show show = showWithCues("Gala", {"Welcome"});
    AppModel& app = start();
    app.openShow(savePackage(show, "Gala"));
    const double openedAt = *app.lastSavedWallSeconds();

    for (int i = 1; i <= 10; ++i) {
        ASSERT_TRUE(app.edit(titled("Gala " + std::to_string(i))));
        scheduler.advance(0.7);
        EXPECT_EQ(writer.queuedCount(), 0u) << "written after edit " << i;
    }
    EXPECT_TRUE(app.isDirty());
    scheduler.advance(0.1 - 1e-9);
    EXPECT_EQ(writer.queuedCount(), 0u);
    scheduler.advance(2e-9);
    ASSERT_EQ(writer.queuedCount(), 1u);

    // The main loop has moved on: only the writer's result clears the flag.
    EXPECT_TRUE(app.isDirty());
    writer.finishWrites();
    scheduler.runDue();
    ASSERT_EQ(writer.written.size(), 1u);
    EXPECT_EQ(writer.written[0].title, "Gala 10");
    EXPECT_EQ(ShowPackage(app.package()->url()).open().title, "Gala 10");
    EXPECT_FALSE(app.isDirty());
    EXPECT_GT(*app.lastSavedWallSeconds(), openedAt);
}

TEST_F(AppModelSaveTest, AnEditDuringTheWriteKeepsTheShowDirtyAndAFailureSaysSo) {
    AppModel& app = start();
    app.newShow(ShowTemplate::blank, "Show");

    app.edit(titled("First"));
    scheduler.advance(AppModel::autosaveDelaySeconds);
    app.edit(titled("Second")); // while the first snapshot is being written
    writer.finishWrites();
    scheduler.runDue();
    EXPECT_TRUE(app.isDirty());

    writer.failure = "No space left on device";
    autosaveNow();
    EXPECT_EQ(app.status(), "Autosave failed: No space left on device");
    EXPECT_TRUE(app.isDirty());

    writer.failure.reset();
    app.edit(titled("Third"));
    autosaveNow();
    EXPECT_FALSE(app.isDirty());
    EXPECT_EQ(app.status(), "") << "a failure that no longer holds isn't left standing";
}

TEST_F(AppModelSaveTest, ClosingOrLoadingRightAfterAnEditStillWritesIt) {
    AppModel& app = start();
    app.newShow(ShowTemplate::blank, "Show");
    const ShowPackage first = *app.package();
    app.edit(titled("Last words"));
    app.close();
    writer.finishWrites();
    EXPECT_EQ(first.open().title, "Last words");

    app.openShow(savePackage(showWithCues("A", {"One"}), "A"));
    app.edit(titled("A edited"));
    app.newShow(ShowTemplate::blank, "B");
    writer.finishWrites();
    scheduler.runDue();
    EXPECT_EQ(ShowPackage(folders.showsFolder() / "A.velarion").open().title, "A edited");
    EXPECT_EQ(app.show()->title, "B");
    EXPECT_FALSE(app.isDirty()) << "the old show's write says nothing about the new one";
}

TEST_F(AppModelSaveTest, AShowThatCantBeOpenedLeavesTheOpenOneAndTheLeavingShowIsSaved) {
    AppModel& app = start();
    app.openShow(savePackage(showWithCues("Gala", {"Welcome"}), "Gala"));
    app.edit(titled("Gala edited"));

    fs::create_directories(folders.showsFolder() / "Empty.velarion");
    EXPECT_THROW(app.openShow(folders.showsFolder() / "Empty.velarion"), ShowPackageError);
    EXPECT_EQ(app.show()->title, "Gala edited");
    EXPECT_EQ(ShowPackage(folders.showsFolder() / "Gala.velarion").open().title, "Gala")
        << "nothing is written by a failed open";

    app.openShow(savePackage(showWithCues("Other", {"X"}), "Other"));
    EXPECT_EQ(ShowPackage(folders.showsFolder() / "Gala.velarion").open().title, "Gala edited");
    EXPECT_EQ(app.status(), "Opened Other");
    EXPECT_EQ(outputs.madeCount, 2);
}

TEST_F(AppModelSaveTest, SaveAsOntoAnotherShowReplacesIt) {
    AppModel& app = start();
    const fs::path other = savePackage(showWithCues("Other", {"X"}), "Other");
    fs::create_directories(other / "Media" / "Video");
    std::ofstream(other / "Media" / "Video" / "old.mov") << "old";

    app.newShow(ShowTemplate::blank, "Untitled show");
    const fs::path scratch = app.package()->url();
    app.saveAs(other);

    EXPECT_EQ(app.package()->url(), other);
    EXPECT_FALSE(fs::exists(other / "Media" / "Video" / "old.mov"));
    EXPECT_FALSE(fs::exists(scratch)) << "the scratch package goes once copied";
    EXPECT_EQ(app.show()->title, "Other") << "the template's title takes the file's name";
    EXPECT_EQ(app.status(), "Saved as Other");
    EXPECT_EQ(app.recents().front(), other);
    EXPECT_EQ(preferences->value(preferenceKeys::openShow), other.string());
}

TEST_F(AppModelSaveTest, SaveAsksForAPlaceForAScratchShow) {
    AppModel& app = start();
    app.newShow(ShowTemplate::blank, "Show");
    EXPECT_EQ(app.save(), SaveOutcome::needsLocation);

    const fs::path location = savePackage(showWithCues("Gala", {}), "Gala");
    app.openShow(location);
    app.edit(titled("Gala two"));
    EXPECT_EQ(app.save(), SaveOutcome::saved);
    EXPECT_FALSE(app.isDirty());
    EXPECT_EQ(ShowPackage(location).open().title, "Gala two");
}

TEST_F(AppModelSaveTest, RecentsHoldEightStandardizedPathsNewestFirstWithoutVanishedOnes) {
    std::vector<fs::path> locations;
    for (int i = 0; i < 10; ++i)
        locations.push_back(savePackage(showWithCues("Show " + std::to_string(i), {}), "S" + std::to_string(i)));
    AppModel& app = start();
    for (const fs::path& location : locations) app.openShow(location);
    app.openShow(folders.showsFolder() / "sub" / ".." / "S5.velarion");

    ASSERT_EQ(app.recents().size(), AppModel::recentsLimit);
    EXPECT_EQ(app.recents()[0], locations[5]);
    EXPECT_EQ(app.recents()[1], locations[9]);
    EXPECT_EQ(std::count(app.recents().begin(), app.recents().end(), locations[5]), 1);

    app.close();
    model.reset();
    fs::remove_all(locations[9]);
    AppModel& again = start();
    EXPECT_EQ(again.recents().size(), AppModel::recentsLimit - 1);
    EXPECT_EQ(preferences->value(preferenceKeys::recents).size(), AppModel::recentsLimit - 1);
}

// A disk that fills part-way through a write: the write comes up short, the
// old file stays whole, and the status line says what happened.
TEST_F(AppModelSaveTest, AFullDiskKeepsTheOldShowAndTheOldSettings) {
    const fs::path gala = savePackage(showWithCues("Gala", {"Welcome"}), "Gala");
    AppModel& app = start();
    app.setAgentMayEdit(true);
    app.openShow(gala);
    const auto showBytes = static_cast<long>(fs::file_size(gala / "show.json"));
    ASSERT_TRUE(app.edit(titled(std::string(static_cast<std::size_t>(showBytes), 'x'))));

    EXPECT_EQ(runInForkedChild([&] {
                  limitFileSizeBytes(showBytes);
                  app.save();
                  return app.status();
              }),
              "Couldn't save: File too large");
    EXPECT_EQ(ShowPackage(gala).open().title, "Gala");

    const auto settingsBytes = static_cast<long>(fs::file_size(preferencesFile()));
    EXPECT_EQ(runInForkedChild([&] {
                  limitFileSizeBytes(settingsBytes);
                  app.setAgentMayRun(true);
                  return app.status() + (app.agentMayRun() ? " (on for now)" : "");
              }),
              "Couldn't save the settings: File too large (on for now)");
    const Preferences reread(preferencesFile());
    EXPECT_FALSE(reread.wasDamaged());
    EXPECT_TRUE(reread.value(preferenceKeys::agentEdit));
    EXPECT_FALSE(reread.value(preferenceKeys::agentRun));
}

// One show package, one Velarion process: a second process is refused with a
// sentence and can't replace the package under the first; a crash leaves no
// lock behind. Each second process is a real forked one, which ends without
// closing its show.
using AppModelPackageLockTest = AppModelFixture;
const std::string inUse = "This show is open in another Velarion window.";

TEST_F(AppModelPackageLockTest, ASecondProcessIsRefusedUntilTheFirstCloses) {
    const auto gala = savePackage(showWithCues("Gala", {"Welcome"}), "Gala");
    const auto other = savePackage(showWithCues("Other", {"Hello"}), "Other");
    AppModel& app = start();
    app.openShow(gala);

    const auto openInChild = [&](const std::filesystem::path& location) {
        return runInForkedChild([&] {
            AppModel& second = start();
            try {
                second.openShow(location);
            } catch (const std::exception& error) {
                return std::string(error.what());
            }
            return second.show()->title;
        });
    };
    EXPECT_EQ(openInChild(gala), inUse);
    // Nor may it replace the open package by saving another show over it.
    EXPECT_EQ(runInForkedChild([&] {
                  AppModel& second = start();
                  second.openShow(other);
                  second.saveAsFromPanel(gala);
                  return second.status();
              }),
              "Couldn't save: " + inUse);
    EXPECT_EQ(ShowPackage(gala).open().title, "Gala");

    app.openShow(other);
    EXPECT_EQ(openInChild(gala), "Gala") << "opening another show lets the first go";
    EXPECT_EQ(openInChild(other), inUse);
    app.close();
    EXPECT_EQ(openInChild(other), "Other");
    // That child ended with the show still open, as a crash would: no lock is left.
    app.openShow(other);
    EXPECT_EQ(app.show()->title, "Other");
}

// The preferences file: types, defaults, damage and atomic writes.

class PreferencesTest : public AppModelFixture {
protected:
    void writeFile(const std::string& text) {
        fs::create_directories(preferencesFile().parent_path());
        std::ofstream(preferencesFile()) << text;
    }
    std::string fileText() const {
        std::ifstream in(preferencesFile());
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
};

TEST_F(PreferencesTest, ADamagedFileReadsAsDefaultsAndStaysUntilAKeyIsSet) {
    const std::string damaged = R"({"live.agent.run": true, )";
    writeFile(damaged);
    {
        Preferences preferences(preferencesFile());
        EXPECT_TRUE(preferences.wasDamaged());
        EXPECT_FALSE(preferences.value(preferenceKeys::agentRun));
        EXPECT_TRUE(preferences.remove(preferenceKeys::openShow.name));
    }
    EXPECT_EQ(fileText(), damaged) << "reading and removing an absent key leave it alone";

    AppModel& app = start(); // reads it; writes nothing
    EXPECT_FALSE(app.agentMayRun());
    EXPECT_EQ(fileText(), damaged);
    app.setAgentMayRun(true);
    EXPECT_EQ(nlohmann::json::parse(fileText()), (nlohmann::json{{"live.agent.run", true}}));

    fs::remove(preferencesFile());
    EXPECT_FALSE(Preferences(preferencesFile()).wasDamaged()) << "a missing file is no damage";
}

TEST_F(PreferencesTest, WritesReplaceTheWholeFileAtomicallyAndAFailedOneKeepsTheValue) {
    Preferences preferences(preferencesFile());
    ASSERT_TRUE(preferences.set(preferenceKeys::recents, {"/shows/A.velarion"}));
    ASSERT_TRUE(preferences.set(preferenceKeys::railOrder, "timer,program,preview"));
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(preferencesFile().parent_path()))
        files.push_back(entry.path());
    EXPECT_EQ(files, std::vector<fs::path>{preferencesFile()}) << "no temporary file left behind";
    EXPECT_EQ(Preferences(preferencesFile()).value(preferenceKeys::railOrder), "timer,program,preview");

    // A folder where the file should be: the rename can't replace it.
    Preferences blocked(temp / "blocked" / "preferences.json");
    fs::create_directories(temp / "blocked" / "preferences.json" / "inside");
    EXPECT_FALSE(blocked.set(preferenceKeys::agentRun, true));
    EXPECT_FALSE(blocked.lastWriteError().empty());
    EXPECT_TRUE(blocked.value(preferenceKeys::agentRun)) << "this run goes on with the value";
    EXPECT_TRUE(fs::is_directory(temp / "blocked" / "preferences.json" / "inside"));
}

} // namespace
} // namespace velarion::testing
