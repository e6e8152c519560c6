#include "LiveModel/json/JsonCodec.h"

#include <rapidjson/encodedstream.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

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

namespace {

// Numbers reach the document as text and are converted here with
// std::from_chars, which rounds correctly. RapidJSON 1.1.0's own precise
// conversion misreads some numbers: "0e308" comes out as an arbitrary value,
// "1.8e308" as NaN, a 309-digit integer as infinity.
class NumberConverter {
public:
    explicit NumberConverter(rapidjson::Document& document) : document_(document) {}

    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        const std::string_view literal(text, length);
        const char* end = text + length;
        if (literal.find_first_of(".eE") == std::string_view::npos) {
            std::int64_t whole = 0;
            if (std::from_chars(text, end, whole).ec == std::errc{}) return document_.Int64(whole);
            std::uint64_t positive = 0;
            if (std::from_chars(text, end, positive).ec == std::errc{}) {
                return document_.Uint64(positive);
            }
        }
        double number = 0;
        const auto [rest, error] = std::from_chars(text, end, number);
        if (rest != end) return false; // the reader checked the grammar; can't happen
        if (error == std::errc::result_out_of_range) {
            if (isTooLarge(literal)) {
                tooLarge_ = true;
                return false;
            }
            // Too small for a double: the nearest one is zero.
            number = literal.front() == '-' ? -0.0 : 0.0;
        }
        return document_.Double(number);
    }

    // True once a number too large for a double stopped the reading.
    bool sawTooLarge() const { return tooLarge_; }

    // Everything else goes to the document as it is.
    bool Null() { return document_.Null(); }
    bool Bool(bool value) { return document_.Bool(value); }
    bool Int(int value) { return document_.Int(value); }
    bool Uint(unsigned value) { return document_.Uint(value); }
    bool Int64(std::int64_t value) { return document_.Int64(value); }
    bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
    bool Double(double value) { return document_.Double(value); }
    bool String(const char* text, rapidjson::SizeType length, bool copy) {
        return document_.String(text, length, copy);
    }
    bool StartObject() { return document_.StartObject(); }
    bool Key(const char* text, rapidjson::SizeType length, bool copy) {
        return document_.Key(text, length, copy);
    }
    bool EndObject(rapidjson::SizeType members) { return document_.EndObject(members); }
    bool StartArray() { return document_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) { return document_.EndArray(elements); }

private:
    // Whether a number out of a double's range lies above it rather than
    // below: the power of ten of its first significant digit decides.
    static bool isTooLarge(std::string_view literal) {
        const auto exponentAt = literal.find_first_of("eE");
        std::string_view mantissa = literal.substr(0, exponentAt);
        if (mantissa.front() == '-') mantissa.remove_prefix(1);
        const auto point = std::min(mantissa.find('.'), mantissa.size());
        const auto first = mantissa.find_first_not_of("0.");
        if (first == std::string_view::npos) return false; // zero is never out of range
        long long power = first < point ? static_cast<long long>(point - first) - 1
                                        : -static_cast<long long>(first - point);
        if (exponentAt != std::string_view::npos) {
            std::string_view exponent = literal.substr(exponentAt + 1);
            if (exponent.front() == '+') exponent.remove_prefix(1);
            long long shift = 0;
            const auto result =
                std::from_chars(exponent.data(), exponent.data() + exponent.size(), shift);
            // An exponent beyond even a long long decides by its sign alone.
            if (result.ec != std::errc{}) return exponent.front() != '-';
            power += shift;
        }
        return power > 0;
    }

    rapidjson::Document& document_;
    bool tooLarge_ = false;
};

} // namespace

void parse(std::string_view text, rapidjson::Document& document) {
    constexpr unsigned flags = rapidjson::kParseIterativeFlag |
                               rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream bytes(text.data(), text.size());
    rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> input(bytes);
    rapidjson::Reader reader;
    rapidjson::ParseResult result;
    bool tooLarge = false;
    auto read = [&](rapidjson::Document& target) {
        NumberConverter converter(target);
        result = reader.Parse<flags>(input, converter);
        tooLarge = converter.sawTooLarge();
        return !result.IsError();
    };
    document.Populate(read);
    if (result.IsError()) {
        const char* reason = rapidjson::GetParseError_En(
            tooLarge ? rapidjson::kParseErrorNumberTooBig : result.Code());
        throw DecodeError({}, std::string("the file isn't valid JSON (") + reason + " At byte " +
                                  std::to_string(result.Offset()) + ".)");
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
