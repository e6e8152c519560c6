#include "LiveModel/TextTrimming.h"

#include <array>

namespace velarion {

namespace {

// UTF-8 forms of the Unicode white space and line breaks beyond ASCII.
constexpr std::array<std::string_view, 19> wideSpaces = {
    "\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003",
    "\u2004", "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200A",
    "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

bool isAsciiSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

// Length of the white space that `text` starts with (front) or ends with.
std::size_t spaceLength(std::string_view text, bool atFront) {
    if (text.empty()) return 0;
    if (isAsciiSpace(atFront ? text.front() : text.back())) return 1;
    auto matches = [&](std::string_view space) {
        return atFront ? text.starts_with(space) : text.ends_with(space);
    };
    for (std::string_view space : wideSpaces) {
        if (matches(space)) return space.size();
    }
    return 0;
}

} // namespace

std::string trimmingWhitespace(std::string_view text) {
    while (std::size_t length = spaceLength(text, true)) text.remove_prefix(length);
    while (std::size_t length = spaceLength(text, false)) text.remove_suffix(length);
    return std::string(text);
}

} // namespace velarion
