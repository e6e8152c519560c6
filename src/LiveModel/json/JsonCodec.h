#pragma once
// The machinery behind the show document's JSON form; private to LiveModel.
//
// Records describe their fields once, in `visitFields(visitor, record)`; the
// same list reads and writes them, so a key can't be spelt two ways. An
// std::optional field is an optional key (omitted when empty, absent or null
// reads as none); every other field is required. Errors carry the path to the
// value ("sections[2].cues[5]") so the operator can find the fault.
//
// Thread: pure functions; any thread.

#include "LiveModel/EnumNames.h"
#include "LiveModel/Shared.h"
#include "LiveModel/SharedList.h"
#include "Identity/Uuid.h"

#include <rapidjson/document.h>

#include <cmath>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace velarion::json {

using Value = rapidjson::Value;
using Allocator = rapidjson::Document::AllocatorType;

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

struct DecodeError : std::runtime_error {
    DecodeError(std::string path, std::string reason);
    std::string path;
    std::string reason;
};

struct EncodeError : std::runtime_error {
    EncodeError(std::string path, std::string reason);
    std::string path;
    std::string reason;
};

struct DecodeContext {
    Path path;
    [[noreturn]] void fail(std::string reason) const;
};

struct EncodeContext {
    Allocator& allocator;
    Path path;
    [[noreturn]] void fail(std::string reason) const;
};

// A short name of a JSON value's type for error messages.
std::string_view typeName(const Value& value);

// Scoped path segment.
template <class Context> struct PathScope {
    PathScope(Context& context, std::string_view key) : path(context.path) { path.pushKey(key); }
    PathScope(Context& context, std::size_t index) : path(context.path) { path.pushIndex(index); }
    ~PathScope() { path.pop(); }
    PathScope(const PathScope&) = delete;
    PathScope& operator=(const PathScope&) = delete;
    Path& path;
};

template <class T> inline constexpr bool isOptional = false;
template <class T> inline constexpr bool isOptional<std::optional<T>> = true;

template <class E>
concept NamedEnum = std::is_enum_v<E> && requires { enumNames<E>.size(); };

// ---------------------------------------------------------------- reading

void read(const Value& value, bool& out, DecodeContext& context);
void read(const Value& value, int& out, DecodeContext& context);
void read(const Value& value, double& out, DecodeContext& context);
void read(const Value& value, std::string& out, DecodeContext& context);
void read(const Value& value, Uuid& out, DecodeContext& context);

template <NamedEnum E> void read(const Value& value, E& out, DecodeContext& context) {
    if (!value.IsString()) context.fail("expected text, found " + std::string(typeName(value)));
    const std::string_view text(value.GetString(), value.GetStringLength());
    auto parsed = parseEnum<E>(text);
    if (!parsed) {
        std::string known;
        for (auto name : enumNames<E>) known += (known.empty() ? "" : ", ") + std::string(name);
        context.fail("\"" + std::string(text) + "\" isn't one of " + known);
    }
    out = *parsed;
}

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
        T element{};
        read(value[i], element, context);
        out.push_back(std::move(element));
    }
}

template <class T>
void read(const Value& value, std::map<std::string, T>& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    out.clear();
    for (auto it = value.MemberBegin(); it != value.MemberEnd(); ++it) {
        std::string key(it->name.GetString(), it->name.GetStringLength());
        PathScope scope(context, std::string_view(it->name.GetString(), it->name.GetStringLength()));
        T element{};
        read(it->value, element, context);
        out.insert_or_assign(std::move(key), std::move(element));
    }
}

template <class T> void read(const Value& value, Shared<T>& out, DecodeContext& context) {
    T inner{};
    read(value, inner, context);
    out = Shared<T>(std::move(inner));
}

template <class T> void read(const Value& value, SharedList<T>& out, DecodeContext& context) {
    std::vector<T> elements;
    read(value, elements, context);
    out = SharedList<T>(std::move(elements));
}

// Reads the fields of one JSON object into a record.
class FieldReader {
public:
    // A lenient reader gives missing required keys their default value, and
    // reads a key present with null as missing.
    FieldReader(const Value& object, DecodeContext& context, bool lenient = false)
        : object_(object), context_(context), lenient_(lenient) {}

    const Value* find(std::string_view key) const {
        auto it = object_.FindMember(
            Value(rapidjson::StringRef(key.data(), static_cast<rapidjson::SizeType>(key.size()))));
        return it == object_.MemberEnd() ? nullptr : &it->value;
    }

    template <class T> void operator()(std::string_view key, T& field) {
        const Value* value = find(key);
        if (value == nullptr || ((isOptional<T> || lenient_) && value->IsNull())) {
            if constexpr (isOptional<T>) {
                field.reset();
            } else if (!lenient_) {
                context_.fail("key \"" + std::string(key) + "\" is missing");
            }
            return;
        }
        PathScope scope(context_, key);
        read(*value, field, context_);
    }

    DecodeContext& context() { return context_; }

private:
    const Value& object_;
    DecodeContext& context_;
    bool lenient_;
};

template <class T>
concept Record = requires(FieldReader& reader, T& record) { visitFields(reader, record); };

