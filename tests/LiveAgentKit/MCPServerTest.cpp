// The MCP bridge's protocol, line by line: the replies to malformed input,
// notifications, the handshake, the tool list, and tool calls that pass,
// fail the argument check, or come back refused.

#include "LiveAgentKit/MCPServer.h"

#include "AgentSocketTestSupport.h"
#include "ChildProcess.h"
#include "LiveAgentKit/AgentArguments.h"
#include "LiveAgentKit/AgentGuide.h"
#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/AgentSocketServer.h"
#include "LiveAgentKit/AgentTools.h"
#include "LiveAgentKit/DetachedLaunch.h"
#include "LiveAgentKit/MCPBridge.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velarion {
namespace {

using Object = JSONValue::Object;

struct Call {
    std::string tool;
    JSONValue arguments;
};

class MCPServerTest : public ::testing::Test {
protected:
    MCPServer server{[this](const std::string& tool, const JSONValue& arguments) {
        calls.push_back({tool, arguments});
        return answer;
    }};
    std::vector<Call> calls;
    AgentResponse answer = AgentResponse::success(1, Object{});

    std::string reply(const std::string& line) { return server.handle(line).value_or("(none)"); }

    // The reply's "result", or null when there is none.
    JSONValue resultOf(const std::string& line) {
        const std::optional<JSONValue> json = JSONValue::parse(reply(line));
        const JSONValue* result = json ? (*json)["result"] : nullptr;
        return result != nullptr ? *result : JSONValue();
    }
};

TEST_F(MCPServerTest, FailureTableRowByRow) {
    const std::string parseError =
        R"({"error":{"code":-32700,"message":"Parse error"},"id":null,"jsonrpc":"2.0"})";
    EXPECT_EQ(reply("{\"id\":1,"), parseError);
    EXPECT_EQ(reply(R"({"id":1})"), parseError);
    EXPECT_EQ(reply(R"({"id":1,"method":{"name":"ping"}})"), parseError);
    EXPECT_EQ(reply(R"({"id":1,"method":null})"), parseError);
    // A batch is well-formed JSON: an invalid request, not a parse error.
    const std::string batch =
        R"({"error":{"code":-32600,"data":"Batches aren't supported. Send each JSON-RPC )"
        R"(message on its own line.","message":"Invalid Request"},"id":null,"jsonrpc":"2.0"})";
    EXPECT_EQ(reply(R"(["ping"])"), batch);
    EXPECT_EQ(reply(R"([{"jsonrpc":"2.0","id":1,"method":"ping"}])"), batch);
    EXPECT_EQ(reply("[]"), batch);

    EXPECT_EQ(reply(R"({"jsonrpc":"2.0","id":3,"method":"resources/list"})"),
              R"({"error":{"code":-32601,"message":"Method not found"},"id":3,"jsonrpc":"2.0"})");
    // A number is a method's text too, and no method is called that.
    EXPECT_EQ(reply(R"({"id":"a","method":7})"),
              R"({"error":{"code":-32601,"message":"Method not found"},"id":"a","jsonrpc":"2.0"})");

    const std::string unknownTool =
        R"({"error":{"code":-32602,"message":"Unknown tool"},"id":4,"jsonrpc":"2.0"})";
    EXPECT_EQ(reply(R"({"id":4,"method":"tools/call","params":{"name":"fire"}})"), unknownTool);
    EXPECT_EQ(reply(R"({"id":4,"method":"tools/call"})"), unknownTool);

    // The argument checker's sentence (its own tests hold the wording); left
    // out, the arguments are an empty object.
    EXPECT_EQ(reply(R"({"id":6,"method":"tools/call","params":{"name":"fire_cue"}})"),
              R"({"error":{"code":-32602,"message":"Give cue for fire_cue."},"id":6,)"
              R"("jsonrpc":"2.0"})");
    EXPECT_TRUE(calls.empty()) << "a refused call reached the application";

    // Refusals by the application are results.
    answer = AgentResponse::failure(7, "Show Mode is on.");
    EXPECT_EQ(reply(R"({"id":7,"method":"tools/call","params":{"name":"go"}})"),
              R"({"id":7,"jsonrpc":"2.0","result":{"content":[{"text":"Show Mode is on.","type":"text"}],"isError":true}})");
    answer = AgentResponse{8, false, std::nullopt, std::nullopt};
    EXPECT_EQ(resultOf(R"({"id":8,"method":"tools/call","params":{"name":"go"}})"),
              JSONValue(Object{
                  {"content", JSONValue::Array{Object{{"type", "text"}, {"text", "Failed"}}}},
                  {"isError", true}}));
}

