#include "ShowCore/json/JsonRead.h"

#include "ShowCore/ShowValueError.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <cmath>
#include <limits>
#include <system_error>

namespace velarion::showcore {

namespace {
std::string joined(const std::string& path, const std::string& reason) {
    return path.empty() ? reason : path + ": " + reason;
}
} // namespace

ShowJsonError::ShowJsonError(std::string path_, std::string reason_)
    : std::runtime_error(joined(path_, reason_)), path(std::move(path_)), reason(std::move(reason_)) {}

} // namespace velarion::showcore

namespace velarion::showcore::json {

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

void failUnknownCase(std::string_view text, const std::string_view* names, std::size_t count,
                     DecodeContext& context) {
    std::string known;
    for (std::size_t i = 0; i < count; ++i) known += (i == 0 ? "" : ", ") + std::string(names[i]);
    context.fail("\"" + std::string(text) + "\" isn't one of " + known);
}

void read(const Value& value, bool& out, DecodeContext& context) {
    if (!value.IsBool()) context.fail("expected a boolean, found " + std::string(typeName(value)));
    out = value.GetBool();
}

namespace {

// A whole number within [low, high]; one written with a zero fraction
// ("3.0") is still whole.
template <class Integer>
Integer readWhole(const Value& value, DecodeContext& context, std::int64_t low, std::int64_t high) {
    if (value.IsInt64()) {
        const std::int64_t number = value.GetInt64();
        if (number < low || number > high) {
            context.fail(std::to_string(number) + " is outside " + std::to_string(low) + " to " + std::to_string(high));
        }
        return static_cast<Integer>(number);
    }
    if (!value.IsNumber()) context.fail("expected a whole number, found " + std::string(typeName(value)));
    const double number = value.GetDouble();
    if (std::trunc(number) != number || number < static_cast<double>(low) || number > static_cast<double>(high) ||
        number >= 9.2e18) {
        context.fail("expected a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    }
    return static_cast<Integer>(number);
}

} // namespace

void read(const Value& value, int& out, DecodeContext& context) {
    out = readWhole<int>(value, context, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
}

void read(const Value& value, std::int64_t& out, DecodeContext& context) {
    out = readWhole<std::int64_t>(value, context, std::numeric_limits<std::int64_t>::min(),
                                  std::numeric_limits<std::int64_t>::max());
}

void read(const Value& value, std::uint8_t& out, DecodeContext& context) {
    out = readWhole<std::uint8_t>(value, context, 0, 255);
}

void read(const Value& value, std::uint16_t& out, DecodeContext& context) {
    out = readWhole<std::uint16_t>(value, context, 0, 65535);
}

void read(const Value& value, double& out, DecodeContext& context) {
    if (!value.IsNumber()) context.fail("expected a number, found " + std::string(typeName(value)));
    out = value.GetDouble();
}

void read(const Value& value, std::string& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected text, found " + std::string(typeName(value)));
    out.assign(value.GetString(), value.GetStringLength());
}

namespace {

// Uuid::parse by table, for the many identities of a large graph; the same
// canonical text in either case.
constexpr std::array<signed char, 256> hexDigits = [] {
    std::array<signed char, 256> table{};
    table.fill(-1);
    for (int i = 0; i < 10; ++i) table['0' + i] = static_cast<signed char>(i);
    for (int i = 0; i < 6; ++i) {
        table['a' + i] = static_cast<signed char>(10 + i);
        table['A' + i] = static_cast<signed char>(10 + i);
    }
    return table;
}();

bool parseUuid(std::string_view text, Uuid& out) {
    if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') return false;
    std::size_t at = 0;
    for (std::size_t byte = 0; byte < 16; ++byte) {
        if (at == 8 || at == 13 || at == 18 || at == 23) ++at;
        const int high = hexDigits[static_cast<unsigned char>(text[at])];
        const int low = hexDigits[static_cast<unsigned char>(text[at + 1])];
        if ((high | low) < 0) return false;
        out.bytes[byte] = static_cast<std::uint8_t>(high << 4 | low);
        at += 2;
    }
    return true;
}

} // namespace

void read(const Value& value, Uuid& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected a UUID, found " + std::string(typeName(value)));
    const std::string_view text(value.GetString(), value.GetStringLength());
    if (!parseUuid(text, out)) context.fail("\"" + std::string(text) + "\" isn't a UUID");
}

void read(const Value& value, ShowDate& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected a date, found " + std::string(typeName(value)));
    const std::string_view text(value.GetString(), value.GetStringLength());
    auto parsed = ShowDate::parse(text);
    if (!parsed) context.fail("\"" + std::string(text) + "\" isn't a date like 2026-11-24T08:18:34.125Z");
    out = *parsed;
}

void read(const Value& value, ShowURL& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected a URL, found " + std::string(typeName(value)));
    const std::string_view text(value.GetString(), value.GetStringLength());
    auto parsed = ShowURL::parse(text);
    if (!parsed) context.fail("\"" + std::string(text) + "\" isn't an absolute URL");
    out = std::move(*parsed);
}

void read(const Value& value, DurationValue& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    double seconds = 0;
    FieldReader reader(value, context);
    reader("seconds", seconds);
    try {
        out = DurationValue::make(seconds);
    } catch (const ShowValueError& error) {
        PathScope scope(context, "seconds");
        context.fail(error.what());
    }
}

void read(const Value& value, std::map<std::string, std::string>& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    out.clear();
    for (auto it = value.MemberBegin(); it != value.MemberEnd(); ++it) {
        const std::string_view key(it->name.GetString(), it->name.GetStringLength());
        PathScope scope(context, key);
        std::string element;
        read(it->value, element, context);
        out.insert_or_assign(std::string(key), std::move(element));
    }
}

const Value* FieldReader::find(std::string_view key) {
    auto matches = [&](Value::ConstMemberIterator it) {
        return std::string_view(it->name.GetString(), it->name.GetStringLength()) == key;
    };
    const auto end = object_.MemberEnd();
    if (next_ != end && matches(next_)) return &(next_++)->value;
    for (auto it = object_.MemberBegin(); it != end; ++it) {
        if (matches(it)) {
            next_ = it + 1;
            return &it->value;
        }
    }
    return nullptr;
}

namespace {

// Whether a number outside a double's range lies above it: the power of
// ten of its first significant digit decides.
bool isTooLarge(std::string_view literal) {
    const auto exponentAt = literal.find_first_of("eE");
    std::string_view mantissa = literal.substr(0, exponentAt);
    if (mantissa.front() == '-') mantissa.remove_prefix(1);
    const auto point = std::min(mantissa.find('.'), mantissa.size());
    const auto first = mantissa.find_first_not_of("0.");
    if (first == std::string_view::npos) return false;
    long long power = first < point ? static_cast<long long>(point - first) - 1
                                    : -static_cast<long long>(first - point);
    if (exponentAt != std::string_view::npos) {
        std::string_view exponent = literal.substr(exponentAt + 1);
        if (exponent.front() == '+') exponent.remove_prefix(1);
        long long shift = 0;
        const auto result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), shift);
        if (result.ec != std::errc{}) return exponent.front() != '-';
        power += shift;
    }
    return power > 0;
}

} // namespace

NumberFault convertNumber(std::string_view literal, bool& isWhole, std::int64_t& whole, double& number) {
    const char* text = literal.data();
    const char* end = text + literal.size();
    if (literal.find_first_of(".eE") == std::string_view::npos) {
        if (std::from_chars(text, end, whole).ec == std::errc{}) {
            isWhole = true;
            return NumberFault::none;
        }
    }
    isWhole = false;
    const auto [rest, error] = std::from_chars(text, end, number);
    if (rest != end) return NumberFault::malformed;
    if (error == std::errc::result_out_of_range) {
        if (isTooLarge(literal)) return NumberFault::tooLarge;
        number = literal.front() == '-' ? -0.0 : 0.0; // below a double's range
    }
    return NumberFault::none;
}

namespace {

// Numbers reach the tree as text and are converted with std::from_chars,
// which rounds correctly; RapidJSON 1.1.0's own conversion misreads some
// ("0e308", "1.8e308", 309-digit integers).
class NumberConverter {
public:
    explicit NumberConverter(rapidjson::Document& document) : document_(document) {}

    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        bool isWhole = false;
        std::int64_t whole = 0;
        double number = 0;
        switch (convertNumber(std::string_view(text, length), isWhole, whole, number)) {
        case NumberFault::none: return isWhole ? document_.Int64(whole) : document_.Double(number);
        case NumberFault::tooLarge: tooLarge_ = true; return false;
        case NumberFault::malformed: return false;
        }
        return false;
    }

