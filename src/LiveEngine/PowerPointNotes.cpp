// Plain string scanning rather than std::regex: the parts are outside input,
// and libstdc++'s regex recurses per character on long matches.

#include "LiveEngine/PowerPointNotes.h"

#include <map>

namespace velarion::powerPointNotes {

namespace {

// Each tag that starts with `opening` ("<p:sldId "), up to its '>'.
std::vector<std::string_view> tags(std::string_view xml, std::string_view opening) {
    std::vector<std::string_view> found;
    for (std::size_t at = xml.find(opening); at != std::string_view::npos; at = xml.find(opening, at + 1)) {
        const std::size_t end = xml.find('>', at);
        if (end == std::string_view::npos) break;
        found.push_back(xml.substr(at, end - at));
    }
    return found;
}

// The value of ` name="…"` inside a tag.
std::optional<std::string> attribute(std::string_view tag, std::string_view name) {
    const std::string key = " " + std::string(name) + "=\"";
    const std::size_t at = tag.find(key);
    if (at == std::string_view::npos) return std::nullopt;
    const std::size_t start = at + key.size();
    const std::size_t end = tag.find('"', start);
    if (end == std::string_view::npos) return std::nullopt;
    return std::string(tag.substr(start, end - start));
}

std::string decodeEntities(std::string_view text) {
    static const std::pair<std::string_view, char> entities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        bool replaced = false;
        if (text[at] == '&') {
            for (const auto& [entity, character] : entities) {
                if (text.substr(at, entity.size()) == entity) {
                    out += character;
                    at += entity.size();
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced) out += text[at++];
    }
    return out;
}

// "slides/slide1.xml" (relative to ppt/) as a part name.
std::string partName(const std::string& target) {
    if (target.starts_with("/")) return target.substr(1);
    return "ppt/" + target;
}

} // namespace

std::string noteText(std::string_view xml) {
    std::string withoutFields;
    for (std::size_t at = 0; at < xml.size();) {
        const std::size_t field = xml.find("<a:fld", at);
        if (field == std::string_view::npos) {
            withoutFields += xml.substr(at);
            break;
        }
        withoutFields += xml.substr(at, field - at);
        const std::size_t end = xml.find("</a:fld>", field);
        // An unclosed field keeps the rest, as a non-matching pattern would.
        if (end == std::string_view::npos) {
            withoutFields += xml.substr(field);
            break;
        }
        at = end + std::string_view("</a:fld>").size();
    }

    std::string result;
    const std::string_view all = withoutFields;
    for (std::size_t start = 0; start <= all.size();) {
        std::size_t end = all.find("</a:p>", start);
        const std::string_view paragraph = all.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        std::string text;
        for (std::size_t at = paragraph.find("<a:t>"); at != std::string_view::npos; at = paragraph.find("<a:t>", at)) {
            at += 5;
            const std::size_t close = paragraph.find('<', at);
            if (close == std::string_view::npos) break;
            if (paragraph.substr(close, 6) == "</a:t>") text += paragraph.substr(at, close - at);
        }
        if (!text.empty()) {
            if (!result.empty()) result += '\n';
            result += text;
        }
        if (end == std::string_view::npos) break;
        start = end + 6;
    }
    return decodeEntities(result);
}

std::optional<std::vector<std::string>> notes(const ReadPart& read) {
    const std::optional<std::string> presentation = read("ppt/presentation.xml");
    const std::optional<std::string> relations = read("ppt/_rels/presentation.xml.rels");
    if (!presentation || !relations) return std::nullopt;

    std::map<std::string, std::string> targets;
    for (const std::string_view tag : tags(*relations, "<Relationship ")) {
        const auto id = attribute(tag, "Id");
        const auto target = attribute(tag, "Target");
        if (id && target) targets[*id] = *target;
    }

    std::vector<std::string> result;
    for (const std::string_view tag : tags(*presentation, "<p:sldId ")) {
        const auto id = attribute(tag, "r:id");
        const auto target = id ? targets.find(*id) : targets.end();
        if (target == targets.end()) continue;
        const std::string slide = partName(target->second);
        const std::optional<std::string> slideXML = read(slide);
        if (slideXML && slideXML->find("show=\"0\"") != std::string::npos) continue;

        std::string note;
        const std::size_t slash = slide.rfind('/');
        const std::string slideRelations =
            slide.substr(0, slash) + "/_rels/" + slide.substr(slash + 1) + ".rels";
        if (const auto rels = read(slideRelations)) {
            const std::string_view marker = "Target=\"../notesSlides/";
            const std::size_t at = rels->find(marker);
            if (at != std::string::npos) {
                const std::size_t start = at + marker.size();
                const std::size_t end = rels->find('"', start);
                if (end != std::string::npos) {
                    if (const auto notesXML = read("ppt/notesSlides/" + rels->substr(start, end - start))) {
                        note = noteText(*notesXML);
                    }
                }
            }
        }
        result.push_back(std::move(note));
    }
    return result;
}

} // namespace velarion::powerPointNotes
