// The server over real Unix sockets: where and how it listens, how it reads
// lines, the order it answers in, and what stop leaves behind.

#include "LiveAgentKit/AgentSocketServer.h"

#include "AgentSocketTestSupport.h"
#include "LiveAgentKit/AgentFailure.h"
#include "LiveAgentKit/AgentLine.h"
#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveAgentKit/AgentSocketError.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
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

} // namespace
} // namespace velarion
