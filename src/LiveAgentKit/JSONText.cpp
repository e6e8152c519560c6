// JSONValue's text in both directions: our own writer, with nlohmann-json's
// float digits, and nlohmann-json's SAX reader for parsing. Neither type
// appears in the public header.

#include "LiveAgentKit/JSONValue.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <future>
#include <thread>
#include <utility>
#include <vector>

namespace velarion {

namespace {

using Json = nlohmann::json;

// Whole numbers this small are exact in a double and read more naturally as
// integers; from 1e15 on they go out as floats.
constexpr double integerLimit = 1e15;

// Writes straight into one string: a large answer (a whole show) is written
// in a few milliseconds, with no second tree built on the way. Escaping and
// float digits are those of nlohmann-json's own writer, so the text is the
// same as it always was.
class Writer {
public:
    explicit Writer(int indent) : indent_(indent) {}

    // False when the value holds a number JSON can't express or a string
    // that isn't UTF-8.
    bool write(const JSONValue& value, int depth = 0) {
        const JSONValue::Storage& storage = value.storage();
        if (const auto* flag = std::get_if<bool>(&storage)) {
            out.append(*flag ? "true" : "false");
        } else if (const auto* number = std::get_if<double>(&storage)) {
            return writeNumber(*number);
        } else if (const auto* text = std::get_if<std::string>(&storage)) {
            return writeString(*text);
        } else if (const auto* items = std::get_if<JSONValue::Array>(&storage)) {
            if (items->empty()) return out.append("[]"), true;
            out.push_back('[');
            if (!writeItems(*items, depth)) return false;
            newline(depth);
            out.push_back(']');
        } else if (const auto* members = std::get_if<JSONValue::Object>(&storage)) {
            if (members->empty()) return out.append("{}"), true;
            out.push_back('{');
            bool first = true;
            for (const auto& [key, member] : *members) {
                if (!first) out.push_back(',');
                first = false;
                newline(depth + 1);
                if (!writeString(key)) return false;
                out.append(indent_ >= 0 ? ": " : ":");
                if (!write(member, depth + 1)) return false;
            }
            newline(depth);
            out.push_back('}');
        } else {
            out.append("null");
        }
        return true;
    }

    std::string out;

private:
    // A long list near the top (a show's sections, its library) is written
    // in a few parts side by side where the machine has the cores, and the
    // parts joined in order: the text is the same as written in one go.
    bool writeItems(const JSONValue::Array& items, int depth) {
        constexpr std::size_t itemsPerPart = 32;
        const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
        const std::size_t most = depth > 1 || inPart_ ? 1 : std::min<std::size_t>(cores, 4);
        const std::size_t parts = std::clamp<std::size_t>(items.size() / itemsPerPart, 1, most);
        const auto writeRange = [&](Writer& writer, std::size_t part) {
            const std::size_t from = items.size() * part / parts, to = items.size() * (part + 1) / parts;
            for (std::size_t i = from; i < to; ++i) {
                if (i > 0) writer.out.push_back(',');
                writer.newline(depth + 1);
                if (!writer.write(items[i], depth + 1)) return false;
            }
            return true;
        };
        std::vector<std::future<std::pair<bool, std::string>>> others;
        for (std::size_t part = 1; part < parts; ++part) {
            others.push_back(std::async(std::launch::async, [&, part] {
                Writer writer(indent_);
                writer.inPart_ = true;
                const bool written = writeRange(writer, part);
                return std::pair{written, std::move(writer.out)};
            }));
        }
        const bool inPart = std::exchange(inPart_, true);
        bool written = writeRange(*this, 0);
        inPart_ = inPart;
        for (auto& other : others) {
            auto [partWritten, text] = other.get();
            written = written && partWritten;
            out.append(text);
        }
        return written;
    }

    void newline(int depth) {
        if (indent_ < 0) return;
        out.push_back('\n');
        out.append(static_cast<std::size_t>(depth * indent_), ' ');
    }

    bool writeNumber(double number) {
        if (!std::isfinite(number)) return false;
        char buffer[64];
        char* end = nullptr;
        if (std::trunc(number) == number && std::fabs(number) < integerLimit)
            end = std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(number)).ptr;
        else
            end = nlohmann::detail::to_chars(buffer, buffer + sizeof buffer, number);
        out.append(buffer, end);
        return true;
    }

    bool writeString(std::string_view text) {
        if (!isUTF8(text)) return false;
        out.push_back('"');
        // Runs of plain characters go in whole: get_show writes megabytes.
        std::size_t plain = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char c = text[i];
            if (c != '"' && c != '\\' && static_cast<unsigned char>(c) >= 0x20) continue;
            out.append(text.substr(plain, i - plain));
            plain = i + 1;
            switch (c) {
            case '"': out.append("\\\""); break;
            case '\\': out.append("\\\\"); break;
            case '\b': out.append("\\b"); break;
            case '\f': out.append("\\f"); break;
            case '\n': out.append("\\n"); break;
            case '\r': out.append("\\r"); break;
            case '\t': out.append("\\t"); break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    static constexpr char hex[] = "0123456789abcdef";
                    out.append("\\u00");
                    out.push_back(hex[(c >> 4) & 0xf]);
                    out.push_back(hex[c & 0xf]);
                }
            }
        }
        out.append(text.substr(plain));
        out.push_back('"');
        return true;
    }

    // Well-formed UTF-8: no stray or missing continuation bytes, no overlong
    // forms, no surrogates, nothing past U+10FFFF.
    static bool isUTF8(std::string_view text) {
        for (std::size_t i = 0; i < text.size();) {
            const auto lead = static_cast<unsigned char>(text[i]);
            if (lead < 0x80) {
                ++i;
                continue;
            }
            int length = 0;
            unsigned char low = 0x80, high = 0xBF;
            if (lead >= 0xC2 && lead <= 0xDF) length = 2;
            else if (lead >= 0xE0 && lead <= 0xEF) {
                length = 3;
                if (lead == 0xE0) low = 0xA0;
                if (lead == 0xED) high = 0x9F;
            } else if (lead >= 0xF0 && lead <= 0xF4) {
                length = 4;
                if (lead == 0xF0) low = 0x90;
                if (lead == 0xF4) high = 0x8F;
            } else {
                return false;
            }
            if (i + static_cast<std::size_t>(length) > text.size()) return false;
            const auto second = static_cast<unsigned char>(text[i + 1]);
            if (second < low || second > high) return false;
            for (int k = 2; k < length; ++k) {
                const auto next = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
                if (next < 0x80 || next > 0xBF) return false;
            }
            i += static_cast<std::size_t>(length);
        }
        return true;
    }

    int indent_;
    bool inPart_ = false; // a part of a list already written side by side
};

std::optional<std::string> write(const JSONValue& value, int indent) {
    Writer writer(indent);
    if (!writer.write(value)) return std::nullopt;
    return std::move(writer.out);
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

    // Not inlined: GCC 12 then takes the inactive alternatives of the moved
    // variant for uninitialized reads (a false "maybe-uninitialized").
    [[gnu::noinline]] bool add(JSONValue value) {
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