TEST_F(MCPServerTest, NotificationsAndNullIdsGetNoReply) {
    EXPECT_EQ(server.handle(R"({"jsonrpc":"2.0","method":"notifications/initialized"})"),
              std::nullopt);
    EXPECT_EQ(server.handle(R"({"id":null,"method":"ping"})"), std::nullopt);
    EXPECT_EQ(server.handle(R"({"method":"tools/call","params":{"name":"go"}})"), std::nullopt);
    EXPECT_TRUE(calls.empty()) << "a notification ran a tool";
}

TEST_F(MCPServerTest, HandshakeChoosesAKnownProtocolVersion) {
    const JSONValue handshake =
        resultOf(R"({"id":1,"method":"initialize","params":{"protocolVersion":"2024-11-05"}})");
    EXPECT_EQ(handshake,
              JSONValue(Object{
                  {"protocolVersion", "2024-11-05"},
                  {"capabilities", Object{{"tools", Object{{"listChanged", false}}}}},
                  {"serverInfo", Object{{"name", "velarion"}, {"version", "2.0-alpha.9"}}},
                  {"instructions", agentGuide::mcpInstructions},
              }));
    for (const char* params : {R"({"protocolVersion":"1999-01-01"})", R"({"protocolVersion":7})",
                               R"({})", R"("2024-11-05")"}) {
        const JSONValue chosen =
            resultOf(std::string(R"({"id":1,"method":"initialize","params":)") + params + "}");
        ASSERT_NE(chosen["protocolVersion"], nullptr) << params;
        EXPECT_EQ(*chosen["protocolVersion"], JSONValue("2025-06-18")) << params;
    }
    EXPECT_EQ(
        *resultOf(R"({"id":1,"method":"initialize","params":{"protocolVersion":"2025-03-26"}})")
            ["protocolVersion"],
        JSONValue("2025-03-26"));
}

TEST_F(MCPServerTest, ToolsListGivesEveryToolEachInItsTier) {
    const JSONValue list = resultOf(R"({"id":1,"method":"tools/list"})");
    ASSERT_NE(list["tools"], nullptr);
    ASSERT_EQ(list["tools"]->arrayValue()->size(), agentTools::all().size());
    // The tier decides what the operator must allow: a tool in the wrong one
    // runs the show or edits it unasked.
    for (const auto& [name, tier] : {std::pair{"get_show", AgentTier::observe}, {"launch_app", AgentTier::observe},
                                     {"go", AgentTier::run}, {"fire_cue", AgentTier::run},
                                     {"add_cue", AgentTier::edit}, {"redo", AgentTier::edit}}) {
        ASSERT_NE(agentTools::tool(name), nullptr) << name;
        EXPECT_EQ(agentTools::tool(name)->tier, tier) << name;
    }
}

TEST_F(MCPServerTest, ToolCallForwardsValidArgumentsAndPrintsTheResult) {
    answer = AgentResponse::success(1, 3);
    EXPECT_EQ(reply(R"({"id":9,"method":"tools/call","params":{"name":"fire_cue",)"
                    R"("arguments":{"cue":"4"}}})"),
              R"({"id":9,"jsonrpc":"2.0","result":{"content":[{"text":"3","type":"text"}],)"
              R"("isError":false}})");
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].tool, "fire_cue");
    EXPECT_EQ(calls[0].arguments, JSONValue(Object{{"cue", "4"}}));

    answer = AgentResponse::success(1, Object{{"title", "Sunday"}, {"cues", JSONValue::Array{1}}});
    const JSONValue shown =
        resultOf(R"({"id":10,"method":"tools/call","params":{"name":"get_show"}})");
    EXPECT_EQ(*(*shown["content"]->arrayValue())[0]["text"],
              JSONValue("{\n  \"cues\": [\n    1\n  ],\n  \"title\": \"Sunday\"\n}"));
    EXPECT_EQ(calls.back().arguments, JSONValue(Object{}));

    answer = AgentResponse{1, true, std::nullopt, std::nullopt};
    const JSONValue empty = resultOf(R"({"id":11,"method":"tools/call","params":{"name":"go"}})");
    EXPECT_EQ(*(*empty["content"]->arrayValue())[0]["text"], JSONValue("null"));
}

