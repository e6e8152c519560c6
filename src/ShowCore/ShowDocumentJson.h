#pragma once
// The JSON form of the show graph. Keys are the records' field names, in
// field order. Plain enumerations are their case name as text. A variant with
// payload is an object of exactly one key, its case name, holding an object:
// a labelled payload under its own labels ({"startWithNext":{"delay":...}}),
// an unlabelled one under "_0" ({"destination":{"_0":"<UUID>"}}), none as {}.
// UUIDs are upper-case canonical text; dates and URLs have the one text form
// told in ShowDate.h and ShowURL.h; DurationValue and SortRank are records
// ({"seconds":2.5}, {"value":"i"}).
//
// Optional keys are written only when they hold a value; absent or null reads
// as none. A missing required key fails the whole document, with the path to
// that key. Keys the reader doesn't know are ignored, so that a document
// written by a later revision that only adds fields still opens. The reader
// applies no clamping; a DurationValue refuses what its rule refuses.
//
// Thread: pure functions; any thread.

#include "ShowCore/ShowCommand.h"
#include "ShowCore/ShowDocument.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace velarion::showcore {

// A document that can't be read or written; `path` leads to the value at
// fault ("acts[2].scenes[0].cues[4].title"), empty for the text as a whole.
struct ShowJsonError : std::runtime_error {
    ShowJsonError(std::string path, std::string reason);
    std::string path;
    std::string reason;
};

// Compact UTF-8 text. Throws ShowJsonError for a number that isn't finite or
// text that isn't valid UTF-8.
std::string encodeShowDocument(const ShowDocument& document);

// Reads and then validates (ShowDocument::validateForPersistence): throws
// ShowJsonError or ShowValidationError.
ShowDocument decodeShowDocument(std::string_view text);

// Reads only, for tools that want every validation finding rather than the
// first; throws ShowJsonError.
ShowDocument readShowDocument(std::string_view text);

std::string encodeShowCommand(const ShowCommand& command);
ShowCommand decodeShowCommand(std::string_view text);

} // namespace velarion::showcore
