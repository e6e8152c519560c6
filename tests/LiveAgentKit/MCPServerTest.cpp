// The MCP bridge's protocol, line by line: the replies to malformed input,
// notifications, the handshake, the tool list, and tool calls that pass,
// fail the argument check, or come back refused.

#include "LiveAgentKit/MCPServer.h"

#include "LiveAgentKit/AgentArguments.h"
#include "LiveAgentKit/AgentGuide.h"
#include "LiveAgentKit/AgentTools.h"

#include <gtest/gtest.h>
#include <string>
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

} // namespace
} // namespace velarion
