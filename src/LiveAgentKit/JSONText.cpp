// JSONValue's text in both directions, by way of nlohmann-json: its writer
// for escaping and float digits, its SAX reader for parsing. Neither type
// appears in the public header.

#include "LiveAgentKit/JSONValue.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <utility>

namespace velarion {

namespace {

using Json = nlohmann::json;

// Whole numbers this small are exact in a double and read more naturally as
// integers; from 1e15 on they go out as floats.
constexpr double integerLimit = 1e15;

// False when the value holds a number JSON can't express.
bool toJson(const JSONValue& value, Json& out) {
    const JSONValue::Storage& storage = value.storage();
    if (const auto* flag = std::get_if<bool>(&storage)) {
        out = *flag;
    } else if (const auto* number = std::get_if<double>(&storage)) {
        if (!std::isfinite(*number)) return false;
        if (std::trunc(*number) == *number && std::fabs(*number) < integerLimit) {
            out = static_cast<std::int64_t>(*number);
        } else {
            out = *number;
        }
    } else if (const auto* text = std::get_if<std::string>(&storage)) {
        out = *text;
    } else if (const auto* items = std::get_if<JSONValue::Array>(&storage)) {
        out = Json::array();
        auto& array = out.get_ref<Json::array_t&>();
        array.resize(items->size());
        for (std::size_t i = 0; i < items->size(); ++i) {
            if (!toJson((*items)[i], array[i])) return false;
        }
    } else if (const auto* members = std::get_if<JSONValue::Object>(&storage)) {
        out = Json::object();
        for (const auto& [key, member] : *members) {
            if (!toJson(member, out[key])) return false;
        }
    } else {
        out = nullptr;
    }
    return true;
}

std::optional<std::string> write(const JSONValue& value, int indent) {
    Json json;
    if (!toJson(value, json)) return std::nullopt;
    try {
        // Strict: a string that isn't UTF-8 fails instead of being mangled.
        return json.dump(indent, ' ', false, Json::error_handler_t::strict);
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

// Builds the value as the reader reports it. Containers under construction
// sit on a stack of frames and move into their parent when they close, so no
// pointer into a growing container is ever kept.
class Builder final : public nlohmann::json_sax<Json> {
public:
    std::optional<JSONValue> result;

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; } // JSON text has none

    bool start_object(std::size_t) override { return open(true); }
    bool key(string_t& value) override {
        frames_.back().key = std::move(value);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(false); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

private:
    struct Frame {
        bool isObject = false;
        JSONValue::Array items;
        JSONValue::Object members;
        std::string key;
    };
    std::vector<Frame> frames_;

    bool add(JSONValue value) {
        if (frames_.empty()) {
            result = std::move(value);
        } else if (Frame& frame = frames_.back(); frame.isObject) {
            // A repeated key keeps its last value.
            frame.members.insert_or_assign(std::move(frame.key), std::move(value));
        } else {
            frame.items.push_back(std::move(value));
        }
        return true;
    }

    bool open(bool isObject) {
        if (frames_.size() >= JSONValue::maxParseDepth) return false;
        frames_.push_back(Frame{isObject, {}, {}, {}});
        return true;
    }

    bool close() {
        Frame frame = std::move(frames_.back());
        frames_.pop_back();
        return frame.isObject ? add(std::move(frame.members)) : add(std::move(frame.items));
    }
};

} // namespace

std::optional<std::string> JSONValue::encoded() const {
    return write(*this, -1);
}

std::string JSONValue::prettyText() const {
    return write(*this, 2).value_or("null");
}

std::optional<JSONValue> JSONValue::parse(std::string_view text) {
    Builder builder;
    bool parsed = false;
    try {
        parsed = Json::sax_parse(text.begin(), text.end(), &builder);
    } catch (const Json::exception&) {
        return std::nullopt;
    }
    if (!parsed) return std::nullopt;
    return std::move(builder.result);
}

} // namespace velarion
