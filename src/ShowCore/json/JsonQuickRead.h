#pragma once
// The quick way of reading the show graph: records are filled straight from
// the text, with no tree in between; private to ShowCore.
//
// It reads only the plain form our writer produces (keys in any order, no
// unknown or repeated keys, no \u escapes) and gives up (`QuickReadAbandoned`)
// on anything else, faulty or not. The caller then reads the text again with
// the tree reader (JsonRead.h), which accepts what it accepts and words every
// error; so the two can never disagree on a result or a message. Leaf values
// go through the tree reader's own `read` functions on a one-value tree.
//
// Thread: pure functions; any thread.

#include "ShowCore/json/JsonRead.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace velarion::showcore::json {

struct QuickReadAbandoned {};

// Hands out the text's tokens in order; any text that isn't plain JSON
// abandons. Strings are checked as UTF-8 as they are read (outside them,
// only ASCII can be JSON). Strings are views into the text or, when escaped,
// into a scratch buffer valid until the next string.
class QuickScanner {
public:
    explicit QuickScanner(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

    [[noreturn]] static void abandon() { throw QuickReadAbandoned{}; }

    // The next significant character, not taken; '\0' at the end.
    char peek() {
        while (at_ != end_ && (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t')) ++at_;
        return at_ == end_ ? '\0' : *at_;
    }
    void expect(char c) {
        if (peek() != c) abandon();
        ++at_;
    }
    // Takes `c` if it comes next.
    bool take(char c) {
        if (peek() != c) return false;
        ++at_;
        return true;
    }
    std::string_view string();
    // Takes the key `name` (plain ASCII, nothing to escape) if it comes next.
    bool takeKey(std::string_view name) {
        if (peek() != '"' || static_cast<std::size_t>(end_ - at_) < name.size() + 2 || at_[name.size() + 1] != '"' ||
            !sameText(std::string_view(at_ + 1, name.size()), name)) {
            return false;
        }
        at_ += name.size() + 2;
        return true;
    }
    // A scalar (null, boolean, number or string) as a one-value tree.
    Value scalar();
    bool atEnd() {
        peek();
        return at_ == end_;
    }

private:
    std::string_view escapedString(const char* start);

    const char* at_;
    const char* end_;
    std::string scratch_;
};

struct QuickContext {
    QuickScanner scanner;
    DecodeContext context; // for the leaf readers; its path stays empty
};

template <class T>
concept QuickLeaf = std::is_same_v<T, bool> || std::is_same_v<T, int> || std::is_same_v<T, std::int64_t> ||
                    std::is_same_v<T, std::uint8_t> || std::is_same_v<T, std::uint16_t> ||
                    std::is_same_v<T, double> || std::is_same_v<T, std::string> || std::is_same_v<T, Uuid> ||
                    std::is_same_v<T, ShowDate> || std::is_same_v<T, ShowURL> || NamedCase<T>;

template <QuickLeaf T> void quickRead(QuickContext& in, T& out) {
    const Value value = in.scanner.scalar();
    read(value, out, in.context);
}

void quickRead(QuickContext& in, DurationValue& out);
void quickRead(QuickContext& in, std::map<std::string, std::string>& out);

template <class T> void quickRead(QuickContext& in, std::optional<T>& out) {
    if (in.scanner.peek() == 'n') {
        const Value value = in.scanner.scalar();
        if (!value.IsNull()) QuickScanner::abandon();
        out.reset();
        return;
    }
    T inner{};
    quickRead(in, inner);
    out = std::move(inner);
}

template <class T> void quickRead(QuickContext& in, std::vector<T>& out) {
    in.scanner.expect('[');
    out.clear();
    if (in.scanner.take(']')) return;
    do {
        quickRead(in, out.emplace_back());
    } while (in.scanner.take(','));
    in.scanner.expect(']');
}

template <NamedCase E> void quickRead(QuickContext& in, std::set<E>& out) {
    std::vector<E> elements;
    quickRead(in, elements);
    out = std::set<E>(elements.begin(), elements.end());
}

// Finds the field a key names and reads its value: first the field after the
// one read last (keys usually come in field order), then all of them.
class QuickFieldReader {
public:
    QuickFieldReader(QuickContext& in, std::string_view key, std::size_t expected, bool anyField)
        : in_(in), key_(key), expected_(expected), anyField_(anyField) {}

    template <class T> void operator()(std::string_view key, T& field) {
        const std::size_t index = index_++;
        if (found_ || !(anyField_ || index == expected_) || !sameText(key, key_)) return;
        found_ = true;
        foundIndex_ = index;
        quickRead(in_, field);
    }

    bool found() const { return found_; }
    std::size_t foundIndex() const { return foundIndex_; }

private:
    QuickContext& in_;
    std::string_view key_;
    std::size_t expected_;
    bool anyField_;
    std::size_t index_ = 0;
    bool found_ = false;
    std::size_t foundIndex_ = 0;
};

// Reads the field at a known place in the list.
class QuickFieldAt {
public:
    QuickFieldAt(QuickContext& in, std::size_t index) : in_(in), index_(index) {}
    template <class T> void operator()(std::string_view, T& field) {
        if (at_++ == index_) quickRead(in_, field);
    }

private:
    QuickContext& in_;
    std::size_t index_;
    std::size_t at_ = 0;
};

// The keys of a record's fields in field order, gathered once; null for the
// records that can't be made empty (QuickOneField).
struct QuickKeyCollector {
    std::vector<std::string_view> keys;
    template <class T> void operator()(std::string_view key, T&) { keys.push_back(key); }
};

template <class T> const std::vector<std::string_view>* quickFieldKeys() {
    if constexpr (std::is_default_constructible_v<T>) {
        static const std::vector<std::string_view> keys = [] {
            T record{};
            QuickKeyCollector collector;
            visitFields(collector, record);
            return std::move(collector.keys);
        }();
        return &keys;
    } else {
        return nullptr;
    }
}

// After the object: optional fields without a key are none; a required one
// abandons.
class QuickMissingFields {
public:
    explicit QuickMissingFields(std::uint64_t seen) : seen_(seen) {}
    template <class T> void operator()(std::string_view, T& field) {
        const std::size_t index = index_++;
        if (index < 64 && (seen_ >> index & 1) != 0) return;
        if constexpr (isOptional<T>) {
            field.reset();
        } else {
            QuickScanner::abandon();
        }
    }

private:
    std::uint64_t seen_;
    std::size_t index_ = 0;
};

template <class T>
concept QuickRecord = requires(QuickFieldReader& reader, T& record) { visitFields(reader, record); };

template <QuickRecord T> void quickRead(QuickContext& in, T& out) {
    in.scanner.expect('{');
    std::uint64_t seen = 0;
    std::size_t expected = 0;
    if (!in.scanner.take('}')) {
        const std::vector<std::string_view>* keys = quickFieldKeys<T>();
        do {
            std::size_t index = expected;
            // Keys usually come in field order: the next field's key is
            // matched in place, without reading it as a string first.
            if (keys != nullptr && expected < keys->size() && in.scanner.takeKey((*keys)[expected])) {
                in.scanner.expect(':');
                QuickFieldAt reader(in, expected);
                visitFields(reader, out);
            } else {
                const std::string_view key = in.scanner.string();
                in.scanner.expect(':');
                QuickFieldReader reader(in, key, expected, false);
                visitFields(reader, out);
                index = reader.foundIndex();
                if (!reader.found()) {
                    QuickFieldReader anyReader(in, key, 0, true);
                    visitFields(anyReader, out);
                    if (!anyReader.found()) QuickScanner::abandon(); // a key we don't know
                    index = anyReader.foundIndex();
                }
            }
            if (index >= 64 || (seen >> index & 1) != 0) QuickScanner::abandon(); // repeated
            seen |= std::uint64_t{1} << index;
            expected = index + 1;
        } while (in.scanner.take(','));
        in.scanner.expect('}');
    }
    QuickMissingFields missing(seen);
    visitFields(missing, out);
}

// One named field, for variant payloads under "_0".
template <class T> struct QuickOneField {
    std::string_view key;
    T& field;
};
template <class V, class T> void visitFields(V& v, QuickOneField<T>& one) { v(one.key, one.field); }

template <class Variant, std::size_t I> void quickReadCase(QuickContext& in, Variant& out) {
    std::variant_alternative_t<I, Variant> value{};
    if constexpr (VariantForm<Variant>::wrapped[I]) {
        QuickOneField<decltype(value)> payload{"_0", value};
        quickRead(in, payload);
    } else {
        quickRead(in, value);
    }
    out = std::move(value);
}

template <class Variant, std::size_t... I>
void quickReadCaseAt(std::size_t index, QuickContext& in, Variant& out, std::index_sequence<I...>) {
    ((index == I ? quickReadCase<Variant, I>(in, out) : void()), ...);
}

template <NamedVariant Variant> void quickRead(QuickContext& in, Variant& out) {
    in.scanner.expect('{');
    const std::string_view name = in.scanner.string();
    in.scanner.expect(':');
    if (in.scanner.peek() != '{') QuickScanner::abandon();
    constexpr auto& names = VariantForm<Variant>::names;
    std::size_t index = 0;
    while (index < names.size() && !sameText(names[index], name)) ++index;
    if (index == names.size()) QuickScanner::abandon();
    quickReadCaseAt(index, in, out, std::make_index_sequence<std::variant_size_v<Variant>>{});
    in.scanner.expect('}');
}

// Reads a whole text as one value, or throws QuickReadAbandoned.
template <class T> void quickReadWhole(std::string_view text, T& out) {
    QuickContext in{QuickScanner(text), {}};
    try {
        quickRead(in, out);
    } catch (const ShowJsonError&) {
        QuickScanner::abandon(); // the tree reader words it, with the path
    }
    if (!in.scanner.atEnd()) QuickScanner::abandon();
}

} // namespace velarion::showcore::json
