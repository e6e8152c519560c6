// Agent control as the application wires it, over the real socket: a song
// still drawing when the show closes is answered in words; one still drawing
// when agent control stops (as at quit) goes in once drawn, its answer
// going nowhere, and nothing it left behind touches the stopped service.

#include "AppModelFixture.h"

#include "Live/AgentControl.h"
#include "Live/AppModelAgentHost.h"
#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveAgentKit/AgentSocketPath.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <thread>

namespace velarion::testing {
namespace {

class AgentControlTest : public AppModelFixture {
protected:
    AgentControlTest() { setenv(agentSocketPath::environmentVariable, (home / "agent.sock").c_str(), 1); }
    ~AgentControlTest() override { unsetenv(agentSocketPath::environmentVariable); }

    // Runs the main loop until `ready` says so, for at most five seconds.
    template <class Ready> bool pumpUntil(Ready ready) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (!ready()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            scheduler.runDue();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return true;
    }
    std::future<AgentResponse> addSong() {
        return std::async(std::launch::async, [path = (home / "agent.sock").string()] {
            AgentSocketClient client(path);
            return client.call("add_song", JSONValue::Object{{"lyrics", "Title: Dawn\n[Verse]\nLight"}}, 5);
        });
    }
};

TEST_F(AgentControlTest, ASongStillDrawingWhenTheShowClosesIsAnsweredInWords) {
    AppModel& app = start();
    app.newShow(ShowTemplate::blank, "Service");
    app.setAgentMayEdit(true);
    slidePages.holdsDraws = true;
    auto host = std::make_shared<AppModelAgentHost>(app, nullptr);
    AgentControl control(app, scheduler, host);
    control.start();

    auto answer = addSong();
    ASSERT_TRUE(pumpUntil([&] { return !slidePages.heldDraws.empty(); }));
    app.close();
    ASSERT_TRUE(pumpUntil([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
    EXPECT_EQ(answer.get().error,
              "Couldn't make the song's slides: The show was closed before the slides' pictures were drawn.");

    slidePages.finishDraws(); // the abandoned one: nothing
    app.newShow(ShowTemplate::blank, "Evening");
    auto unanswered = addSong();
    ASSERT_TRUE(pumpUntil([&] { return !slidePages.heldDraws.empty(); }));
    control.stop();
    EXPECT_THROW(unanswered.get(), std::exception) << "the connection closed with the server";
    slidePages.finishDraws();
    scheduler.runDue();
    ASSERT_EQ(app.show()->library.size(), 1u) << "the tool's effect stands";
    EXPECT_EQ(app.show()->library[0].name, "Dawn");
}

} // namespace
} // namespace velarion::testing
