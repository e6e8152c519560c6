// Requests and responses on the wire: their JSON form, the reply a bad line
// gets, line framing, and the words of the socket's errors.

#include "LiveAgentKit/AgentFailure.h"
#include "LiveAgentKit/AgentLine.h"
#include "LiveAgentKit/AgentSocketError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

namespace velarion {
namespace {

using Object = JSONValue::Object;

const AgentResponse invalidReply{0, false, std::nullopt, "That request wasn't valid JSON."};

std::string unframed(const std::optional<std::string>& line) {
    return line->substr(0, line->size() - 1);
}

TEST(AgentWire, RequestGoesOutAsOneSortedLineAndReadsBack) {
    const AgentRequest request{7, "fire_cue", Object{{"name", "Walk-in\nloop"}, {"fade", 0.5}}};
    const auto line = agentLine::encode(request);
    ASSERT_TRUE(line.has_value());
    EXPECT_EQ(*line, "{\"arguments\":{\"fade\":0.5,\"name\":\"Walk-in\\nloop\"},\"id\":7,"
                     "\"tool\":\"fire_cue\"}\n");
    EXPECT_EQ(std::count(line->begin(), line->end(), '\n'), 1);
    EXPECT_EQ(agentLine::decodeRequest(unframed(line)),
              (std::variant<AgentRequest, AgentResponse>(request)));

    // Extra keys are ignored; any JSON value serves as arguments; a carriage
    // return left on the line is JSON white space.
    const auto loose = agentLine::decodeRequest(
        "{\"id\":-2,\"tool\":\"get_show\",\"arguments\":null,\"jsonrpc\":\"2.0\"}\r");
    EXPECT_EQ(loose, (std::variant<AgentRequest, AgentResponse>(
                         AgentRequest{-2, "get_show", JSONValue()})));
}

TEST(AgentWire, ALineThatIsntARequestGetsTheInvalidReply) {
    for (const char* line : {
             R"({"id":1})",
             R"({"tool":"get_show","arguments":{}})",
             R"({"id":"1","tool":"get_show","arguments":{}})",
             R"({"id":1.5,"tool":"get_show","arguments":{}})",
             R"([{"id":1,"tool":"get_show","arguments":{}}])",
             "get_show",
         }) {
        const auto decoded = agentLine::decodeRequest(line);
        ASSERT_TRUE(std::holds_alternative<AgentResponse>(decoded)) << line;
        EXPECT_EQ(std::get<AgentResponse>(decoded), invalidReply) << line;
    }
    EXPECT_EQ(agentLine::encode(invalidReply),
              "{\"error\":\"That request wasn't valid JSON.\",\"id\":0,\"ok\":false}\n");
}

TEST(AgentWire, LinesAreCutAtLineFeedsOnly) {
    std::string buffer = "{\"a\":1}\n\nsecond\r\nhal";
    EXPECT_EQ(agentLine::takeLine(buffer), "{\"a\":1}");
    EXPECT_EQ(agentLine::takeLine(buffer), "");
    EXPECT_EQ(agentLine::takeLine(buffer), "second\r");
    EXPECT_EQ(agentLine::takeLine(buffer), std::nullopt);
    EXPECT_EQ(buffer, "hal");
    buffer += "f\n";
    EXPECT_EQ(agentLine::takeLine(buffer), "half");
    EXPECT_EQ(buffer, "");
}

TEST(AgentSocketErrors, SayTheirWords) {
    using namespace agentSocketError;
    const std::string noAnswer = "Velarion closed the connection before answering. The action "
                                 "may have happened; read get_show before retrying it.";
    const std::vector<std::pair<AgentSocketErrorCase, std::string>> cases = {
        {PathTooLong{}, "The control socket's path is too long."},
        {InvalidPath{},
         "The control socket path must be an absolute path without null characters."},
        {NotRunning{}, "Velarion isn't running or its local connection is unavailable. Open "
                       "Velarion; check Settings → Agent control for connection errors."},
        {Closed{}, noAnswer},
        {TimedOut{}, "Velarion did not answer in time. The action may have happened; read "
                     "get_show before retrying it."},
        {ResponseLost{}, noAnswer},
    };
    for (const auto& [reason, words] : cases) {
        const AgentSocketError error(reason);
        EXPECT_EQ(error.errorDescription(), words);
    }
}

} // namespace
} // namespace velarion
