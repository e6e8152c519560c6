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
                                 reply(service.handle(request));
                             });
    server.start();
    AgentSocketClient client(folder / "agent.sock");

    const AgentResponse added = client.call("add_section", JSONValue::Object{{"title", "Finale"}}, 5);
    ASSERT_TRUE(added.ok) << added.error.value_or("");
    EXPECT_EQ(textOf((*added.result)["title"]), "Finale");
    const AgentResponse refused = client.call("fire_cue", JSONValue::Object{{"cue", "Outro"}}, 5);
    EXPECT_FALSE(refused.ok);
    EXPECT_TRUE(refused.error);
    server.stop();
    EXPECT_EQ(host->notes, std::vector<std::string>{"Agent: added section Finale"});
}

} // namespace
} // namespace velarion::testing
