#include "LiveAgentKit/JSONValue.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace velarion {

namespace {

// Both bounds are powers of two and so exact as doubles; the upper one is
// itself out of range.
constexpr double int64Lower = -0x1p63;
constexpr double int64Upper = 0x1p63;

bool isWholeInt64(double value) {
    return std::trunc(value) == value && value >= int64Lower && value < int64Upper;
}

std::string numberText(double value) {
    char buffer[32];
    std::to_chars_result written{};
    if (isWholeInt64(value)) {
        written = std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(value));
    } else {
        // The fewest digits that read back as the same double: plain for
        // everyday magnitudes, with an exponent for the tiny and the huge.
        const double magnitude = std::fabs(value);
        const auto format = magnitude >= 1e-4 && magnitude <= 0x1p54 ? std::chars_format::fixed
                                                                      : std::chars_format::scientific;
        written = std::to_chars(buffer, buffer + sizeof buffer, value, format);
    }
    return std::string(buffer, written.ptr);
}

// The whole text as a float, as people write numbers: an optional sign,
// digits, a fraction, an exponent, or "inf" and "nan".
std::optional<double> parseFloat(std::string_view text) {
    if (text.size() > 1 && text.front() == '+' && text[1] != '-' && text[1] != '+') {
        text.remove_prefix(1);
    }
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

bool isTrueWord(std::string_view text) {
    if (text.size() > 4) return false;
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower == "true" || lower == "yes" || lower == "on" || lower == "1";
}

} // namespace

std::optional<std::string> JSONValue::stringValue() const {
    if (const auto* text = std::get_if<std::string>(&storage_)) return *text;
    if (const auto* number = std::get_if<double>(&storage_)) return numberText(*number);
    return std::nullopt;
}

std::optional<double> JSONValue::doubleValue() const {
    if (const auto* number = std::get_if<double>(&storage_)) return *number;
    if (const auto* text = std::get_if<std::string>(&storage_)) return parseFloat(*text);
    return std::nullopt;
}

std::optional<std::int64_t> JSONValue::intValue() const {
    const std::optional<double> number = doubleValue();
    if (!number) return std::nullopt;
    const double truncated = std::trunc(*number);
    // NaN fails both comparisons.
    if (!(truncated >= int64Lower && truncated < int64Upper)) return std::nullopt;
    return static_cast<std::int64_t>(truncated);
}

std::optional<bool> JSONValue::boolValue() const {
    if (const auto* flag = std::get_if<bool>(&storage_)) return *flag;
    if (const auto* number = std::get_if<double>(&storage_)) return *number != 0;
    if (const auto* text = std::get_if<std::string>(&storage_)) return isTrueWord(*text);
    return std::nullopt;
}

const JSONValue* JSONValue::operator[](std::string_view key) const {
    const Object* members = objectValue();
    if (members == nullptr) return nullptr;
    const auto found = members->find(key);
    return found == members->end() ? nullptr : &found->second;
}

std::string JSONValue::text() const {
    return encoded().value_or("null");
}

} // namespace velarion
