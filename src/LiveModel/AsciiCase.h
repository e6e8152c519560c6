#pragma once
// Case folding of ASCII letters only, for the fixed English words the song
// parser knows (headings, detail keys) and for matching section names and
// codes the way an operator types them. Bytes of other UTF-8 characters pass
// through untouched, so any text is safe to fold.
//
// Thread: pure functions; any thread.

#include <algorithm>
#include <string>
#include <string_view>

namespace velarion {

constexpr char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}
constexpr char asciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}
constexpr bool isAsciiDigit(char c) {
    return c >= '0' && c <= '9';
}

inline std::string asciiLowercased(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered)
        c = asciiLower(c);
    return lowered;
}

inline bool equalsIgnoringAsciiCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return asciiLower(x) == asciiLower(y);
           });
}

// True for a non-empty text of ASCII digits only.
inline bool isAllDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isAsciiDigit);
}

} // namespace velarion
