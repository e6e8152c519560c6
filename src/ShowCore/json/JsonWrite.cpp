#include "ShowCore/json/JsonWrite.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace velarion::showcore::json {

ShowJsonError EncodeFailure::error() const {
    Path path;
    for (auto it = innermostFirst.rbegin(); it != innermostFirst.rend(); ++it) {
        if (const auto* key = std::get_if<std::string_view>(&*it)) {
            path.pushKey(*key);
        } else {
            path.pushIndex(std::get<std::size_t>(*it));
        }
    }
    return ShowJsonError(path.text(), reason);
}

void TextOutput::grow(std::size_t count) { text.resize(std::max(text.size() * 2, used + count)); }

bool needsEscape(std::string_view text) {
    constexpr std::uint64_t ones = 0x0101010101010101ull;
    constexpr std::uint64_t highs = 0x8080808080808080ull;
    // A byte of `word` is zero: the classic borrow test, exact for the lowest one.
    auto hasZero = [](std::uint64_t word) { return ((word - ones) & ~word & highs) != 0; };
    const char* at = text.data();
    const char* const end = at + text.size();
    for (; end - at >= 8; at += 8) {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        // Bytes below 0x20 (~word leaves out those at or past 0x80, never escaped).
        const bool control = ((word - ones * 0x20) & ~word & highs) != 0;
        if (control || hasZero(word ^ (ones * '"')) || hasZero(word ^ (ones * '\\'))) {
            // A possible hit; settle it byte by byte.
            for (int i = 0; i < 8; ++i) {
                const auto c = static_cast<unsigned char>(at[i]);
                if (c < 0x20 || c == '"' || c == '\\') return true;
            }
        }
    }
    for (; at != end; ++at) {
        const auto c = static_cast<unsigned char>(*at);
        if (c < 0x20 || c == '"' || c == '\\') return true;
    }
    return false;
}

namespace {
void writeText(std::string_view text, EncodeContext& context) {
    if (!isValidUTF8(text)) context.fail("the text isn't valid UTF-8");
    context.writer.text(text);
}
} // namespace

void write(bool value, EncodeContext& context) { context.writer.Bool(value); }
void write(int value, EncodeContext& context) { context.writer.Int(value); }
void write(std::int64_t value, EncodeContext& context) { context.writer.Int64(value); }
void write(std::uint8_t value, EncodeContext& context) { context.writer.Uint(value); }
void write(std::uint16_t value, EncodeContext& context) { context.writer.Uint(value); }

void write(double value, EncodeContext& context) {
    if (!std::isfinite(value)) context.fail("the value isn't a finite number");
    context.writer.Double(value);
}

void write(const std::string& value, EncodeContext& context) { writeText(value, context); }

void write(const Uuid& value, EncodeContext& context) {
    // Uuid::text() in place, without a heap string for each of many identities.
    static constexpr char hex[] = "0123456789ABCDEF";
    char text[36];
    std::size_t at = 0;
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text[at++] = '-';
        text[at++] = hex[value.bytes[i] >> 4];
        text[at++] = hex[value.bytes[i] & 0x0F];
    }
    context.writer.plainString(std::string_view(text, 36));
}

void write(const ShowDate& value, EncodeContext& context) {
    if (!value.hasTextForm()) context.fail("the date is outside the years 0000 to 9999");
    context.writer.plainString(value.text());
}

void write(const ShowURL& value, EncodeContext& context) {
    if (!ShowURL::parse(value.text)) context.fail("\"" + value.text + "\" isn't an absolute URL");
    writeText(value.text, context);
}

void write(const DurationValue& value, EncodeContext& context) {
    context.writer.StartObject();
    context.key("seconds");
    context.writer.Double(value.seconds());
    context.writer.EndObject();
}

void write(const std::map<std::string, std::string>& values, EncodeContext& context) {
    context.writer.StartObject();
    for (const auto& entry : values) {
        const std::string& key = entry.first;
        const std::string& element = entry.second;
        within(std::string_view(key), [&] {
            if (!isValidUTF8(key)) context.fail("the key isn't valid UTF-8");
            context.writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
            writeText(element, context);
        });
    }
    context.writer.EndObject();
}

} // namespace velarion::showcore::json
