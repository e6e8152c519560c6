#pragma once
// Reading the show graph from a parsed JSON tree; private to ShowCore.
//
// Records describe their fields once, in `visitFields(visitor, record)`
// (Fields*.h); the same list reads here and writes in JsonWrite.h, so a key
// can't be spelt two ways. An std::optional field is an optional key; every
// other field is required. Errors carry the path to the value.
//
// Thread: pure functions; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/DurationValue.h"
#include "ShowCore/ShowDate.h"
#include "ShowCore/ShowDocumentJson.h"
#include "ShowCore/ShowURL.h"

#include <rapidjson/document.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace velarion::showcore::json {

using Value = rapidjson::Value;

// Where in the document a value sits; rendered only when something fails.
class Path {
public:
    void pushKey(std::string_view key) { segments_.push_back({key, 0, false}); }
    void pushIndex(std::size_t index) { segments_.push_back({{}, index, true}); }
    void pop() { segments_.pop_back(); }
    std::string text() const;

private:
    struct Segment {
        std::string_view key;
        std::size_t index;
        bool isIndex;
    };
    std::vector<Segment> segments_;
};

template <class Context> struct PathScope {
    PathScope(Context& context, std::string_view key) : path(context.path) { path.pushKey(key); }
    PathScope(Context& context, std::size_t index) : path(context.path) { path.pushIndex(index); }
    ~PathScope() { path.pop(); }
    PathScope(const PathScope&) = delete;
    PathScope& operator=(const PathScope&) = delete;
    Path& path;
};

struct DecodeContext {
    Path path;
    [[noreturn]] void fail(std::string reason) const { throw ShowJsonError(path.text(), std::move(reason)); }
};

// A short name of a JSON value's type for error messages.
std::string_view typeName(const Value& value);

// Whether text is well-formed UTF-8 (no overlong forms, surrogates or code
// points past U+10FFFF); runs of ASCII are passed over eight bytes at a time.
bool isValidUTF8(std::string_view text);

// The length of the well-formed UTF-8 sequence of more than one byte that
// starts at `at`, by the same rules; 0 when there is none.
std::size_t utf8SequenceLength(const char* at, const char* end);

// Parses UTF-8 JSON text strictly (valid encoding, numbers converted exactly,
// deep nesting on the heap, not the stack). The text is parsed in place: the
// document's strings point into it, so it must outlive the document, and it
// is changed.
void parse(std::string& text, rapidjson::Document& document);


// Converts a JSON number's text exactly (std::from_chars): a whole number
// that fits is `whole`, anything else `number`; below a double's range reads
// as zero. Fails for text that isn't a number or lies above a double's range.
enum class NumberFault { none, malformed, tooLarge };
NumberFault convertNumber(std::string_view literal, bool& isWhole, std::int64_t& whole, double& number);

// Variants with payload name their cases; `wrapped[i]` puts case i's payload
// one level deeper, under "_0".
template <class Variant> struct VariantForm;

template <class T> inline constexpr bool isOptional = false;
template <class T> inline constexpr bool isOptional<std::optional<T>> = true;

template <class E>
concept NamedCase = std::is_enum_v<E> && requires { caseNames<E>.size(); };

template <class V>
concept NamedVariant = requires { VariantForm<V>::names; };

// Short texts (keys, case names) compared in line: cheaper than a call to
// memcmp for the millions of keys of a large graph (JsonQuickRead.h).
inline bool sameText(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i]) return false;
    }
    return true;
}

inline constexpr std::string_view wrongKeyCount = "Invalid number of keys found, expected one.";

// ---------------------------------------------------------------- leaves

void read(const Value& value, bool& out, DecodeContext& context);
void read(const Value& value, int& out, DecodeContext& context);
void read(const Value& value, std::int64_t& out, DecodeContext& context);
void read(const Value& value, std::uint8_t& out, DecodeContext& context);
void read(const Value& value, std::uint16_t& out, DecodeContext& context);
void read(const Value& value, double& out, DecodeContext& context);
void read(const Value& value, std::string& out, DecodeContext& context);
void read(const Value& value, Uuid& out, DecodeContext& context);
void read(const Value& value, ShowDate& out, DecodeContext& context);
void read(const Value& value, ShowURL& out, DecodeContext& context);
void read(const Value& value, DurationValue& out, DecodeContext& context);
[[noreturn]] void failUnknownCase(std::string_view text, const std::string_view* names, std::size_t count,
                                  DecodeContext& context);

