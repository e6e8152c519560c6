// The server over real Unix sockets: where and how it listens, how it reads
// lines, the order it answers in, and what stop leaves behind.

#include "LiveAgentKit/AgentSocketServer.h"

#include "AgentSocketTestSupport.h"
#include "LiveAgentKit/AgentFailure.h"
#include "LiveAgentKit/AgentLine.h"
#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/AgentSocketPath.h"

#include <atomic>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace velarion {
namespace {

using namespace socketTest;
using Object = JSONValue::Object;

const std::string invalidLine = R"({"error":"That request wasn't valid JSON.","id":0,"ok":false})";

std::string requestLine(std::int64_t id, JSONValue arguments = Object{}) {
    return *agentLine::encode(AgentRequest{id, "echo", std::move(arguments)});
}

std::string echoLine(std::int64_t id, JSONValue arguments = Object{}) {
    const std::string line = *agentLine::encode(AgentResponse::success(id, std::move(arguments)));
    return line.substr(0, line.size() - 1);
}

mode_t modeOf(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0 ? info.st_mode : 0;
}

std::string startError(const std::string& path, AgentMainLoop& loop) {
    AgentSocketServer server(path, loop, echoHandler());
    try {
        server.start();
    } catch (const AgentSocketError& error) {
        return error.errorDescription();
    }
    return "started";
}

using SocketServer = SocketFixture;

TEST_F(SocketServer, ListensOnTheLongestPathInPrivateFoldersAndRemovesItAtStop) {
    const std::string folder = temp / "made/here";
    const std::string path = folder + "/" + std::string(103 - folder.size() - 1, 's');
    ASSERT_EQ(path.size(), 103u);

    AgentSocketServer server(path, loop, echoHandler());
    server.start();
    EXPECT_EQ(modeOf(temp / "made") & 07777, 0700u);
    EXPECT_EQ(modeOf(folder) & 07777, 0700u);
    EXPECT_TRUE(S_ISSOCK(modeOf(path)));
    EXPECT_EQ(modeOf(path) & 07777, 0600u);

    AgentSocketClient client(path);
    EXPECT_EQ(client.call("echo", Object{{"n", 1}}, 5),
              AgentResponse::success(1, Object{{"n", 1}}));
    server.stop();
    EXPECT_EQ(modeOf(path), 0u);
    EXPECT_FALSE(server.isListening());
}

TEST_F(SocketServer, ReplacesAStaleFileAndRefusesPathsItCannotUse) {
    const std::string stale = temp / "agent.sock";
    std::ofstream(stale) << "left by a crashed run";
    EXPECT_EQ(startError(stale, loop), "started");

    // The address is checked, in the address's words, before any folder is made.
    const std::string longPath = temp / ("never/" + std::string(108, 's'));
    EXPECT_EQ(startError(longPath, loop), AgentSocketError(agentSocketError::PathTooLong{}).errorDescription());
    EXPECT_EQ(modeOf(temp / "never"), 0u);
}

TEST_F(SocketServer, SkipsBlankLinesAndAnswersABadLineWithoutClosing) {
    AgentSocketServer server(temp / "agent.sock", loop, echoHandler());
    server.start();
    RawPeer peer(server.path());

    // Had the blank line been answered, its reply would come first.
    peer.send("\n"
              R"({"id":1})"
              "\n" +
              requestLine(5, Object{{"after", "bad"}}));
    EXPECT_EQ(peer.readLine(), invalidLine);
    EXPECT_EQ(peer.readLine(), echoLine(5, Object{{"after", "bad"}}));
    peer.send("\n\n" + requestLine(6));
    EXPECT_EQ(peer.readLine(), echoLine(6));
}

TEST_F(SocketServer, RunsTheRequestsOfOneConnectionStrictlyInTurn) {
    HeldRequests held;
    AgentSocketServer server(temp / "agent.sock", loop, held.handler());
    server.start();
    RawPeer first(server.path());
    RawPeer second(server.path());

    first.send(requestLine(1) + requestLine(2));
    ASSERT_TRUE(held.waitFor(1));
    // Had request 2 started beside request 1, it would have reached the
    // main loop before anything the other connection sends now.
    second.send(requestLine(9));
    ASSERT_TRUE(held.waitFor(2));
    EXPECT_EQ(held.request(1).id, 9);

    held.answer(0);
    EXPECT_EQ(first.readLine(), echoLine(1));
    ASSERT_TRUE(held.waitFor(3));
    EXPECT_EQ(held.request(2).id, 2);
    held.answer(2);
    EXPECT_EQ(first.readLine(), echoLine(2));
    held.answer(1);
    EXPECT_EQ(second.readLine(), echoLine(9));
}

TEST_F(SocketServer, KeepsHalfALineUntilTheRestArrives) {
    AgentSocketServer server(temp / "agent.sock", loop, echoHandler());
    server.start();
    RawPeer peer(server.path());

    const std::string line = requestLine(4, Object{{"name", "Walk-in"}});
    peer.send(line.substr(0, 20));
    EXPECT_EQ(peer.readLine(0.3), std::nullopt);
    peer.send(line.substr(20) + line.substr(0, 7));
    EXPECT_EQ(peer.readLine(), echoLine(4, Object{{"name", "Walk-in"}}));
    peer.send(line.substr(7));
    EXPECT_EQ(peer.readLine(), echoLine(4, Object{{"name", "Walk-in"}}));
}

TEST_F(SocketServer, QueuesOutputForAClientThatDoesntReadAndServesTheOthers) {
    constexpr int requests = 40;
    const std::string big(200'000, 'x'); // 8 MB in all: far beyond a socket's buffer
    std::atomic<int> handled = 0;
    AgentSocketServer server(temp / "agent.sock", loop,
                             [&](AgentRequest request, const AgentSocketServer::Reply& reply) {
                                 if (request.tool == "big")
                                     ++handled;
                                 reply(AgentResponse::success(request.id, request.tool == "big"
                                                                              ? JSONValue(big)
                                                                              : request.arguments));
                             });
    server.start();
    RawPeer stalled(server.path());
    std::string lines;
    for (int id = 1; id <= requests; ++id) {
        lines += *agentLine::encode(AgentRequest{id, "big", Object{}});
    }
    stalled.send(lines);
    for (int wait = 0; handled < requests && wait < 2000; ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(handled, requests);

    AgentSocketClient other(server.path());
    for (int call = 1; call <= 20; ++call) {
        EXPECT_EQ(other.call("echo", Object{{"call", call}}, 5),
                  AgentResponse::success(call, Object{{"call", call}}));
    }
    for (int id = 1; id <= requests; ++id) {
        EXPECT_EQ(stalled.readLine(), echoLine(id, big));
    }
}

TEST_F(SocketServer, AcceptsAgainOnceDescriptorsAreFree) {
    AgentSocketServer server(temp / "agent.sock", loop, echoHandler());
    server.start();
    RawPeer served(server.path());
    served.send(requestLine(1));
    ASSERT_EQ(served.readLine(), echoLine(1));
    UniqueFd waiting(::socket(AF_UNIX, SOCK_STREAM, 0));

    // No descriptor number left for the server's next accept.
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const int lowestFree = ::dup(0);
    ::close(lowestFree);
    rlimit exhausted = before;
    exhausted.rlim_cur = static_cast<rlim_t>(lowestFree);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &exhausted), 0);
    RawPeer late(std::move(waiting), server.path());
    late.send(requestLine(2));
    served.send(requestLine(3));
    EXPECT_EQ(served.readLine(), echoLine(3));
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(late.readLine(), echoLine(2));
}

// The client against the real server and against a scripted one: stale
// answers, timeouts, a restart between calls, a server gone mid-call, and
// many clients at once.
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