TEST(AgentGuide, SnippetsCarryTheBridgePath) {
    const std::string path = "/opt/Velarion/velarion-mcp";
    EXPECT_EQ(agentGuide::claudeCodeCommand(path),
              "claude mcp add --scope user velarion -- \"/opt/Velarion/velarion-mcp\"");
    EXPECT_EQ(agentGuide::claudeDesktopEntry(path),
              "\"velarion\": { \"command\": \"/opt/Velarion/velarion-mcp\" }");
    const std::string guide = agentGuide::agentInstructions(path);
    EXPECT_NE(guide.find(agentGuide::claudeCodeCommand(path)), std::string::npos);
    EXPECT_NE(guide.find(agentGuide::claudeDesktopEntry(path)), std::string::npos);
}

// The argument checker against the catalogue's schemas: the sentences the
// agent reads, the order checks run in, nested paths, and what the schemas
// leave to the tools.
// The checker's sentence for a call, or "passes".
std::string verdict(const std::string& toolName, const std::string& argumentsText) {
    const AgentTool* tool = agentTools::tool(toolName);
    if (tool == nullptr)
        return "no such tool " + toolName;
    const std::optional<JSONValue> arguments = JSONValue::parse(argumentsText);
    if (!arguments)
        return "bad test JSON " + argumentsText;
    try {
        agentArguments::validate(*arguments, *tool);
        return "passes";
    } catch (const InvalidArguments& invalid) {
        return invalid.message;
    }
}

TEST(AgentArguments, UnknownKeysAreNamedBeforeMissingOnes) {
    EXPECT_EQ(verdict("fire_cue", "{}"), "Give cue for fire_cue.");
    EXPECT_EQ(verdict("fire_cue", R"({"cue_name":"x"})"),
              "Unknown parameter \"cue_name\" for fire_cue. Valid fields: cue.");
    EXPECT_EQ(verdict("add_cue", R"({"type":"video","cue_name":"A"})"),
              "Unknown parameter \"cue_name\" for add_cue. Did you mean \"name\"?");
    // The first unknown key in sorted order; the valid ones listed sorted.
    EXPECT_EQ(verdict("send_message", R"({"zeta":1,"alpha":2})"),
              "Unknown parameter \"alpha\" for send_message. Valid fields: text, to.");
    // Required keys in their listed order.
    EXPECT_EQ(verdict("move_cue", R"({"cue":"4"})"), "Give section for move_cue.");
    EXPECT_EQ(verdict("go", R"({"now":true})"),
              "Unknown parameter \"now\" for go. Valid fields: .");
    EXPECT_EQ(verdict("fire_cue", R"("4")"), "arguments must be object for fire_cue.");
}

TEST(AgentArguments, TypesEnumsAndBoundsHaveTheirSentences) {
    EXPECT_EQ(verdict("clear", R"({"target":"all"})"),
              "arguments.target must be one of: \"slides\", \"media\", \"graphics\", \"music\", "
              "\"messages\", \"everything\".");
    EXPECT_EQ(verdict("clear", R"({"target":"music","fade":"slow"})"),
              "arguments.fade must be number for clear.");
    EXPECT_EQ(verdict("list_ndi_sources", R"({"wait_seconds":9})"),
              "arguments.wait_seconds must be at most 5.0 for list_ndi_sources.");
    EXPECT_EQ(verdict("list_ndi_sources", R"({"wait_seconds":0.3})"), "passes");

    EXPECT_EQ(verdict("slide", R"({"action":"goto","index":3.0})"), "passes");
    EXPECT_EQ(verdict("slide", R"({"action":"goto","index":2.5})"),
              "arguments.index must be integer for slide.");

    // Nullable settings name both types; null in an enum is listed as null.
    EXPECT_EQ(verdict("add_ndi_source", R"({"name":"CAM","url":null})"), "passes");
    EXPECT_EQ(verdict("add_ndi_source", R"({"name":"CAM","url":3})"),
              "arguments.url must be string or null for add_ndi_source.");
    EXPECT_EQ(verdict("update_cue", R"({"cue":"1","operator_view":null,"out_point":null})"),
              "passes");
    EXPECT_EQ(verdict("update_cue", R"({"cue":"1","operator_view":"deck"})"),
              "arguments.operator_view must be one of: \"cues\", \"slides\", null.");
    EXPECT_EQ(verdict("update_cue", R"({"cue":"1","visual_output_ids":["a",2]})"),
              "arguments.visual_output_ids[1] must be string for update_cue.");
    EXPECT_EQ(verdict("update_cue", R"({"cue":"1","geometry":{"scale":0.5,"skew":1}})"),
              "Unknown parameter \"arguments.geometry.skew\" for update_cue. Valid fields: "
              "opacity, rotation, scale, x, y.");
    // Left to the tools: exclusiveMinimum and minItems.
    EXPECT_EQ(verdict("update_cue", R"({"cue":"1","group_duration":0})"), "passes");
    EXPECT_EQ(verdict("create_cue_group", R"({"name":"Walk-in","cues":[]})"), "passes");
}