template <NamedCase E> void read(const Value& value, E& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected text, found " + std::string(typeName(value)));
    const std::string_view text(value.GetString(), value.GetStringLength());
    auto parsed = parseCase<E>(text);
    if (!parsed) failUnknownCase(text, caseNames<E>.data(), caseNames<E>.size(), context);
    out = *parsed;
}

// ---------------------------------------------------------------- containers

template <class T> void read(const Value& value, std::optional<T>& out, DecodeContext& context) {
    if (value.IsNull()) {
        out.reset();
        return;
    }
    T inner{};
    read(value, inner, context);
    out = std::move(inner);
}

template <class T> void read(const Value& value, std::vector<T>& out, DecodeContext& context) {
    if (!value.IsArray()) context.fail("expected a list, found " + std::string(typeName(value)));
    out.clear();
    out.reserve(value.Size());
    for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
        PathScope scope(context, std::size_t{i});
        read(value[i], out.emplace_back(), context);
    }
}

template <NamedCase E> void read(const Value& value, std::set<E>& out, DecodeContext& context) {
    std::vector<E> elements;
    read(value, elements, context);
    out = std::set<E>(elements.begin(), elements.end());
}

void read(const Value& value, std::map<std::string, std::string>& out, DecodeContext& context);

// ---------------------------------------------------------------- records

// Reads the fields of one JSON object. Writers put keys in field order, so
// the next key is looked for where the last one was found before searching.
class FieldReader {
public:
    FieldReader(const Value& object, DecodeContext& context)
        : object_(object), context_(context), next_(object.MemberBegin()) {}

    template <class T> void operator()(std::string_view key, T& field) {
        const Value* value = find(key);
        if (value == nullptr || (isOptional<T> && value->IsNull())) {
            if constexpr (isOptional<T>) {
                field.reset();
            } else {
                PathScope scope(context_, key);
                context_.fail("required key is missing");
            }
            return;
        }
        PathScope scope(context_, key);
        read(*value, field, context_);
    }

private:
    const Value* find(std::string_view key);

    const Value& object_;
    DecodeContext& context_;
    Value::ConstMemberIterator next_;
};

template <class T>
concept Record = requires(FieldReader& reader, T& record) { visitFields(reader, record); };

template <Record T> void read(const Value& value, T& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    FieldReader reader(value, context);
    visitFields(reader, out);
}

// ---------------------------------------------------------------- variants

template <class Variant, std::size_t I>
void readCase(const Value& payload, Variant& out, DecodeContext& context) {
    std::variant_alternative_t<I, Variant> value{};
    if constexpr (VariantForm<Variant>::wrapped[I]) {
        FieldReader reader(payload, context);
        reader("_0", value);
    } else {
        read(payload, value, context);
    }
    out = std::move(value);
}

template <class Variant, std::size_t... I>
void readCaseAt(std::size_t index, const Value& payload, Variant& out, DecodeContext& context,
                std::index_sequence<I...>) {
    ((index == I ? readCase<Variant, I>(payload, out, context) : void()), ...);
}

template <NamedVariant Variant> void read(const Value& value, Variant& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    if (value.MemberCount() != 1) context.fail(std::string(wrongKeyCount));
    const auto& member = *value.MemberBegin();
    const std::string_view name(member.name.GetString(), member.name.GetStringLength());
    constexpr auto& names = VariantForm<Variant>::names;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] != name) continue;
        PathScope scope(context, names[i]);
        if (!member.value.IsObject()) {
            context.fail("expected an object, found " + std::string(typeName(member.value)));
        }
        readCaseAt(i, member.value, out, context, std::make_index_sequence<std::variant_size_v<Variant>>{});
        return;
    }
    failUnknownCase(name, names.data(), names.size(), context);
}

} // namespace velarion::showcore::json
