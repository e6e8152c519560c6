// How an agent names cues, sections, cue groups and library items, and the
// tie-breaks it relies on: an id first, then a cue's number, then a name in
// any case, with a name that fits several refused rather than guessed.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/AsciiCase.h"
#include "LiveModel/TextTrimming.h"

#include <string>
#include <vector>

namespace velarion::agentService {

namespace {

// A reference's text: a number and its decimal text are the same reference.
std::string referenceText(const JSONValue* value) {
    const std::optional<std::string> given = value ? value->stringValue() : std::nullopt;
    return given ? trimmingWhitespace(*given) : std::string();
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

} // namespace

std::string_view kindWord(MediaKind kind) {
    switch (kind) {
    case MediaKind::video: return "video";
    case MediaKind::image: return "image";
    case MediaKind::audio: return "sound file";
    case MediaKind::deck: return "deck";
    }
    return "item";
}

const Cue& findCue(const JSONValue* value, const Show& show) {
    const std::string text = referenceText(value);
    if (text.empty()) throw AgentFailure("Say which cue: its id, number, or name.");
    const std::vector<const Cue*> cues = show.allCues();
    if (const auto id = Uuid::parse(text)) {
        for (const Cue* cue : cues) {
            if (cue->id == *id) return *cue;
        }
    }
    // Numbers are positions from 1: "4" is the fourth cue; "04" is no number.
    if (isAllDigits(text) && text[0] != '0' && text.size() <= 9) {
        const std::size_t position = std::stoul(text);
        if (position <= cues.size()) return *cues[position - 1];
    }
    const Cue* found = nullptr;
    for (const Cue* cue : cues) {
        if (!equalsIgnoringAsciiCase(cue->name, text)) continue;
        if (found) throw AgentFailure("More than one cue is called " + quoted(text) + ". Use its id or number.");
        found = cue;
    }
    if (!found) throw AgentFailure("There's no cue " + quoted(text) + ". get_show lists them.");
    return *found;
}

const Section& findSection(const JSONValue* value, const Show& show) {
    const std::string text = referenceText(value);
    if (text.empty()) throw AgentFailure("Say which section: its id or title.");
    if (const auto id = Uuid::parse(text)) {
        for (const Section& section : show.sections) {
            if (section.id == *id) return section;
        }
    }
    // Two sections of one title aren't an error: the first is meant.
    for (const Section& section : show.sections) {
        if (equalsIgnoringAsciiCase(section.title, text)) return section;
    }
    throw AgentFailure("There's no section " + quoted(text) + ". get_show lists them.");
}

const CueGroup& findCueGroup(const JSONValue* value, const Show& show) {
    const std::string text = agentService::text(value, "group id or name");
    static const std::vector<CueGroup> none;
    const std::vector<CueGroup>& groups = show.cueGroups ? *show.cueGroups : none;
    if (const auto id = Uuid::parse(text)) {
        for (const CueGroup& group : groups) {
            if (group.id == *id) return group;
        }
    }
    const CueGroup* found = nullptr;
    for (const CueGroup& group : groups) {
        if (!equalsIgnoringAsciiCase(group.name, text)) continue;
        if (found) {
            throw AgentFailure("More than one cue group is called " + quoted(text) +
                               ". Use its id from get_show.");
        }
        found = &group;
    }
    if (!found) throw AgentFailure("There's no cue group " + quoted(text) + ". get_show lists them.");
    return *found;
}

const MediaItem& findMedia(const JSONValue* value, const Show& show, std::string_view kind,
                           std::optional<MediaKind> expected) {
    const std::string text = referenceText(value);
    if (text.empty()) throw AgentFailure("Say which " + std::string(kind) + ": its id or name.");
    const MediaItem* found = nullptr;
    if (const auto id = Uuid::parse(text)) found = show.media(*id);
    if (!found) {
        for (const MediaItem& item : show.library) {
            if (!equalsIgnoringAsciiCase(item.name, text)) continue;
            if (found) {
                throw AgentFailure("More than one library item is called " + quoted(text) +
                                   ". Use its id from get_show.");
            }
            found = &item;
        }
    }
    if (!found) {
        throw AgentFailure("There's no " + std::string(kind) + " " + quoted(text) +
                           " in the library. Use import_media first.");
    }
    if (expected && found->kind != *expected) {
        throw AgentFailure(quoted(found->name) + " is a " + std::string(kindWord(found->kind)) +
                           ", not a " + std::string(kind) + ".");
    }
    return *found;
}

} // namespace velarion::agentService
