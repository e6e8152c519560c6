// The argument checker against the catalogue's schemas: the sentences the
// agent reads, the order checks run in, nested paths, and what the schemas
// leave to the tools.

#include "LiveAgentKit/AgentArguments.h"

#include "LiveAgentKit/AgentTools.h"

#include <gtest/gtest.h>
#include <string>

namespace velarion {
namespace {

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
