// The client against the real server and against a scripted one: stale
// answers, timeouts, a restart between calls, a server gone mid-call, and
// many clients at once.

#include "LiveAgentKit/AgentSocketClient.h"

#include "AgentSocketTestSupport.h"
#include "LiveAgentKit/AgentLine.h"
#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/AgentSocketPath.h"
#include "LiveAgentKit/AgentSocketServer.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace velarion {
namespace {

using namespace socketTest;
using Object = JSONValue::Object;

// The socket's sentences are checked where they are made; here, the kind.
template <class Case> void expectCallFails(AgentSocketClient& client) {
    try {
        client.call("echo", Object{}, 1);
        ADD_FAILURE() << "answered";
    } catch (const AgentSocketError& error) {
        EXPECT_TRUE(error.is<Case>()) << error.errorDescription();
        EXPECT_FALSE(client.isConnected());
    }
}

using SocketClient = SocketFixture;

TEST_F(SocketClient, TimesOutAndLeavesTheLateAnswerBehind) {
    HeldRequests held;
    AgentSocketServer server(temp / "agent.sock", loop, held.handler());
    server.start();
    AgentSocketClient client(server.path());

    expectCallFails<agentSocketError::TimedOut>(client);
    held.answer(0); // id 1, too late
    auto second = std::async(std::launch::async, [&] { return client.call("echo", "two", 5); });
    ASSERT_TRUE(held.waitFor(2));
    held.answer(1);
    EXPECT_EQ(second.get(), AgentResponse::success(2, "two"));
}

TEST_F(SocketClient, RetriesOnceWhenTheApplicationRestartedBetweenCalls) {
    AgentSocketServer server(temp / "agent.sock", loop, echoHandler());
    server.start();
    AgentSocketClient client(server.path());
    EXPECT_EQ(client.call("echo", "before", 5), AgentResponse::success(1, "before"));

    server.stop();
    AgentSocketServer restarted(server.path(), loop, echoHandler());
    restarted.start();
    EXPECT_EQ(client.call("echo", "after", 5), AgentResponse::success(3, "after"));
    EXPECT_TRUE(client.isConnected());

    // Gone for good: the retry can't connect.
    restarted.stop();
    expectCallFails<agentSocketError::NotRunning>(client);
}

TEST_F(SocketClient, LosesTheResponseWhenTheServerStopsDuringTheCall) {
    HeldRequests held;
    AgentSocketServer server(temp / "agent.sock", loop, held.handler());
    server.start();
    AgentSocketClient client(server.path());

    auto call = std::async(std::launch::async,
                           [&] { expectCallFails<agentSocketError::ResponseLost>(client); });
    ASSERT_TRUE(held.waitFor(1));
    server.stop();
    call.get();
    EXPECT_EQ(held.count(), 1u); // not sent again
}

// Each answer echoes its call, and the client skips any id but the one it
// waits for: a lost or reordered response ends in a wrong answer or a timeout.
TEST_F(SocketClient, ManyClientsAtOnceLoseAndReorderNothing) {
    constexpr int clients = 50;
    constexpr int callsEach = 1000;
    AgentSocketServer server(temp / "agent.sock", loop, echoHandler());
    server.start();

    std::atomic<int> answered = 0;
    std::vector<std::string> failures(clients);
    std::vector<std::thread> threads;
    for (int c = 0; c < clients; ++c) {
        threads.emplace_back([&, c] {
            AgentSocketClient client(server.path());
            try {
                for (int n = 1; n <= callsEach; ++n) {
                    const JSONValue arguments = Object{{"client", c}, {"call", n}};
                    if (client.call("echo", arguments, 20) != AgentResponse::success(n, arguments))
                        throw std::runtime_error("wrong answer to call " + std::to_string(n));
                    ++answered;
                }
            } catch (const std::exception& error) {
                failures[static_cast<std::size_t>(c)] = error.what();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(answered, clients * callsEach);
    for (int c = 0; c < clients; ++c)
        EXPECT_EQ(failures[static_cast<std::size_t>(c)], "") << c;
}

} // namespace
} // namespace velarion