TEST(AgentArguments, NestedObjectsReportTheirPath) {
    EXPECT_EQ(verdict("set_network_feeds", R"({"feeds":[{"name":"A"},{"name":"B","foo":1}]})"),
              "Unknown parameter \"arguments.feeds[1].foo\" for set_network_feeds. Valid fields: "
              "alpha_mode, fps, frame_rate, height, id, layers, lyric_lines, name, preset, "
              "sound, source, transparent, width.");
    EXPECT_EQ(verdict("set_network_feeds", R"({"feeds":[{"name":"A","lyric_lines":null}]})"),
              "passes");
    EXPECT_EQ(verdict("set_network_feeds", R"({"feeds":[{"name":"A","lyric_lines":0}]})"),
              "arguments.feeds[0].lyric_lines must be at least 1.0 for set_network_feeds.");
    EXPECT_EQ(verdict("set_screens", R"({"screens":[{"display":"HDMI-1","lyric_lines":0}]})"),
              "passes");
    EXPECT_EQ(
        verdict("set_network_feeds",
                R"({"feeds":[{"name":"A","frame_rate":{"numerator":30000,"denominator":0}}]})"),
        "arguments.feeds[0].frame_rate.denominator must be at least 1.0 for set_network_feeds.");
    EXPECT_EQ(verdict("set_network_feeds", R"({"feeds":[{}]})"),
              "Give arguments.feeds[0].name for set_network_feeds.");
}

TEST(AgentArguments, AnyOfTakesTheFirstFitOrSaysNoneFits) {
    for (const char* source : {R"("stage")", R"({"screen":"S1"})"}) {
        EXPECT_EQ(verdict("set_network_feeds",
                          std::string(R"({"feeds":[{"name":"A","source":)") + source + "}]}"),
                  "passes")
            << source;
    }
    for (const char* source : {R"("backstage")", R"({})", R"({"screen":"S1","x":1})", "3"}) {
        EXPECT_EQ(verdict("set_network_feeds",
                          std::string(R"({"feeds":[{"name":"A","source":)") + source + "}]}"),
                  "arguments.feeds[0].source has an unsupported value for set_network_feeds.")
            << source;
    }
    EXPECT_EQ(verdict("set_screens", R"({"looks":[{"name":"Lyrics","shows":"most"}]})"),
              "arguments.looks[0].shows has an unsupported value for set_screens.");
}

// The MCP bridge against real sockets and real processes: tool calls passed
// to the application and its words passed back, socket failures as tool
// errors, launch_app finding the application up or opening a stand-in for
// it, and restart_app waiting until the application is back.
using namespace socketTest;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

// The socket's sentences are checked where they are made; here, that the
// bridge passes the right one on.
std::string wordsOf(AgentSocketErrorCase reason) {
    return AgentSocketError(reason).errorDescription();
}
const std::string notRunning = wordsOf(agentSocketError::NotRunning{});
const std::string running = JSONValue(Object{{"running", true}}).prettyText();

// Short waits, so a failing test doesn't take long; the bounds that decide
// an outcome are set by the tests that need them.
MCPBridgeSettings settingsFor(const std::string& socketPath,
                              const std::string& program = "/nonexistent/velarion") {
    MCPBridgeSettings settings;
    settings.socketPath = socketPath;
    settings.applicationPath = program;
    settings.callTimeoutSeconds = 20;
    settings.probeTimeoutSeconds = 1;
    settings.launchWaitSeconds = 20;
    settings.endedGraceSeconds = 0.2;
    settings.quitWaitSeconds = 20;
    settings.restartWaitSeconds = 20;
    settings.pollIntervalSeconds = 0.05;
    return settings;
}