    bool sawTooLarge() const { return tooLarge_; }

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
    bool Key(const char* text, rapidjson::SizeType length, bool copy) { return document_.Key(text, length, copy); }
    bool EndObject(rapidjson::SizeType members) { return document_.EndObject(members); }
    bool StartArray() { return document_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) { return document_.EndArray(elements); }

private:
    rapidjson::Document& document_;
    bool tooLarge_ = false;
};

} // namespace

std::size_t utf8SequenceLength(const char* at, const char* end) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(at);
    const std::size_t available = static_cast<std::size_t>(end - at);
    const unsigned lead = bytes[0];
    std::size_t length;
    unsigned low = 0x80, high = 0xBF; // the allowed range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F; // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return 0;
    }
    if (length > available || bytes[1] < low || bytes[1] > high) return 0;
    for (std::size_t k = 2; k < length; ++k) {
        if (bytes[k] < 0x80 || bytes[k] > 0xBF) return 0;
    }
    return length;
}

bool isValidUTF8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    std::size_t i = 0;
    while (i < size) {
        if (i + 8 <= size) {
            std::uint64_t word;
            std::memcpy(&word, bytes + i, 8);
            if ((word & 0x8080808080808080ull) == 0) {
                i += 8;
                continue;
            }
        }
        if (bytes[i] < 0x80) {
            ++i;
            continue;
        }
        const std::size_t length = utf8SequenceLength(text.data() + i, text.data() + size);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

void parse(std::string& text, rapidjson::Document& document) {
    // The encoding is checked once over the whole text, faster than string
    // by string inside the reader.
    if (!isValidUTF8(text)) throw ShowJsonError({}, "the text isn't valid UTF-8");
    // In place, a NUL byte would end the text early; JSON never holds one raw.
    if (const auto nul = text.find('\0'); nul != std::string::npos) {
        throw ShowJsonError({}, "the text isn't valid JSON (a NUL byte at byte " + std::to_string(nul) + ".)");
    }
    constexpr unsigned flags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseInsituFlag;
    rapidjson::InsituStringStream input(text.data());
    rapidjson::Reader reader;
    rapidjson::ParseResult result;
    bool tooLarge = false;
    auto generate = [&](rapidjson::Document& target) {
        NumberConverter converter(target);
        result = reader.Parse<flags>(input, converter);
        tooLarge = converter.sawTooLarge();
        return !result.IsError();
    };
    document.Populate(generate);
    if (result.IsError()) {
        const char* reason =
            rapidjson::GetParseError_En(tooLarge ? rapidjson::kParseErrorNumberTooBig : result.Code());
        throw ShowJsonError({}, std::string("the text isn't valid JSON (") + reason + " At byte " +
                                    std::to_string(result.Offset()) + ".)");
    }
}

} // namespace velarion::showcore::json
