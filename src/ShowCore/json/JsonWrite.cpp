#include "ShowCore/json/JsonWrite.h"

#include <cmath>

namespace velarion::showcore::json {

namespace {
void writeText(std::string_view text, EncodeContext& context) {
    if (!context.writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()))) {
        context.fail("the text isn't valid UTF-8");
    }
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
    const std::string text = value.text();
    context.writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void write(const ShowDate& value, EncodeContext& context) {
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
        if (!context.writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()))) {
            context.fail("the key isn't valid UTF-8");
        }
        writeText(element, context);
    }
    context.writer.EndObject();
}

} // namespace velarion::showcore::json