std::string toolsCall(int id, const std::string& tool, JSONValue arguments = Object{}) {
    return JSONValue(Object{{"jsonrpc", "2.0"},
                            {"id", id},
                            {"method", "tools/call"},
                            {"params", Object{{"name", tool}, {"arguments", std::move(arguments)}}}})
        .text();
}

// What a reply to "tools/call" says: the tool's text and whether it is an
// error, or the JSON-RPC error's message.
struct ToolResult {
    std::string text;
    bool isError = false;
    std::string protocolError;
};

ToolResult toolResult(const std::optional<std::string>& reply) {
    const std::optional<JSONValue> json = reply ? JSONValue::parse(*reply) : std::nullopt;
    if (!json)
        return {"(no reply)", true, ""};
    if (const JSONValue* error = (*json)["error"])
        return {"", true, (*error)["message"]->stringValue().value_or("")};
    const JSONValue& result = *(*json)["result"];
    return {(*result["content"]->arrayValue())[0]["text"]->stringValue().value_or(""),
            *result["isError"]->boolValue(), ""};
}

ToolResult callTool(MCPBridge& bridge, const std::string& tool, JSONValue arguments = Object{}) {
    return toolResult(bridge.handle(toolsCall(1, tool, std::move(arguments))));
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

std::map<std::string, std::string> readReport(const std::string& folder) {
    std::map<std::string, std::string> report;
    std::ifstream input(folder + "/stand-in.report");
    std::string line;
    while (std::getline(input, line)) {
        if (const auto equals = line.find('='); equals != std::string::npos)
            report[line.substr(0, equals)] = line.substr(equals + 1);
    }
    return report;
}

// Ends a stand-in the bridge opened in `folder`, should a test leave it
// running (it ends by itself after its lifetime too). It is found by the
// process id it reported, and only signalled while that process is still
// running the stand-in.
class StandInGuard {
public:
    explicit StandInGuard(std::string folder) : folder_(std::move(folder)) {}
    ~StandInGuard() {
        const auto report = readReport(folder_);
        const auto pid = report.find("pid");
        if (pid == report.end())
            return;
        UniqueFd process(static_cast<int>(::syscall(SYS_pidfd_open, std::stoi(pid->second), 0)));
        std::error_code error;
        const fs::path program = fs::read_symlink("/proc/" + pid->second + "/exe", error);
        const std::string name = program.filename().string();
        if (process.isOpen() && !error && (name.starts_with("Velarion") || name == "velarion"))
            ::syscall(SYS_pidfd_send_signal, process.get(), SIGKILL, nullptr, 0);
    }
    StandInGuard(const StandInGuard&) = delete;
    StandInGuard& operator=(const StandInGuard&) = delete;

private:
    std::string folder_;
};

TEST(MCPBridge, PassesToolCallsOnAndTheApplicationsWordsBack) {
    ThreadMainLoop loop;
    TempFolder temp;
    std::mutex mutex;
    std::vector<AgentRequest> received;
    const std::string noCue = "There's no cue \"9\". Call get_show for the cues' ids and numbers.";
    AgentSocketServer server(temp / "agent.sock", loop,
                             [&](const AgentRequest& request, const AgentSocketServer::Reply& reply) {
                                 {
                                     const std::lock_guard lock(mutex);
                                     received.push_back(request);
                                 }
                                 if (request.tool == "fire_cue")
                                     reply(AgentResponse::failure(request.id, noCue));
                                 else
                                     reply(AgentResponse::success(request.id,
                                                                  Object{{"title", "Sunday"}}));
                             });
    server.start();
    MCPBridge bridge(settingsFor(server.path()));

    const ToolResult shown = callTool(bridge, "get_show");
    EXPECT_FALSE(shown.isError);
    EXPECT_EQ(shown.text, "{\n  \"title\": \"Sunday\"\n}");
    const ToolResult refused = callTool(bridge, "fire_cue", Object{{"cue", "9"}});
    EXPECT_TRUE(refused.isError);
    EXPECT_EQ(refused.text, noCue);
    // Caught in the bridge: the application never sees it.
    EXPECT_EQ(callTool(bridge, "fire_cue").protocolError, "Give cue for fire_cue.");

    // A socket failure reaches the agent as a tool error in the client's words.
    MCPBridge orphan(settingsFor(temp / "nobody.sock"));
    const ToolResult orphaned = callTool(orphan, "get_state");
    EXPECT_TRUE(orphaned.isError);
    EXPECT_EQ(orphaned.text, notRunning);

    const std::lock_guard lock(mutex);
    ASSERT_EQ(received.size(), 2u);
    EXPECT_EQ(received[0].tool, "get_show");
    EXPECT_EQ(received[1].tool, "fire_cue");
    EXPECT_EQ(received[1].arguments, JSONValue(Object{{"cue", "9"}}));
}

// The bridge as the agent host runs it: a copy in a folder of its own with a
// stand-in `velarion` beside it, which listens only after a while.
TEST(MCPBridge, LaunchAppOpensTheVelarionBesideTheBridgeAndAnswersOnceItListens) {
    TempFolder temp;
    fs::copy_file(VELARION_MCP_PROGRAM, temp / "velarion-mcp");
    fs::copy_file(VELARION_STAND_IN_PROGRAM, temp / "velarion");
    writeFile(temp / "stand-in.conf", "listen_after_seconds=0.5\nlifetime_seconds=60\n");
    const StandInGuard guard(temp.path());
    testing::ChildProcess bridge(temp / "velarion-mcp", {},
                                 {{agentSocketPath::environmentVariable, (temp / "agent.sock").string()}});

    bridge.writeLine(toolsCall(1, "launch_app"));
    const ToolResult launched = toolResult(bridge.readLine());
    EXPECT_FALSE(launched.isError) << launched.text;
    EXPECT_EQ(launched.text, running);

    // Detached: a session of its own, nothing of the bridge's but its
    // environment, and another parent.
    const auto report = readReport(temp.path());
    EXPECT_NE(report.at("session"), std::to_string(::getsid(bridge.pid())));
    EXPECT_EQ(report.at("standard_streams_null"), "1");
    EXPECT_EQ(report.at("inherited_descriptors"), "0");
    EXPECT_NE(report.at("parent"), std::to_string(bridge.pid()));

    bridge.writeLine(toolsCall(3, "quit_app"));
    EXPECT_FALSE(toolResult(bridge.readLine()).isError);
    EXPECT_EQ(bridge.wait(), 0);
}

TEST(MCPBridge, LaunchAppSaysWhyItCouldntOpenTheApplication) {
    {
        TempFolder temp;
        MCPBridge bridge(settingsFor(temp / "agent.sock", temp / "velarion"));
        EXPECT_EQ(callTool(bridge, "launch_app").text,
                  "Couldn't open Velarion (" + (temp / "velarion").string() +
                      "): No such file or directory. Open it yourself, then call launch_app "
                      "again.");
    }
    {
        TempFolder temp;
        writeFile(temp / "stand-in.conf", "exit_status=3\n");
        const StandInGuard guard(temp.path());
        MCPBridge bridge(settingsFor(temp / "agent.sock", VELARION_STAND_IN_PROGRAM));
        const ToolResult result = callTool(bridge, "launch_app");
        EXPECT_TRUE(result.isError);
        EXPECT_EQ(result.text, "Velarion closed while it was starting. Open it yourself to see "
                               "what went wrong, then call launch_app again.");
    }
    {
        TempFolder temp;
        writeFile(temp / "stand-in.conf", "listen=0\nlifetime_seconds=10\n");
        const StandInGuard guard(temp.path());
        MCPBridgeSettings settings = settingsFor(temp / "agent.sock", VELARION_STAND_IN_PROGRAM);
        settings.launchWaitSeconds = 1;
        MCPBridge bridge(settings);
        const ToolResult result = callTool(bridge, "launch_app");
        EXPECT_TRUE(result.isError);
        EXPECT_EQ(result.text, "Velarion was opened but its agent control didn't answer within 1 "
                               "second. Check Settings → Agent control for connection errors, "
                               "then call launch_app again.");
    }
}

TEST(MCPBridge, RestartAppAnswersOnlyOnceTheApplicationIsBack) {
    ThreadMainLoop loop;
    TempFolder temp;
    const std::string path = temp / "agent.sock";
    HeldRequests before;
    auto old = std::make_unique<AgentSocketServer>(path, loop, before.handler());
    old->start();
    MCPBridge bridge(settingsFor(path));

    auto restarted = std::async(std::launch::async, [&] {
        return callTool(bridge, "restart_app", Object{{"force", true}});
    });
    ASSERT_TRUE(before.waitFor(1));
    EXPECT_EQ(before.request(0).arguments, JSONValue(Object{{"force", true}}));
    before.answer(0, Object{{"restarting", true}});
    // Agreed but still running, as the application is for 0.4 seconds: a
    // call now would reach the old one, so the bridge neither answers nor asks.
    EXPECT_EQ(restarted.wait_for(400ms), std::future_status::timeout);
    EXPECT_EQ(before.count(), 1u);
    old->stop();
    EXPECT_EQ(restarted.wait_for(300ms), std::future_status::timeout);

    std::mutex mutex;
    std::vector<std::string> askedAfter;
    AgentSocketServer back(path, loop,
                           [&](const AgentRequest& request, const AgentSocketServer::Reply& reply) {
                               {
                                   const std::lock_guard lock(mutex);
                                   askedAfter.push_back(request.tool);
                               }
                               // Any answer means it is back, a refusal too.
                               reply(AgentResponse::failure(
                                   request.id, "No show is open. Use new_show or open_show."));
                           });
    back.start();
    const ToolResult result = restarted.get();
    EXPECT_FALSE(result.isError) << result.text;
    EXPECT_EQ(result.text, JSONValue(Object{{"restarting", true}}).prettyText());
    const std::lock_guard lock(mutex);
    ASSERT_FALSE(askedAfter.empty());
    EXPECT_EQ(askedAfter.front(), "launch_app");
}

TEST(MCPBridge, RestartAppGivesUpInWords) {
    ThreadMainLoop loop;
    TempFolder temp;
    AgentSocketServer refusing(
        temp / "refusing.sock", loop,
        [&](const AgentRequest& request, const AgentSocketServer::Reply& reply) {
            reply(AgentResponse::success(request.id, Object{{"restarting", true}}));
        });
    refusing.start();
    MCPBridgeSettings settings = settingsFor(refusing.path());
    settings.quitWaitSeconds = 0.5;
    {
        MCPBridge bridge(settings);
        // Agrees, then never goes.
        EXPECT_EQ(callTool(bridge, "restart_app", Object{{"force", true}}).text,
                  "Velarion agreed to restart but hadn't closed after 0.5 seconds. Call get_state "
                  "to see whether it is still running before trying again.");
    }

    HeldRequests held;
    AgentSocketServer leaving(temp / "leaving.sock", loop, held.handler());
    leaving.start();
    settings = settingsFor(leaving.path());
    settings.restartWaitSeconds = 0.5;
    MCPBridge bridge(settings);
    auto restarted = std::async(std::launch::async, [&] {
        return callTool(bridge, "restart_app", Object{{"force", true}});
    });
    ASSERT_TRUE(held.waitFor(1));
    held.answer(0, Object{{"restarting", true}});
    // As the application does, so that the answer gets out first.
    std::this_thread::sleep_for(400ms);
    leaving.stop();
    EXPECT_EQ(restarted.get().text, "Velarion closed to restart but didn't answer again within 0.5 "
                                    "seconds. Call launch_app to open it.");
}

TEST(MCPBridge, ServesLineByLineUntilTheInputEnds) {
    MCPBridge bridge(settingsFor("/nonexistent/agent.sock"));
    std::istringstream input(R"({"jsonrpc":"2.0","method":"notifications/initialized"})"
                             "\n"
                             R"({"jsonrpc":"2.0","id":1,"method":"ping"})"
                             "\n\n"
                             R"({"jsonrpc":"2.0","id":"last","method":"ping"})");
    std::ostringstream output;
    EXPECT_TRUE(bridge.serve(input, output));
    EXPECT_EQ(output.str(),
              R"({"id":1,"jsonrpc":"2.0","result":{}})"
              "\n"
              R"({"error":{"code":-32700,"message":"Parse error"},"id":null,"jsonrpc":"2.0"})"
              "\n"
              R"({"id":"last","jsonrpc":"2.0","result":{}})"
              "\n");

    // The host has gone: the bridge stops at the first reply it can't write.
    std::istringstream more(R"({"jsonrpc":"2.0","id":1,"method":"ping"})"
                            "\n");
    std::ostringstream closed;
    closed.setstate(std::ios::badbit);
    EXPECT_FALSE(bridge.serve(more, closed));
}

} // namespace
} // namespace velarion