template <Record T> void read(const Value& value, T& out, DecodeContext& context) {
    if (!value.IsObject()) context.fail("expected an object, found " + std::string(typeName(value)));
    FieldReader reader(value, context);
    visitFields(reader, out);
}

// ---------------------------------------------------------------- writing

Value write(bool value, EncodeContext& context);
Value write(int value, EncodeContext& context);
Value write(double value, EncodeContext& context);
Value write(const std::string& value, EncodeContext& context);
Value write(const Uuid& value, EncodeContext& context);

template <NamedEnum E> Value write(E value, EncodeContext&) {
    const std::string_view name = toString(value);
    return Value(rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size())));
}

// A JSON array of every element of a vector or SharedList.
template <class List> Value writeList(const List& values, EncodeContext& context) {
    Value array(rapidjson::kArrayType);
    array.Reserve(static_cast<rapidjson::SizeType>(values.size()), context.allocator);
    for (std::size_t i = 0; i < values.size(); ++i) {
        PathScope scope(context, i);
        array.PushBack(write(values[i], context), context.allocator);
    }
    return array;
}

template <class T> Value write(const std::vector<T>& values, EncodeContext& context) {
    return writeList(values, context);
}

template <class T>
Value write(const std::map<std::string, T>& values, EncodeContext& context) {
    Value object(rapidjson::kObjectType);
    for (const auto& [key, element] : values) {
        PathScope scope(context, std::string_view(key));
        Value name(key.data(), static_cast<rapidjson::SizeType>(key.size()), context.allocator);
        object.AddMember(name, write(element, context), context.allocator);
    }
    return object;
}

template <class T> Value write(const Shared<T>& value, EncodeContext& context) {
    return write(value.get(), context);
}

template <class T> Value write(const SharedList<T>& values, EncodeContext& context) {
    return writeList(values, context);
}

// Writes the fields of a record into one JSON object; keys are static text.
class FieldWriter {
public:
    FieldWriter(Value& object, EncodeContext& context) : object_(object), context_(context) {}

    template <class T> void operator()(std::string_view key, const T& field) {
        if constexpr (isOptional<T>) {
            if (!field) return;
            add(key, *field);
        } else {
            add(key, field);
        }
    }

    EncodeContext& context() { return context_; }

private:
    template <class T> void add(std::string_view key, const T& field) {
        PathScope scope(context_, key);
        object_.AddMember(
            Value(rapidjson::StringRef(key.data(), static_cast<rapidjson::SizeType>(key.size()))),
            write(field, context_), context_.allocator);
    }

    Value& object_;
    EncodeContext& context_;
};

template <class T>
concept WritableRecord = requires(FieldWriter& writer, const T& record) {
    visitFields(writer, record);
};

template <WritableRecord T> Value write(const T& record, EncodeContext& context) {
    Value object(rapidjson::kObjectType);
    FieldWriter writer(object, context);
    visitFields(writer, record);
    return object;
}

// ------------------------------------------------- variants with payload
//
// A variant is an object of exactly one key, its case name. The case's
// payload is the object under that key, described by the alternative's own
// visitFields; with `wrapsPayload` it sits one level deeper, under "_0".

template <class Variant> struct VariantForm; // names, wrapsPayload

inline constexpr std::string_view wrongKeyCount = "Invalid number of keys found, expected one.";

template <class Variant, std::size_t I>
void readCase(const Value& payload, Variant& out, DecodeContext& context) {
    using Alternative = std::variant_alternative_t<I, Variant>;
    Alternative value{};
    if constexpr (VariantForm<Variant>::wrapsPayload) {
        if (!payload.IsObject()) {
            context.fail("expected an object, found " + std::string(typeName(payload)));
        }
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

template <class Variant>
    requires requires { VariantForm<Variant>::names; }
void read(const Value& value, Variant& out, DecodeContext& context) {
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
        readCaseAt(i, member.value, out, context,
                   std::make_index_sequence<std::variant_size_v<Variant>>{});
        return;
    }
    context.fail("\"" + std::string(name) + "\" isn't a known case");
}

template <class Variant>
    requires requires { VariantForm<Variant>::names; }
Value write(const Variant& value, EncodeContext& context) {
    const std::string_view name = VariantForm<Variant>::names[value.index()];
    PathScope scope(context, name);
    Value payload = std::visit(
        [&](const auto& alternative) {
            if constexpr (VariantForm<Variant>::wrapsPayload) {
                Value wrapper(rapidjson::kObjectType);
                FieldWriter writer(wrapper, context);
                writer("_0", alternative);
                return wrapper;
            } else {
                return write(alternative, context);
            }
        },
        value);
    Value object(rapidjson::kObjectType);
    object.AddMember(
        Value(rapidjson::StringRef(name.data(), static_cast<rapidjson::SizeType>(name.size()))),
        payload, context.allocator);
    return object;
}

// ---------------------------------------------------------------- text

// Parses UTF-8 JSON text strictly (valid encoding, finite numbers) into a
// document; deep nesting costs heap, never stack.
void parse(std::string_view text, rapidjson::Document& document);

// Pretty text with the keys of every object in byte order.
std::string toSortedPrettyText(const Value& value, std::size_t sizeHint = 0);

} // namespace velarion::json
