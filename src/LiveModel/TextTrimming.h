#pragma once
// Trimming of operator-typed names: white space and line breaks on both ends,
// including the Unicode ones a paste from a word processor brings along
// (no-break space, line and paragraph separators, ideographic space …).
//
// Thread: pure functions; any thread.

#include <string>
#include <string_view>

namespace velarion {

std::string trimmingWhitespace(std::string_view text);

} // namespace velarion
