// `velarion --headless` as a process in a temporary home: a signal quits it
// in order, and a kill is followed by a start that reopens the show with
// nothing playing and says so.

#include "ChildProcess.h"
#include "PrivateSoundServer.h"
#include "TempFolder.h"

#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveModel/ShowPackage.h"
#include "LiveModel/ShowTemplate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

namespace velarion::testing {
namespace {

using Clock = std::chrono::steady_clock;

// One run of the application in a home of its own; "Edited N" lines are
// timed as they are read.
class Velarion : public ChildProcess {
public:
    Velarion(const std::filesystem::path& home, const std::vector<std::string>& arguments)
        : ChildProcess(VELARION_EXECUTABLE, arguments,
                       {{"HOME", home.string()},
                        {"XDG_CONFIG_HOME", (home / "config").string()},
                        {"XDG_DATA_HOME", (home / "data").string()},
                        {"XDG_DOCUMENTS_DIR", (home / "Documents").string()},
                        {"VELARION_AGENT_SOCKET", (home / "agent.sock").string()},
                        {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}}) {}

    bool waitForLine(const std::string& prefix, double seconds = 15) {
        const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
        for (;;) {
            for (; checked_ < lines().size(); ++checked_)
                if (lines()[checked_].starts_with(prefix)) return ++checked_, true;
            const double left = std::chrono::duration<double>(deadline - Clock::now()).count();
            const std::optional<std::string> line = left > 0 ? readLine(left) : std::nullopt;
            if (!line) return false;
            if (line->starts_with("Edited ")) editTimes_[std::stoi(line->substr(7))] = Clock::now();
        }
    }
    bool saw(const std::string& line) const { return std::ranges::find(lines(), line) != lines().end(); }
    bool sawPrefix(const std::string& prefix) const {
        return std::ranges::any_of(lines(), [&](const std::string& line) { return line.starts_with(prefix); });
    }
    // The number of the last "Edited N" line, and when it was read.
    // An edit read only after the end is timed at the end of time.
    int lastEdit() const {
        for (auto line = lines().rbegin(); line != lines().rend(); ++line)
            if (line->starts_with("Edited ")) return std::stoi(line->substr(7));
        return 0;
    }
    Clock::time_point editTime(int n) const {
        const auto found = editTimes_.find(n);
        return found == editTimes_.end() ? Clock::time_point::max() : found->second;
    }

private:
    std::size_t checked_ = 0;
    std::map<int, Clock::time_point> editTimes_;
};

class VelarionProcess : public ::testing::Test {
protected:
    void SetUp() override {
        std::string whyNot;
        sound = PrivateSoundServer::start(whyNot);
        if (!sound) GTEST_SKIP() << "No sound server could start here: " << whyNot;
        package = ShowPackage::create(home / "Documents" / "Service.velarion",
                                      showTemplate::make(ShowTemplate::conference, "Sunday service"));
    }
    std::string title() const { return ShowPackage(package.url()).open().title; }
    std::string preferences() const {
        std::ifstream in(home / "config" / "Velarion" / "preferences.json");
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }

    std::unique_ptr<PrivateSoundServer> sound;
    TempFolder home{"velarion-home"};
    ShowPackage package{""};
};

TEST_F(VelarionProcess, ASignalQuitsInOrder) {
    Velarion app(home.path(), {"--headless", "--allow-agent=run,edit", package.url().string(), "--test-edit-burst"});
    ASSERT_TRUE(app.waitForLine("Edited 11")) << app.transcript();
    EXPECT_NE(preferences().find("live.session.openShow"), std::string::npos) << "a show is open";
    EXPECT_TRUE(app.saw("Agent may run the show: yes; build and edit shows: yes")) << app.transcript();
    EXPECT_NE(preferences().find("\"live.agent.edit\": true"), std::string::npos) << "kept for the next start";
    app.signal(SIGTERM);
    EXPECT_EQ(app.wait(), 0) << app.transcript();
    EXPECT_TRUE(app.saw("Quit")) << app.transcript();
    EXPECT_EQ(title(), "Burst " + std::to_string(app.lastEdit())) << "the last save has every edit";
    EXPECT_EQ(preferences().find("live.session.openShow"), std::string::npos) << "no recovery key is left";
}

TEST_F(VelarionProcess, AKillLosesAtMostTheUnsavedBurstAndTheNextStartReopensTheShow) {
    {
        Velarion app(home.path(), {"--headless", package.url().string(), "--test-edit-burst"});
        ASSERT_TRUE(app.waitForLine("Edited 20")) << app.transcript();
        app.signal(SIGKILL);
        const auto killed = Clock::now();
        app.wait();
        const int made = app.lastEdit();
        const int kept = std::stoi(title().substr(6));
        // Every edit that was followed by 0.8 s of quiet had been written.
        int settled = 0;
        for (int n = 8; n <= made; n += 8)
            if (app.editTime(n) < killed - std::chrono::milliseconds(1100)) settled = n;
        EXPECT_GE(kept, settled) << app.transcript();
        EXPECT_LE(kept, made);
        EXPECT_LE(made - kept, 8) << "at most the burst under way is lost";
    }
    EXPECT_NE(preferences().find("live.session.openShow"), std::string::npos) << "the key is left by a kill";

    Velarion again(home.path(), {"--headless"});
    ASSERT_TRUE(again.waitForLine("Open: " + package.url().string())) << again.transcript();
    ASSERT_TRUE(again.waitForLine("Log: warning: Velarion quit unexpectedly and reopened this show. Nothing is "
                                  "playing — check the screens, then GO from Next."))
        << again.transcript();
    EXPECT_TRUE(again.sawPrefix("Status: Velarion quit unexpectedly and reopened this show."));
    EXPECT_FALSE(again.sawPrefix("Log: fired:")) << "nothing plays";
    again.signal(SIGINT);
    EXPECT_EQ(again.wait(), 0);
}

// restart_app through the real process: the answer comes first, the process
// quits in order, and a new one opens the same show with agent control up.
TEST_F(VelarionProcess, RestartAppComesBackWithTheSameShow) {
    Velarion app(home.path(), {"--headless", "--allow-agent=run", package.url().string()});
    ASSERT_TRUE(app.waitForLine("Open: ")) << app.transcript();
    const std::string socket = (home / "agent.sock").string();
    const AgentResponse restarting = AgentSocketClient(socket).call("restart_app", JSONValue::Object{}, 5);
    ASSERT_TRUE(restarting.ok) << restarting.error.value_or("");
    EXPECT_EQ(app.wait(), 0) << app.transcript();

    std::optional<AgentResponse> shown;
    const auto deadline = Clock::now() + std::chrono::seconds(30);
    while (!shown && Clock::now() < deadline) {
        try {
            shown = AgentSocketClient(socket).call("get_show", JSONValue::Object{}, 5);
        } catch (const std::exception&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
    }
    ASSERT_TRUE(shown && shown->ok) << "the new process never answered";
    EXPECT_EQ((*shown->result)["file"]->stringValue(), package.url().string());
    AgentSocketClient last(socket);
    const AgentResponse quitting = last.call("quit_app", JSONValue::Object{{"force", true}}, 5);
    EXPECT_TRUE(quitting.ok) << quitting.error.value_or("");
    EXPECT_TRUE(last.waitForHangUp(15)) << "the new process quits in its turn";
}

} // namespace
} // namespace velarion::testing
