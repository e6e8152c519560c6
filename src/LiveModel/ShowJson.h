#pragma once
// The show document's JSON form: UTF-8, pretty-printed, keys sorted.
//
// Decoding is strict: a missing required key, a wrong type or an unknown case
// name fails the whole document, and the error names where ("sections[2].
// cues[5]: key "isEnabled" is missing"). It applies no limits of its own:
// values outside the building operations' ranges are kept as written.
// Thread: pure functions; any thread.

#include "LiveModel/Show.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velarion {

struct ShowDecodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct ShowEncodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Larger documents are refused unread: no real show comes near it, and it
// bounds the memory a hostile file can take.
inline constexpr std::size_t maxShowDocumentBytes = 100u << 20;

// Throws ShowEncodeError for a value JSON can't hold (a non-finite number).
std::string encodeShow(const Show& show);

// One made slide as the document writes it, keys sorted: equal slides give
// equal bytes, so the text can name what a slide shows. Throws
// ShowEncodeError as `encodeShow` does.
std::string encodeMadeSlide(const MadeSlide& slide);

// Called with the document's "formatVersion" once the text has parsed and
// before the whole show is decoded; may throw to refuse the document.
using FormatVersionCheck = std::function<void(int formatVersion)>;

// Throws ShowDecodeError with a description of the first fault found.
Show decodeShow(std::string_view text, const FormatVersionCheck& checkVersion = {});

} // namespace velarion
