#pragma once
// Speaker notes of a PowerPoint file, read from its XML parts: one text per
// shown slide, in presentation order, hidden slides left out so that the
// notes stay in step with the pages of the exported PDF. Slide-number fields
// don't count as notes.
//
// Thread: pure; any thread. The zip itself is the caller's: `read` answers
// the text of one part by its name inside the file ("ppt/presentation.xml"),
// or none when it isn't there.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velarion::powerPointNotes {

using ReadPart = std::function<std::optional<std::string>(const std::string& name)>;

// None when the presentation's parts can't be read: the deck then has no
// notes, which never fails an import.
std::optional<std::vector<std::string>> notes(const ReadPart& read);

// The text of one notes part: paragraphs with text, joined by line feeds.
std::string noteText(std::string_view notesXML);

} // namespace velarion::powerPointNotes
