// JSONValue writes its own text; nlohmann-json's writer, which it replaced,
// is the reference: random values of every case, compact and indented, must
// come out byte for byte the same, and what that writer refuses is refused.

#include "LiveAgentKit/JSONValue.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

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

} // namespace
} // namespace velarion
