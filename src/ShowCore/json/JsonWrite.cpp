#include "ShowCore/json/JsonWrite.h"

#include <cmath>

namespace velarion::showcore::json {

namespace {
void writeText(std::string_view text, EncodeContext& context) {
    if (!isValidUTF8(text)) context.fail("the text isn't valid UTF-8");
    context.writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
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
    context.writer.String(text, 36);
}

void write(const ShowDate& value, EncodeContext& context) {
    if (!value.hasTextForm()) context.fail("the date is outside the years 0000 to 9999");
    const std::string text = value.text();
    context.writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
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
    for (const auto& [key, element] : values) {
        PathScope scope(context, std::string_view(key));
        if (!isValidUTF8(key)) context.fail("the key isn't valid UTF-8");
        context.writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
        writeText(element, context);
    }
    context.writer.EndObject();
}

} // namespace velarion::showcore::json
