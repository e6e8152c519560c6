#include "RandomShowEdits.h"

#include <array>
#include <limits>

namespace velarion::editTesting {

namespace {
// A small pool, so that cues and media often share names and renames follow.
constexpr std::array<const char*, 8> namePool = {"Walk-in", "Welcome", "Song",     "Video",
                                                 "Sermon",  "  ",      "Offering", "\n"};
} // namespace

Uuid RandomShowEdits::newID() {
    Uuid id;
    for (auto& byte : id.bytes) byte = static_cast<std::uint8_t>(random_());
    return id;
}

std::string RandomShowEdits::name() {
    return namePool[static_cast<std::size_t>(below(namePool.size()))];
}

Uuid RandomShowEdits::cueID(const Show& show) {
    const auto all = show.allCues();
    if (all.empty() || chance(0.15)) return newID();
    return (*pick(all))->id;
}

Uuid RandomShowEdits::sectionID(const Show& show) {
    if (show.sections.empty() || chance(0.15)) return newID();
    return pick(show.sections)->id;
}

Uuid RandomShowEdits::mediaID(const Show& show) {
    if (show.library.empty() || chance(0.15)) return newID();
    return pick(show.library)->id;
}

Uuid RandomShowEdits::groupID(const Show& show) {
    if (!show.cueGroups || show.cueGroups->empty() || chance(0.2)) return newID();
    return pick(*show.cueGroups)->id;
}

Cue RandomShowEdits::cue(const Show& show) {
    Cue cue;
    cue.id = newID();
    cue.name = name();
    const int follow = below(4);
    cue.follow =
        follow < 2 ? Follow::manual : (follow == 2 ? Follow::withPrevious : Follow::afterPrevious);
    cue.isEnabled = !chance(0.15);
    const MediaItem* item = show.library.empty() ? nullptr : pick(show.library);
    switch (item == nullptr ? 4 : below(5)) {
    case 0: cue.kind = VideoCue{item->id}; break;
    case 1: cue.kind = ImageCue{item->id}; break;
    case 2: cue.kind = PlaylistCue{{item->id}}; break;
    case 3: cue.kind = AudioCue{item->id}; break;
    default: cue.kind = GraphicCue{"Title", "", std::nullopt};
    }
    if (item != nullptr && chance(0.5)) cue.name = item->name;
    if (chance(0.2)) cue.visualOutputIDs = std::vector<std::string>{"stage"};
    if (chance(0.2)) cue.audioDeviceID = "headphones";
    return cue;
}

Section RandomShowEdits::section(const Show& show, int maxCues) {
    Section section;
    section.id = newID();
    section.title = name();
    for (int count = below(maxCues + 1); count > 0; --count) section.cues.push_back(cue(show));
    return section;
}

MediaItem RandomShowEdits::item(const Show& show) {
    MediaItem item;
    item.id = newID();
    item.kind = static_cast<MediaKind>(below(4));
    item.name = name();
    item.fileName = "Media/" + item.id.text();
    if (item.kind == MediaKind::deck) {
        item.deck = DeckInfo{};
        if (!show.library.empty() && chance(0.5)) {
            item.deck->background = backdrop::Media{pick(show.library)->id};
        }
    }
    return item;
}

CueGroup RandomShowEdits::group(const Show& show) {
    CueGroup group{newID(), chance(0.05) ? " " : "Group", {}, chance(0.5)};
    if (show.sections.empty() || chance(0.1)) {
        // Any cues at all: mostly refused.
        for (int count = below(4); count > 0; --count) group.cueIDs.push_back(cueID(show));
        return group;
    }
    // A run of consecutive cues in one section, widened over With Previous
    // links at both ends: often valid.
    const auto& cues = pick(show.sections)->cues;
    const int size = static_cast<int>(cues.size());
    if (size == 0) return group;
    auto follows = [&](int i) { return cues[static_cast<std::size_t>(i)].follow; };
    int first = below(std::max(size - 1, 1));
    int last = std::min(size - 1, first + 1 + below(3));
    while (first > 0 && follows(first) == Follow::withPrevious) --first;
    while (last + 1 < size && follows(last + 1) == Follow::withPrevious) ++last;
    for (int i = last; i >= first; --i) {
        group.cueIDs.push_back(cues[static_cast<std::size_t>(i)].id);
    }
    return group;
}

Show RandomShowEdits::show() {
    Show show;
    show.id = newID();
    show.title = "Generated";
    for (int count = 2 + below(5); count > 0; --count) show.library.emplace_back(item(show));
    for (int count = below(5); count > 0; --count) show.sections.emplace_back(section(show, 7));
    if (chance(0.5)) show.holding.mediaID = pick(show.library)->id;
    for (int attempts = 2 + below(4); attempts > 0; --attempts) {
        try {
            show = apply(edit::CreateCueGroup{group(show)}, show);
        } catch (const ShowEditError&) {
        }
    }
    return show;
}

ShowEdit RandomShowEdits::edit(std::size_t caseIndex, const Show& show) {
    const int sectionCount = static_cast<int>(show.sections.size());
    auto index = [&](int count) { return below(count + 5) - 2; };
    switch (caseIndex) {
    case 0: return edit::SetTitle{name(), name()};
    case 1:
        return edit::AddSection{section(show, 3),
                                chance(0.3) ? std::nullopt : std::optional(index(sectionCount))};
    case 2: return edit::RenameSection{sectionID(show), name()};
    case 3:
        return edit::SetSectionSchedule{
            sectionID(show), chance(0.5) ? std::optional(below(1440)) : std::nullopt, 45};
    case 4: return edit::DeleteSection{sectionID(show)};
    case 5: return edit::MoveSection{sectionID(show), index(sectionCount)};
    case 6: return edit::InsertCue{cue(show), maybe(sectionID(show)), maybe(cueID(show))};
    case 7: {
        std::vector<Cue> cues;
        for (int count = below(4); count > 0; --count) cues.push_back(cue(show));
        return edit::InsertCues{cues, maybe(sectionID(show)), maybe(cueID(show))};
    }
    case 8: {
        const Cue* stored = show.cue(cueID(show));
        Cue changed = stored != nullptr ? *stored : cue(show);
        switch (below(5)) {
        case 0: changed.follow = static_cast<Follow>(below(3)); break;
        case 1: changed.isEnabled = !changed.isEnabled; break;
        case 2: changed.name = name(); break;
        case 3:
            changed.groupDuration = std::array{
                0.0, -1.0, 4.0,
                std::numeric_limits<double>::quiet_NaN()}[static_cast<std::size_t>(below(4))];
            break;
        default: break; // its own value: changes nothing
        }
        return edit::UpdateCue{changed};
    }
    case 9: return edit::DeleteCue{cueID(show)};
    case 10: return edit::MoveCue{cueID(show), sectionID(show), index(8)};
    case 11: return edit::MoveMoment{cueID(show), maybe(cueID(show))};
    case 12: return edit::MoveMomentToSection{cueID(show), sectionID(show), maybe(cueID(show))};
    case 13: return edit::AddMedia{item(show)};
    case 14: {
        const MediaItem* stored = show.media(mediaID(show));
        MediaItem changed = stored != nullptr ? *stored : item(show);
        if (chance(0.6)) changed.name = name();
        return edit::UpdateMedia{changed};
    }
    case 15: return edit::RemoveMedia{mediaID(show)};
    case 16: {
        OutputSetup outputs = show.outputs;
        if (chance(0.5)) outputs.audienceDisplayIDs = {"HDMI-" + std::to_string(below(3))};
        return edit::SetOutputs{outputs};
    }
    case 17:
        return edit::SetAudio{AudioSetup{std::nullopt, std::nullopt, below(3) / 2.0, std::nullopt}};
    case 18: return edit::SetHolding{HoldingScreen{maybe(mediaID(show)), name(), ""}};
    case 19:
        return edit::SetSlideDissolve{std::array{
            0.3, -1.0, 25.0,
            std::numeric_limits<double>::infinity()}[static_cast<std::size_t>(below(4))]};
    case 20: {
        CueGroup created = group(show);
        if (chance(0.15)) created.id = groupID(show);
        return edit::CreateCueGroup{created};
    }
    case 21: {
        CueGroup updated = group(show);
        updated.id = groupID(show);
        return edit::UpdateCueGroup{updated};
    }
    case 22: return edit::RemoveCueGroup{groupID(show)};
    case 23: return edit::ResetVisualOverrides{};
    default: return edit::ResetAudioOverrides{};
    }
}

} // namespace velarion::editTesting
