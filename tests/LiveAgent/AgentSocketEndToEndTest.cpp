// The service behind the real socket server, as the application wires it:
// requests cross a Unix socket, run on the main loop and come back as lines.

#include "AgentServiceFixture.h"
#include "AgentSocketTestSupport.h"

#include "LiveAgentKit/AgentSocketClient.h"

namespace velarion::testing {
namespace {

using AgentOverTheSocket = AgentServiceFixture;

TEST_F(AgentOverTheSocket, ToolsAnswerThroughTheServerOnTheMainLoop) {
    video("Walk in");
    open();
    socketTest::TempFolder folder;
    socketTest::ThreadMainLoop mainLoop;
    AgentSocketServer server(folder / "agent.sock", mainLoop,
                             [this](AgentRequest request, AgentSocketServer::Reply reply) {
                                 service.handle(request, std::move(reply));
                             });
    server.start();
    AgentSocketClient client(folder / "agent.sock");

    const AgentResponse added = client.call("add_section", JSONValue::Object{{"title", "Finale"}}, 5);
    ASSERT_TRUE(added.ok) << added.error.value_or("");
    EXPECT_EQ(textOf((*added.result)["title"]), "Finale");
    const AgentResponse refused = client.call("fire_cue", JSONValue::Object{{"cue", "Outro"}}, 5);
    EXPECT_FALSE(refused.ok);
    EXPECT_TRUE(refused.error);
    // Answered from the service's worker thread, not the main loop.
    const AgentResponse shown = client.call("get_show", JSONValue::Object{}, 5);
    EXPECT_EQ(textOf((*shown.result)["sections"]->arrayValue()->back()["title"]), "Finale") << "the snapshot is current";
    server.stop();
    EXPECT_EQ(host->notes, std::vector<std::string>{"Agent: added section Finale"});
}

// Discovery as the network answers it: what it found, and how long it was asked to wait.
struct ListedSources final : NDISourceFinder {
    std::vector<NDISource> found;
    std::vector<double> waits;
    std::vector<NDISource> sources(double waitForChangesSeconds) override {
        waits.push_back(waitForChangesSeconds);
        return found;
    }
};
using AgentNDISources = AgentServiceFixture;

TEST_F(AgentNDISources, AreListedAndAddedToTheLibrary) {
    open();
    auto sources = std::make_shared<ListedSources>();
    sources->found = {{"STUDIO (Camera 1)", "10.0.0.5:5961"}, {"STUDIO (Slides)", std::nullopt}};
    host->ndiSources = sources;
    EXPECT_EQ(ok("list_ndi_sources", R"({"wait_seconds":0.5})").text(),
              R"x({"note":"Discovery does not confirm that a source is ready to play. Rehearse its picture and sound.",)x"
              R"x("sources":[{"name":"STUDIO (Camera 1)","url":"10.0.0.5:5961"},{"name":"STUDIO (Slides)","url":null}]})x");
    EXPECT_EQ(sources->waits, std::vector<double>{0.5});

    const JSONValue added = ok("add_ndi_source", R"x({"name":"STUDIO (Camera 1)","add_cue":true,"cue_name":"Camera"})x");
    EXPECT_EQ(textOf((*added["media"])["kind"]), "ndi");
    EXPECT_EQ(textOf((*added["cue"])["name"]), "Camera");
    ASSERT_EQ(host->current().library.size(), 1u);
    EXPECT_EQ(host->current().library[0].ndiSource, (NDISource{"STUDIO (Camera 1)", std::nullopt}));
}

} // namespace
} // namespace velarion::testing
