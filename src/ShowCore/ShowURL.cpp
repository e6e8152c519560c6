#include "ShowCore/ShowURL.h"

namespace velarion::showcore {

namespace {
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
} // namespace

std::optional<ShowURL> ShowURL::parse(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isLetter(text[0])) return std::nullopt;
    for (std::size_t i = 1; i < colon; ++i) {
        const char c = text[i];
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
    }
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte == 0x7F) return std::nullopt;
    }
    return ShowURL{std::string(text)};
}

bool ShowURL::isFileURL() const {
    constexpr std::string_view scheme = "file:";
    if (text.size() < scheme.size()) return false;
    for (std::size_t i = 0; i < scheme.size(); ++i) {
        const char c = text[i];
        if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) != scheme[i]) return false;
    }
    return true;
}

} // namespace velarion::showcore
