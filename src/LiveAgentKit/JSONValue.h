#pragma once
// The JSON value the agent wire, the tools and the MCP bridge share.
//
// Exactly six cases, in this order: bool, number, string, array, object and
// null. Every number, integers included, is a 64-bit float. The accessors
// are forgiving readers for tool arguments: a number reads as text, a
// numeric string reads as a number, "yes" reads as true. Writing sorts the
// keys, leaves slashes unescaped and puts whole numbers under 1e15 out as
// integers, so the same value always gives the same text.
//
// Thread: a plain value; any thread.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "LiveAgentKit/SortedMembers.h"

namespace velarion {

class JSONValue {
public:
    using Array = std::vector<JSONValue>;
    // Ordered by bytes, which is also the order keys are written in.
    using Object = SortedMembers<JSONValue>;
    using Storage = std::variant<bool, double, std::string, Array, Object, std::nullptr_t>;

    // Deeper input is refused by `parse`: it bounds the recursion that reading,
    // writing and destroying a value take.
    static constexpr std::size_t maxParseDepth = 512;

    // Built from literals: JSONValue::Object{{"id", 1}, {"names", JSONValue::Array{"a"}}}.
    JSONValue() : storage_(nullptr) {}
    JSONValue(std::nullptr_t) : storage_(nullptr) {}
    JSONValue(bool value) : storage_(value) {}
    template <class Number>
        requires(std::is_arithmetic_v<Number> && !std::is_same_v<Number, bool> &&
                 !std::is_same_v<Number, char>)
    JSONValue(Number value) : storage_(static_cast<double>(value)) {}
    JSONValue(const char* text) : storage_(std::string(text)) {}
    JSONValue(std::string_view text) : storage_(std::string(text)) {}
    JSONValue(std::string text) : storage_(std::move(text)) {}
    JSONValue(Array items) : storage_(std::move(items)) {}
    JSONValue(Object members) : storage_(std::move(members)) {}

    const Storage& storage() const { return storage_; }
    template <class Case> bool is() const { return std::holds_alternative<Case>(storage_); }
    bool isNull() const { return is<std::nullptr_t>(); }

    // A string's text; a number's decimal text, whole values within the 64-bit
    // integer range without a fraction ("4", not "4.0"). Else absent.
    std::optional<std::string> stringValue() const;
    // A number, or a string read as a float.
    std::optional<double> doubleValue() const;
    // A number, or a string read as a float, truncated toward zero; absent
    // when that falls outside the signed 64-bit range.
    std::optional<std::int64_t> intValue() const;
    // A bool; a number other than 0 and -0; a string that is, in any case,
    // "true", "yes", "on" or "1" (every other string is false).
    std::optional<bool> boolValue() const;
    // The payload, or null when the value is of another case.
    const Array* arrayValue() const { return std::get_if<Array>(&storage_); }
    const Object* objectValue() const { return std::get_if<Object>(&storage_); }

    // An object's member; null for a missing key or a value that isn't an object.
    const JSONValue* operator[](std::string_view key) const;
    const JSONValue* operator[](std::size_t) const = delete; // no index by accident

    // Compact text on one line; absent when the value can't be written (a
    // number that isn't finite, a string that isn't UTF-8).
    std::optional<std::string> encoded() const;
    // Compact text, or the word "null" when the value can't be written.
    std::string text() const;
    // The same, indented.
    std::string prettyText() const;

    // Any JSON value, surrounded by white space at most; absent for anything
    // else, including input nested deeper than maxParseDepth.
    static std::optional<JSONValue> parse(std::string_view text);

    friend bool operator==(const JSONValue&, const JSONValue&) = default;

private:
    Storage storage_;
};

} // namespace velarion
