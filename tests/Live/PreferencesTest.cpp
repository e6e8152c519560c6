// The preferences file: types, defaults, damage and atomic writes.

#include "AppModelFixture.h"

#include <fstream>
#include <sstream>

namespace velarion::testing {
namespace {

namespace fs = std::filesystem;

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
