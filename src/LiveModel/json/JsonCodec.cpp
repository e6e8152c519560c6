#include "LiveModel/json/JsonCodec.h"

#include <rapidjson/error/en.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace velarion::json {

std::string Path::text() const {
    std::string out;
    for (const Segment& segment : segments_) {
        if (segment.isIndex) {
            out += '[' + std::to_string(segment.index) + ']';
        } else {
            if (!out.empty()) out += '.';
            out.append(segment.key);
        }
    }
    return out;
}

namespace {
std::string joined(const std::string& path, const std::string& reason) {
    return path.empty() ? reason : path + ": " + reason;
}
} // namespace

DecodeError::DecodeError(std::string path_, std::string reason_)
    : std::runtime_error(joined(path_, reason_)), path(std::move(path_)),
      reason(std::move(reason_)) {}

EncodeError::EncodeError(std::string path_, std::string reason_)
    : std::runtime_error(joined(path_, reason_)), path(std::move(path_)),
      reason(std::move(reason_)) {}

void DecodeContext::fail(std::string reason) const {
    throw DecodeError(path.text(), std::move(reason));
}

void EncodeContext::fail(std::string reason) const {
    throw EncodeError(path.text(), std::move(reason));
}

std::string_view typeName(const Value& value) {
    switch (value.GetType()) {
    case rapidjson::kNullType: return "null";
    case rapidjson::kFalseType:
    case rapidjson::kTrueType: return "a boolean";
    case rapidjson::kObjectType: return "an object";
    case rapidjson::kArrayType: return "a list";
    case rapidjson::kStringType: return "text";
    case rapidjson::kNumberType: return "a number";
    }
    return "something else";
}

void read(const Value& value, bool& out, DecodeContext& context) {
    if (!value.IsBool()) context.fail("expected a boolean, found " + std::string(typeName(value)));
    out = value.GetBool();
}

void read(const Value& value, int& out, DecodeContext& context) {
    if (value.IsInt()) {
        out = value.GetInt();
        return;
    }
    if (!value.IsNumber()) context.fail("expected a whole number, found " + std::string(typeName(value)));
    // A whole number written with a fraction part (3.0) is still whole.
    const double number = value.GetDouble();
    if (std::trunc(number) != number || number < std::numeric_limits<int>::min() ||
        number > std::numeric_limits<int>::max()) {
        context.fail("expected a whole number, found " + std::to_string(number));
    }
    out = static_cast<int>(number);
}

void read(const Value& value, double& out, DecodeContext& context) {
    if (!value.IsNumber()) context.fail("expected a number, found " + std::string(typeName(value)));
    out = value.GetDouble();
}

void read(const Value& value, std::string& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected text, found " + std::string(typeName(value)));
    out.assign(value.GetString(), value.GetStringLength());
}

void read(const Value& value, Uuid& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected a UUID, found " + std::string(typeName(value)));
    auto parsed = Uuid::parse(std::string_view(value.GetString(), value.GetStringLength()));
    if (!parsed) context.fail("\"" + std::string(value.GetString()) + "\" isn't a UUID");
    out = *parsed;
}

Value write(bool value, EncodeContext&) { return Value(value); }
Value write(int value, EncodeContext&) { return Value(value); }

Value write(double value, EncodeContext& context) {
    if (!std::isfinite(value)) context.fail("the value isn't a finite number");
    return Value(value);
}

Value write(const std::string& value, EncodeContext& context) {
    return Value(value.data(), static_cast<rapidjson::SizeType>(value.size()), context.allocator);
}

Value write(const Uuid& value, EncodeContext& context) {
    const std::string text = value.text();
    return Value(text.data(), static_cast<rapidjson::SizeType>(text.size()), context.allocator);
}

void parse(std::string_view text, rapidjson::Document& document) {
    constexpr unsigned flags = rapidjson::kParseIterativeFlag |
                               rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseFullPrecisionFlag;
    document.Parse<flags>(text.data(), text.size());
    if (document.HasParseError()) {
        throw DecodeError(
            {}, std::string("the file isn't valid JSON (") +
                    rapidjson::GetParseError_En(document.GetParseError()) + " At byte " +
                    std::to_string(document.GetErrorOffset()) + ".)");
    }
}

namespace {

using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

void writeSorted(const Value& value, Writer& writer) {
    switch (value.GetType()) {
    case rapidjson::kObjectType: {
        std::vector<const Value::Member*> members;
        members.reserve(value.MemberCount());
        for (auto it = value.MemberBegin(); it != value.MemberEnd(); ++it) members.push_back(&*it);
        std::sort(members.begin(), members.end(), [](const auto* a, const auto* b) {
            return std::string_view(a->name.GetString(), a->name.GetStringLength()) <
                   std::string_view(b->name.GetString(), b->name.GetStringLength());
        });
        writer.StartObject();
        for (const auto* member : members) {
            writer.Key(member->name.GetString(), member->name.GetStringLength());
            writeSorted(member->value, writer);
        }
        writer.EndObject();
        break;
    }
    case rapidjson::kArrayType:
        writer.StartArray();
        for (const Value& element : value.GetArray()) writeSorted(element, writer);
        writer.EndArray();
        break;
    default:
        value.Accept(writer);
    }
}

} // namespace

std::string toSortedPrettyText(const Value& value, std::size_t sizeHint) {
    rapidjson::StringBuffer buffer(nullptr, sizeHint > 0 ? sizeHint : 4096);
    Writer writer(buffer);
    writer.SetIndent(' ', 2);
    writeSorted(value, writer);
    return std::string(buffer.GetString(), buffer.GetSize());
}

} // namespace velarion::json
