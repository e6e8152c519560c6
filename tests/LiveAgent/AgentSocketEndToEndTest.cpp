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

} // namespace
} // namespace velarion::testing
