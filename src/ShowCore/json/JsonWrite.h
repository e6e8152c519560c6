#pragma once
// Writing the show graph as JSON text; private to ShowCore. Values stream
// straight into a compact writer through the same `visitFields` lists the
// reader uses (see JsonRead.h), with no tree in between.
//
// Thread: pure functions; any thread.

#include "ShowCore/json/JsonRead.h"

#include <rapidjson/writer.h>

#include <algorithm>
#include <cstring>
#include <variant>
#include <vector>

namespace velarion::showcore::json {

// The writer's output: straight into the string handed back, so a large
// document isn't copied once more at the end.
// `text` is sized ahead and cut to `used` at the end; the writer reserves
// before each value and then puts without checks (PutReserve, PutUnsafe).
struct TextOutput {
    using Ch = char;
    std::string& text;
    std::size_t used = 0;
    void reserve(std::size_t count) {
        if (used + count > text.size()) [[unlikely]] grow(count);
    }
    void Put(char c) {
        reserve(1);
        text[used++] = c;
    }
    void Flush() {}
    void grow(std::size_t count);
};
inline void PutReserve(TextOutput& output, std::size_t count) { output.reserve(count); }
inline void PutUnsafe(TextOutput& output, char c) { output.text[output.used++] = c; }

// Whether text holds a byte JSON must escape: a control character, '"' or '\\'.
// Eight bytes at a time, as most text needs nothing.
bool needsEscape(std::string_view text);

// RapidJSON's compact writer, with text that needs no escaping (keys, case
// names, identities, most values) copied whole rather than byte by byte.
// Text is checked by isValidUTF8 before it reaches the writer.
class TextWriter : public rapidjson::Writer<TextOutput> {
public:
    using Writer::Writer;

    // `plain` has nothing to escape: field and case names, formatted values.
    void plainString(std::string_view plain) {
        Prefix(rapidjson::kStringType);
        os_->reserve(plain.size() + 2);
        char* out = os_->text.data() + os_->used;
        out[0] = '"';
        std::memcpy(out + 1, plain.data(), plain.size());
        out[plain.size() + 1] = '"';
        os_->used += plain.size() + 2;
    }

    void text(std::string_view text) {
        if (needsEscape(text)) {
            String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        } else {
            plainString(text);
        }
    }
};

// A value that can't be written, on its way out. Its path is gathered while
// the failure unwinds (`within`), so writing keeps no path as it goes.
struct EncodeFailure {
    std::string reason;
    std::vector<std::variant<std::string_view, std::size_t>> innermostFirst; // keys and list places
    ShowJsonError error() const;
};

// Runs `body`, putting `segment` on the path of a failure inside it.
template <class Segment, class Body> void within(Segment segment, Body&& body) {
    try {
        body();
    } catch (EncodeFailure& failure) {
        failure.innermostFirst.emplace_back(segment);
        throw;
    }
}

struct EncodeContext {
    TextWriter& writer;
    [[noreturn]] void fail(std::string reason) const { throw EncodeFailure{std::move(reason), {}}; }
    void key(std::string_view name) { writer.plainString(name); }
};

void write(bool value, EncodeContext& context);
void write(int value, EncodeContext& context);
void write(std::int64_t value, EncodeContext& context);
void write(std::uint8_t value, EncodeContext& context);
void write(std::uint16_t value, EncodeContext& context);
void write(double value, EncodeContext& context);
void write(const std::string& value, EncodeContext& context);
void write(const Uuid& value, EncodeContext& context);
void write(const ShowDate& value, EncodeContext& context);
void write(const ShowURL& value, EncodeContext& context);
void write(const DurationValue& value, EncodeContext& context);
void write(const std::map<std::string, std::string>& values, EncodeContext& context);

template <NamedCase E> void write(E value, EncodeContext& context) {
    context.writer.plainString(toString(value));
}

template <class T> void write(const std::vector<T>& values, EncodeContext& context) {
    context.writer.StartArray();
    for (std::size_t i = 0; i < values.size(); ++i) {
        within(i, [&] { write(values[i], context); });
    }
    context.writer.EndArray(static_cast<rapidjson::SizeType>(values.size()));
}

template <NamedCase E> void write(const std::set<E>& values, EncodeContext& context) {
    context.writer.StartArray();
    for (E value : values) write(value, context);
    context.writer.EndArray(static_cast<rapidjson::SizeType>(values.size()));
}

// Writes one record's fields as keys, in field order.
class FieldWriter {
public:
    explicit FieldWriter(EncodeContext& context) : context_(context) {}

    template <class T> void operator()(std::string_view key, const T& field) {
        if constexpr (isOptional<T>) {
            if (!field) return;
            add(key, *field);
        } else {
            add(key, field);
        }
    }

private:
    template <class T> void add(std::string_view key, const T& field) {
        context_.key(key);
        within(key, [&] { write(field, context_); });
    }

    EncodeContext& context_;
};

template <class T>
concept WritableRecord = requires(FieldWriter& writer, const T& record) { visitFields(writer, record); };

template <WritableRecord T> void write(const T& record, EncodeContext& context) {
    context.writer.StartObject();
    FieldWriter writer(context);
    visitFields(writer, record);
    context.writer.EndObject();
}

template <NamedVariant Variant> void write(const Variant& value, EncodeContext& context) {
    const std::string_view name = VariantForm<Variant>::names[value.index()];
    const bool wrapped = VariantForm<Variant>::wrapped[value.index()];
    context.writer.StartObject();
    context.key(name);
    if (wrapped) {
        context.writer.StartObject();
        context.key("_0");
    }
    within(name, [&] { std::visit([&](const auto& alternative) { write(alternative, context); }, value); });
    if (wrapped) context.writer.EndObject();
    context.writer.EndObject();
}

} // namespace velarion::showcore::json
