// JSONValue writes its own text; nlohmann-json's writer, which it replaced,
// is the reference: random values of every case, compact and indented, must
// come out byte for byte the same, and what that writer refuses is refused.

#include "LiveAgentKit/AgentFailure.h"
#include "LiveAgentKit/AgentLine.h"
#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/AgentSocketPath.h"
#include "LiveAgentKit/JSONValue.h"
#include "ScopedEnvironment.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace velarion {
namespace {

using Json = nlohmann::json;

Json reference(const JSONValue& value) {
    const auto& storage = value.storage();
    if (const auto* flag = std::get_if<bool>(&storage)) return *flag;
    if (const auto* number = std::get_if<double>(&storage)) {
        if (std::trunc(*number) == *number && std::fabs(*number) < 1e15) return static_cast<std::int64_t>(*number);
        return *number;
    }
    if (const auto* text = std::get_if<std::string>(&storage)) return *text;
    if (const auto* items = std::get_if<JSONValue::Array>(&storage)) {
        Json array = Json::array();
        for (const JSONValue& item : *items) array.push_back(reference(item));
        return array;
    }
    if (const auto* members = std::get_if<JSONValue::Object>(&storage)) {
        Json object = Json::object();
        for (const auto& [key, member] : *members) object[key] = reference(member);
        return object;
    }
    return nullptr;
}

std::optional<std::string> referenceText(const JSONValue& value, int indent) {
    try {
        return reference(value).dump(indent, ' ', false, Json::error_handler_t::strict);
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

class RandomValues {
public:
    explicit RandomValues(unsigned seed) : random_(seed) {}

    JSONValue make(int depth = 0) {
        switch (pick(depth < 4 ? 7 : 5)) {
        case 0: return JSONValue(nullptr);
        case 1: return JSONValue(pick(2) == 1);
        case 2: return JSONValue(number());
        case 3:
        case 4: return JSONValue(text());
        case 5: {
            JSONValue::Array items;
            // Now and then a list long enough to be written in parts.
            for (int i = depth < 2 && pick(16) == 0 ? 150 : pick(4); i > 0; --i) items.push_back(make(depth + 1));
            return JSONValue(std::move(items));
        }
        default: {
            JSONValue::Object members;
            for (int i = pick(4); i > 0; --i) members.insert_or_assign(text(), make(depth + 1));
            return JSONValue(std::move(members));
        }
        }
    }

private:
    int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    double number() {
        switch (pick(5)) {
        case 0: return pick(2001) - 1000;
        case 1: return std::ldexp(std::uniform_real_distribution<double>(-1, 1)(random_), pick(120) - 60);
        case 2: return 1e15 + pick(3);
        case 3: return -0.0001 * pick(100);
        default: return std::uniform_real_distribution<double>(-1e6, 1e6)(random_);
        }
    }
    std::string text() {
        static const std::vector<std::string> pieces{"a", "Zz", "/", "\\\\", "\"", "\n", "\t", "\x01", "\x1f", "\x7f",
                                                     "é", "—", "日本", "🎵", " ", "ok", "\xff", "\xed\xa0\x80", "\xc0\xaf"};
        std::string made;
        for (int i = pick(5); i > 0; --i) {
            const std::string& piece = pieces[static_cast<std::size_t>(pick(static_cast<int>(pieces.size())))];
            // Mostly valid text; now and then a malformed byte sequence.
            if (piece[0] == '\xff' || piece[0] == '\xed' || piece[0] == '\xc0')
                if (pick(8) != 0) continue;
            made += piece;
        }
        return made;
    }
    std::mt19937 random_;
};

TEST(JSONWriter, WritesWhatTheReferenceWriterWrites) {
    RandomValues values(20261123);
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        const JSONValue value = values.make();
        const auto expected = referenceText(value, -1);
        ASSERT_EQ(value.encoded(), expected) << "value " << i;
        ASSERT_EQ(value.prettyText(), referenceText(value, 2).value_or("null")) << "value " << i;
        refused += expected ? 0 : 1;
    }
    EXPECT_GT(refused, 10) << "malformed text came up and was refused";
    EXPECT_FALSE(JSONValue(std::nan("")).encoded());
    EXPECT_EQ(JSONValue(JSONValue::Array{JSONValue(INFINITY)}).text(), "null");
}

// The shared JSON value: its forgiving accessors and a reader that refuses
// bad or hostile input cleanly. The text it writes is checked against a
// reference writer in JSONWriterTest.
using Array = JSONValue::Array;
using Object = JSONValue::Object;

const double nan = std::numeric_limits<double>::quiet_NaN();

TEST(JSONValueAccessors, NumbersReadFromNumbersAndNumericText) {
    EXPECT_EQ(JSONValue(2.5).doubleValue(), 2.5);
    EXPECT_EQ(JSONValue("2.5").doubleValue(), 2.5);
    EXPECT_EQ(JSONValue("+1e3").doubleValue(), 1000);
    for (const char* text : {"", " 2", "2 ", "two", "1.5x", "+-1", "0x10"}) {
        EXPECT_EQ(JSONValue(text).doubleValue(), std::nullopt) << text;
    }

    // int truncates toward zero and refuses what a 64-bit integer can't hold.
    EXPECT_EQ(JSONValue(4.9).intValue(), 4);
    EXPECT_EQ(JSONValue("7.8").intValue(), 7);
    EXPECT_EQ(JSONValue(-0x1p63).intValue(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(JSONValue(0x1p63).intValue(), std::nullopt);
    EXPECT_EQ(JSONValue("9.3e18").intValue(), std::nullopt);
    EXPECT_EQ(JSONValue(nan).intValue(), std::nullopt);
}

TEST(JSONValueAccessors, ContainersAndMembers) {
    const JSONValue value = Object{{"cue", Object{{"name", "Walk-in"}}}, {"ids", Array{1, 2}}};
    ASSERT_NE(value["cue"], nullptr);
    EXPECT_EQ((*value["cue"])["name"]->stringValue(), "Walk-in");
    EXPECT_EQ(value["missing"], nullptr);
    EXPECT_EQ(value["ids"]->arrayValue()->size(), 2u);
    EXPECT_EQ(JSONValue(3), JSONValue(3.0));
    EXPECT_NE(JSONValue(3), JSONValue("3"));
    EXPECT_NE(JSONValue(1), JSONValue(true));
}

TEST(JSONValueParse, ReadsEveryCaseAndAnyTopLevelValue) {
    const auto value = JSONValue::parse(
        R"( {"b":[1,2.5,-3e2,"x\/y\u00e9"],"a":{"t":true,"f":false,"n":null},"a":{"t":1}} )");
    // A repeated key keeps its last value.
    EXPECT_EQ(value, JSONValue(Object{{"a", Object{{"t", 1}}},
                                      {"b", Array{1, 2.5, -300, "x/yé"}}}));
    EXPECT_EQ(JSONValue::parse(" 42\n"), JSONValue(42));
    EXPECT_EQ(JSONValue::parse("12345678901234567890"), JSONValue(12345678901234567890.0));

    for (const char* bad : {"", " ", "{", "[1,]", "{'a':1}", "tru", "1 2", "[1] x", "NaN",
                            "1e400", "\"\xff\"", "{\"a\"}", "\"a\nb\"", "01", "/* */1"}) {
        EXPECT_EQ(JSONValue::parse(bad), std::nullopt) << bad;
    }
}

TEST(JSONValueParse, DepthIsLimited) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i) text += i % 2 ? "{\"k\":" : "[";
        text += "0";
        for (std::size_t i = depth; i-- > 0;) text += i % 2 ? "}" : "]";
        return text;
    };
    const auto deepest = JSONValue::parse(nested(JSONValue::maxParseDepth));
    ASSERT_TRUE(deepest.has_value());
    EXPECT_EQ(JSONValue::parse(deepest->text()), deepest);
    EXPECT_EQ(JSONValue::parse(nested(JSONValue::maxParseDepth + 1)), std::nullopt);
    // Hostile input far past the limit fails the same way, without a deep stack.
    EXPECT_EQ(JSONValue::parse(std::string(1'000'000, '[')), std::nullopt);
}

// Requests and responses on the wire: their JSON form, the reply a bad line
// gets, line framing, and the words of the socket's errors.

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

// Where the socket lives and which paths make an address.
using testing::ScopedEnvironment;

// An absolute path of exactly `bytes` bytes.
std::string pathOf(std::size_t bytes) {
    return "/tmp/" + std::string(bytes - 10, 'a') + ".sock";
}

std::string addressError(const std::string& path) {
    try {
        agentSocketPath::makeAddress(path);
    } catch (const AgentSocketError& error) {
        return error.errorDescription();
    }
    return "made";
}

// The sentences are checked where they are made; here, which one.
const std::string tooLong = AgentSocketError(agentSocketError::PathTooLong{}).errorDescription();
const std::string invalid = AgentSocketError(agentSocketError::InvalidPath{}).errorDescription();

TEST(AgentSocketAddress, HoldsPathsUpToTheLimitAndRefusesRelativeEmptyAndZeroBytePaths) {
    for (std::size_t bytes : {std::size_t(103), std::size_t(107)}) {
        const std::string path = pathOf(bytes);
        ASSERT_EQ(path.size(), bytes);
        const auto made = agentSocketPath::makeAddress(path);
        EXPECT_EQ(made.address.sun_family, AF_UNIX);
        EXPECT_STREQ(made.address.sun_path, path.c_str());
        // bind and connect get the whole address, not the path's length.
        EXPECT_EQ(made.length, sizeof(sockaddr_un));
    }
    EXPECT_EQ(addressError(pathOf(108)), tooLong);
    EXPECT_EQ(addressError("Velarion/agent.sock"), invalid);
    EXPECT_EQ(addressError(std::string("/tmp/a\0b.sock", 13)), invalid);
    // Being relative is the first fault named, whatever the length.
    EXPECT_EQ(addressError(pathOf(200).substr(1)), invalid);
}

TEST(AgentSocketPath, EnvironmentVariableWinsEvenWhenEmpty) {
    const ScopedEnvironment data("XDG_DATA_HOME", "/srv/data");
    {
        const ScopedEnvironment socket("VELARION_AGENT_SOCKET", "/run/user/1000/v.sock");
        EXPECT_EQ(agentSocketPath::standard(), "/run/user/1000/v.sock");
    }
    {
        const ScopedEnvironment socket("VELARION_AGENT_SOCKET", "");
        EXPECT_EQ(agentSocketPath::standard(), "");
        EXPECT_EQ(addressError(agentSocketPath::standard()), invalid);
    }
    const ScopedEnvironment socket("VELARION_AGENT_SOCKET", std::nullopt);
    EXPECT_EQ(agentSocketPath::standard(), "/srv/data/Velarion/agent.sock");
}

TEST(AgentSocketPath, FallsBackToTheUsersDataFolder) {
    const ScopedEnvironment socket("VELARION_AGENT_SOCKET", std::nullopt);
    const ScopedEnvironment home("HOME", "/home/operator");
    for (const std::optional<std::string>& ignored : {std::optional<std::string>(), std::optional<std::string>("relative/data")}) {
        const ScopedEnvironment data("XDG_DATA_HOME", ignored);
        EXPECT_EQ(agentSocketPath::standard(), "/home/operator/.local/share/Velarion/agent.sock");
    }
}

} // namespace
} // namespace velarion
