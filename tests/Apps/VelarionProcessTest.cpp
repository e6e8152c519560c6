// `velarion --headless` as a process in a temporary home: a signal quits it
// in order, and a kill is followed by a start that reopens the show with
// nothing playing and says so.

#include "PrivateSoundServer.h"
#include "TempFolder.h"

#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveModel/ShowPackage.h"
#include "LiveModel/ShowTemplate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velarion::testing {
namespace {

using Clock = std::chrono::steady_clock;

// One run of the application, its standard output read line by line.
class Velarion {
public:
    Velarion(const std::filesystem::path& home, const std::vector<std::string>& arguments) {
        int out[2];
        if (pipe(out) != 0) throw std::runtime_error("no pipe");
        process_ = fork();
        if (process_ == 0) {
            dup2(out[1], STDOUT_FILENO);
            close(out[0]);
            close(out[1]);
            setenv("HOME", home.c_str(), 1);
            setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
            setenv("XDG_DATA_HOME", (home / "data").c_str(), 1);
            setenv("XDG_DOCUMENTS_DIR", (home / "Documents").c_str(), 1);
            setenv("VELARION_AGENT_SOCKET", (home / "agent.sock").c_str(), 1);
            unsetenv("DBUS_SESSION_BUS_ADDRESS");
            std::vector<char*> argv{const_cast<char*>(VELARION_EXECUTABLE)};
            for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
            argv.push_back(nullptr);
            execv(VELARION_EXECUTABLE, argv.data());
            _exit(127);
        }
        close(out[1]);
        output_ = out[0];
    }
    ~Velarion() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
        close(output_);
    }

    // Reads until a line starting with `prefix` arrives; false after the
    // timeout or at the end of output.
    bool waitForLine(const std::string& prefix, double seconds = 15) {
        const auto deadline = Clock::now() + std::chrono::duration<double>(seconds);
        for (;;) {
            for (; checked_ < lines_.size(); ++checked_)
                if (lines_[checked_].rfind(prefix, 0) == 0) return ++checked_, true;
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0 || !readSome(static_cast<int>(left.count()))) return false;
        }
    }
    bool saw(const std::string& line) const {
        return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
    }
    bool sawPrefix(const std::string& prefix) const {
        return std::any_of(lines_.begin(), lines_.end(), [&](const std::string& line) { return line.rfind(prefix, 0) == 0; });
    }
    // The number of the last "Edited N" line, and when it was read.
    int lastEdit() const { return lastEdit_; }
    Clock::time_point editTime(int n) const { return editTimes_.at(static_cast<std::size_t>(n)); }

    void signal(int number) { kill(process_, number); }
    int wait() {
        int status = 0;
        while (readSome(100)) {
        }
        waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    std::string transcript() const {
        std::string all;
        for (const auto& line : lines_) all += line + "\n";
        return all;
    }

private:
    bool readSome(int timeoutMilliseconds) {
        pollfd ready{output_, POLLIN, 0};
        if (poll(&ready, 1, timeoutMilliseconds) <= 0) return false;
        char chunk[4096];
        const ssize_t count = read(output_, chunk, sizeof chunk);
        if (count <= 0) return false;
        pending_.append(chunk, static_cast<std::size_t>(count));
        for (std::size_t end; (end = pending_.find('\n')) != std::string::npos;) {
            lines_.push_back(pending_.substr(0, end));
            pending_.erase(0, end + 1);
            if (lines_.back().rfind("Edited ", 0) == 0) {
                lastEdit_ = std::stoi(lines_.back().substr(7));
                editTimes_.resize(static_cast<std::size_t>(lastEdit_) + 1);
                editTimes_.back() = Clock::now();
            }
        }
        return true;
    }

    pid_t process_ = -1;
    int output_ = -1;
    std::string pending_;
    std::vector<std::string> lines_;
    std::size_t checked_ = 0;
    int lastEdit_ = 0;
    std::vector<Clock::time_point> editTimes_;
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
            if (app.editTime(n) + std::chrono::milliseconds(1100) < killed) settled = n;
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

TEST_F(VelarionProcess, ARecoveryKeyToADeletedShowIsClearedAndNothingOpens) {
    {
        Velarion app(home.path(), {"--headless", package.url().string()});
        ASSERT_TRUE(app.waitForLine("Open: "));
        app.signal(SIGKILL);
        app.wait();
    }
    std::filesystem::remove_all(package.url());
    Velarion again(home.path(), {"--headless"});
    ASSERT_TRUE(again.waitForLine("No show is open.")) << again.transcript();
    again.signal(SIGTERM);
    EXPECT_EQ(again.wait(), 0);
    EXPECT_EQ(preferences().find("live.session.openShow"), std::string::npos);
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
