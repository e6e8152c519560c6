// Feeds arbitrary parts to the PowerPoint notes reader, the way a hostile
// .pptx reaches it after unzipping. The input is split at NUL bytes into
// the presentation, its relations, and then pairs of a part's name and its
// text. A crash, a sanitizer report, a hang or more notes than slides is a
// bug; refusing to read (no notes) is fine.

#include "FuzzCheck.h"
#include "LiveEngine/PowerPointNotes.h"

#include <map>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velarion;
    const std::string_view input = textOf(data, size);
    std::vector<std::string> pieces;
    for (std::size_t start = 0;;) {
        const std::size_t end = input.find('\0', start);
        pieces.emplace_back(input.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    std::map<std::string, std::string> parts;
    if (!pieces.empty()) parts["ppt/presentation.xml"] = pieces[0];
    if (pieces.size() > 1) parts["ppt/_rels/presentation.xml.rels"] = pieces[1];
    for (std::size_t index = 2; index + 1 < pieces.size(); index += 2) parts[pieces[index]] = pieces[index + 1];

    const auto notes = powerPointNotes::notes([&](const std::string& name) -> std::optional<std::string> {
        const auto found = parts.find(name);
        if (found == parts.end()) return std::nullopt;
        return found->second;
    });
    require(!notes || notes->size() <= pieces[0].size());
    (void)powerPointNotes::noteText(input);
    return 0;
}
