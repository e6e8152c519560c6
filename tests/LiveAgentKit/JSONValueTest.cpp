// The shared JSON value: its forgiving accessors and a reader that refuses
// bad or hostile input cleanly. The text it writes is checked against a
// reference writer in JSONWriterTest.

#include "LiveAgentKit/JSONValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace velarion {
namespace {

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

} // namespace
} // namespace velarion
