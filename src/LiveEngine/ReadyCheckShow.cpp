// The Ready check's lines about the show itself: music, media, schedule and
// control. The screens and sound lines, and the order of the whole list,
// are in ReadyCheck.cpp.

#include "LiveEngine/ReadyCheck.h"

#include "LiveEngine/ReadyCheckWords.h"
#include "LiveModel/CueGroups.h"
#include "LiveModel/TimeText.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>
#include <unordered_set>

namespace velarion {

using namespace readyWords;

namespace {

ReadyItem cueItem(ReadyGroup group, const Cue& cue, const std::string& title, std::string detail) {
    return withFix({group, ReadyStatus::attention, cue.name + title, std::move(detail)}, readyFix::EditCue{cue.id},
                   editCueLabel);
}

bool isAll(std::string_view text, int (*test)(int)) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
        return test(static_cast<unsigned char>(c)) != 0;
    });
}

// A reference of the form prefix + an identifier of letters and digits.
bool isSpotifyReference(const std::string& reference, std::initializer_list<std::string_view> prefixes) {
    return std::any_of(prefixes.begin(), prefixes.end(), [&](std::string_view prefix) {
        return reference.starts_with(prefix) && isAll(std::string_view(reference).substr(prefix.size()), isalnum);
    });
}

// The library by id, since every cue looks its media up.
class MediaIndex {
public:
    explicit MediaIndex(const Show& show) {
        for (const MediaItem& item : show.library) items_.emplace(item.id, &item);
    }
    const MediaItem* operator()(const Uuid& id) const {
        const auto found = items_.find(id);
        return found == items_.end() ? nullptr : found->second;
    }

private:
    std::unordered_map<Uuid, const MediaItem*> items_;
};

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

} // namespace

std::vector<ReadyItem> ReadyCheck::songClashItems(const Show& show) {
    std::vector<ReadyItem> items;
    for (const SongClash& clash : show.songClashes()) {
        items.push_back(cueItem(ReadyGroup::music, *clash.later, " replaces " + clash.earlier->name,
                                "They're set to start together, but the app plays one song at a time."));
    }
    return items;
}

std::optional<std::string> ReadyCheck::musicConfigurationIssue(const Cue& cue) {
    if (const auto* track = std::get_if<SpotifyTrack>(&cue.kind)) {
        if (isSpotifyReference(track->reference, {"spotify:track:"})) return std::nullopt;
        return "Choose a Spotify song or paste a valid Spotify track link.";
    }
    if (const auto* list = std::get_if<StreamPlaylistCue>(&cue.kind)) {
        if (isSpotifyReference(list->reference, {"spotify:playlist:", "spotify:album:"})) return std::nullopt;
        return "Choose a Spotify playlist or album, or paste its Spotify link.";
    }
    if (const auto* track = std::get_if<MusicTrack>(&cue.kind)) {
        // A library's persistent ID (16 hexadecimal digits), or the file
        // address a desktop player names its songs by.
        const std::string& reference = track->reference;
        const bool isLibraryID = reference.size() == 16 && isAll(reference, isxdigit);
        const bool isFile = reference.starts_with("file:///") && reference.size() > 8;
        if (isLibraryID || isFile) return std::nullopt;
        return "Choose a Music library song. Its saved library ID is missing or invalid.";
    }
    return std::nullopt;
}

std::vector<ReadyItem> ReadyCheck::musicItems(const std::vector<const Cue*>& cues, const ReadyMusicApp& spotify,
                                              const ReadyMusicApp& music) {
    std::vector<ReadyItem> items;
    for (const auto& [app, state] : {std::pair{StreamApp::spotify, &spotify}, std::pair{StreamApp::music, &music}}) {
        std::vector<const Cue*> appCues;
        for (const Cue* cue : cues) {
            if (cue->isEnabled && streamApp(cue->kind) == app) appCues.push_back(cue);
        }
        const std::string& name = state->name;
        const std::size_t count = appCues.size();
        ReadyItem item{ReadyGroup::music, ReadyStatus::attention, name, ""};
        if (count == 0) {
            item.status = ReadyStatus::optional;
            item.detail = "No enabled cues use it";
        } else {
            switch (state->presence) {
            case ReadyMusicApp::Presence::notInstalled:
                item.title = name + " isn't installed";
                item.detail = counted(count, "enabled cue needs it", "enabled cues need it");
                break;
            case ReadyMusicApp::Presence::notRunning:
                item.title = name + " isn't running";
                item.detail = counted(count, "enabled cue needs it running", "enabled cues need it running");
                addFix(item, readyFix::OpenApp{app}, "Open " + name);
                break;
            case ReadyMusicApp::Presence::unknown:
                item.title = name + " couldn't be checked";
                item.detail = counted(count, "enabled cue needs it", "enabled cues need it") +
                              ". Open it and rehearse each song before the event.";
                addFix(item, readyFix::OpenApp{app}, "Open " + name);
                break;
            case ReadyMusicApp::Presence::running:
                item.status = ReadyStatus::ready;
                item.detail = "Running · " + counted(count, "enabled cue uses it", "enabled cues use it") +
                              " · Rehearse each song before the event";
                break;
            }
        }
        items.push_back(std::move(item));

        // Cues whose song can't be found, one line per kind of fault.
        std::vector<std::pair<std::string, std::vector<const Cue*>>> issues;
        for (const Cue* cue : appCues) {
            const std::optional<std::string> issue = musicConfigurationIssue(*cue);
            if (!issue) continue;
            const auto same = std::find_if(issues.begin(), issues.end(), [&](const auto& seen) { return seen.first == *issue; });
            if (same == issues.end()) issues.push_back({*issue, {cue}});
            else same->second.push_back(cue);
        }
        for (const auto& [issue, faulty] : issues) {
            ReadyItem line = cueItem(ReadyGroup::music, *faulty.front(), " needs a song", issue);
            if (faulty.size() > 1) line.title = std::to_string(faulty.size()) + " " + name + " cues need a song";
            items.push_back(std::move(line));
        }
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::mediaItems(const Show& show, const ShowPackage* package) {
    std::vector<ReadyItem> items;
    if (package != nullptr) {
        bool anyMissing = false;
        for (const MediaItem& item : package->missingMedia(show)) {
            if (item.ndiSource) continue; // a live input has no file to lose
            anyMissing = true;
            ReadyItem line{ReadyGroup::media, ReadyStatus::attention, item.name + " missing",
                           "Its file is no longer in the show"};
            // A deck's pages are drawn from its document; only a plain file can be found again.
            if (item.deck) addFix(line, readyFix::ShowLibrary{}, "Library");
            else addFix(line, readyFix::FindMedia{item.id}, "Find it");
            items.push_back(std::move(line));
        }
        const int files = anyMissing ? 0 : package->usedFiles(show).count;
        if (files > 0) {
            items.push_back({ReadyGroup::media, ReadyStatus::ready,
                             counted(static_cast<std::uint64_t>(files), "local file in the show", "local files in the show"),
                             "Local media is stored inside the show file, filed by kind"});
        }
    }

    const std::vector<const Cue*> cues = show.allCues();
    const MediaIndex media(show);
    std::unordered_set<Uuid> cueIDs;
    for (const Cue* cue : cues) cueIDs.insert(cue->id);
    for (const Cue* cue : cues) {
        const std::optional<Uuid> mediaID = cueKind::mediaID(cue->kind);
        if (cue->isEnabled && mediaID && media(*mediaID) == nullptr) {
            items.push_back(cueItem(ReadyGroup::media, *cue, " has no media", "Its media was removed"));
        }
    }
    for (const Cue* cue : cues) {
        const auto* clear = std::get_if<ClearCue>(&cue->kind);
        if (clear && clear->cueID && !cueIDs.contains(*clear->cueID)) {
            items.push_back(cueItem(ReadyGroup::control, *cue, " stops a cue that was deleted",
                                    "Choose another cue for it to stop, or delete it."));
        }
    }
    for (const Cue* cue : cues) {
        const auto* list = std::get_if<PlaylistCue>(&cue->kind);
        if (list == nullptr) continue;
        if (list->mediaIDs.empty()) {
            items.push_back(cueItem(ReadyGroup::music, *cue, " has no songs", "Add sound files to the playlist"));
        } else if (std::any_of(list->mediaIDs.begin(), list->mediaIDs.end(),
                               [&](const Uuid& id) { return media(id) == nullptr; })) {
            items.push_back(cueItem(ReadyGroup::music, *cue, " is missing a song",
                                    "A song was removed from the library; the playlist skips it"));
        }
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::networkItems(const std::vector<const Cue*>& cues, const Show& show,
                                                const ReadyNDIRuntime& runtime) {
    const MediaIndex media(show);
    std::vector<std::pair<const Cue*, const NDISource*>> uses;
    for (const Cue* cue : cues) {
        const auto* video = std::get_if<VideoCue>(&cue->kind);
        const MediaItem* item = video != nullptr && cue->isEnabled ? media(video->mediaID) : nullptr;
        if (item != nullptr && item->ndiSource) uses.emplace_back(cue, &*item->ndiSource);
    }
    if (uses.empty()) return {};

    std::vector<ReadyItem> items;
    if (!runtime.isAvailable) {
        items.push_back({ReadyGroup::media, ReadyStatus::attention, "NDI unavailable",
                         runtime.message.empty() ? "Cues that show an NDI source can't play." : runtime.message});
    }
    std::vector<std::pair<std::string, std::vector<std::string>>> sources; // in the order first used
    for (const auto& [cue, source] : uses) {
        if (source->name.empty()) {
            items.push_back(cueItem(ReadyGroup::media, *cue, " needs an NDI source",
                                    "Choose the live source before running this cue."));
            continue;
        }
        const std::string& name = source->name; // clang 14 can't capture a structured binding
        const auto same = std::find_if(sources.begin(), sources.end(), [&](const auto& seen) { return seen.first == name; });
        if (same == sources.end()) sources.push_back({source->name, {cue->name}});
        else same->second.push_back(cue->name);
    }
    for (const auto& [name, users] : sources) {
        items.push_back({ReadyGroup::media, runtime.isAvailable ? ReadyStatus::ready : ReadyStatus::attention, "NDI: " + name,
                         "Live network source used by " + joined(users) +
                             ". Check the source and rehearse its picture and sound before the event."});
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::scheduleItems(const Show& show) {
    std::vector<const Section*> timed;
    for (const Section& section : show.sections) {
        if (section.plannedStart) timed.push_back(&section);
    }
    if (timed.empty()) {
        return {{ReadyGroup::schedule, ReadyStatus::optional, "No planned times", "Add times to track the schedule"}};
    }
    std::vector<ReadyItem> items;
    for (std::size_t i = 0; i + 1 < timed.size(); ++i) {
        const Section& first = *timed[i];
        const Section& next = *timed[i + 1];
        if (first.plannedMinutes && *first.plannedStart + *first.plannedMinutes > *next.plannedStart) {
            items.push_back({ReadyGroup::schedule, ReadyStatus::attention, "Schedule overlap",
                             first.title + " runs into " + next.title});
        }
    }
    if (items.empty()) {
        items.push_back({ReadyGroup::schedule, ReadyStatus::ready, counted(timed.size(), "timed section", "timed sections"),
                         "Starts " + TimeText::clock(*timed.front()->plannedStart)});
    }
    return items;
}

std::vector<ReadyItem> ReadyCheck::cueGroupItems(const Show& show) {
    std::vector<ReadyItem> items;
    if (!show.cueGroups) return items;
    // Each group's cues in show order, found through one index rather than a
    // walk of the whole show per group.
    const std::vector<const Cue*> all = show.allCues();
    std::unordered_map<Uuid, std::size_t> position;
    for (std::size_t i = 0; i < all.size(); ++i) position.emplace(all[i]->id, i);
    for (const CueGroup& group : *show.cueGroups) {
        std::vector<std::size_t> places;
        for (const Uuid& id : group.cueIDs) {
            if (const auto found = position.find(id); found != position.end()) places.push_back(found->second);
        }
        std::sort(places.begin(), places.end());
        places.erase(std::unique(places.begin(), places.end()), places.end());
        std::vector<const Cue*> members;
        for (std::size_t place : places) members.push_back(all[place]);
        const std::vector<CueGroupStep> steps = playbackSteps(members);
        if (steps.empty()) {
            items.push_back({ReadyGroup::control, ReadyStatus::attention, group.name, "All cues in this group are disabled."});
            continue;
        }
        const auto stops = std::find_if(steps.begin(), steps.end() - 1,
                                        [&](const CueGroupStep& step) { return !show.groupCueHasEnd(step.driver); });
        if (stops != steps.end() - 1) {
            items.push_back(withFix({ReadyGroup::control, ReadyStatus::attention, group.name,
                                     "This group stops advancing here. Set a Group duration or a finite media "
                                     "ending. GO takes over after the group."},
                                    readyFix::EditCue{stops->driver.id}, editCueLabel));
            continue;
        }
        items.push_back({ReadyGroup::control, ReadyStatus::ready, group.name,
                         std::string(group.repeats ? "repeats until GO or Stop" : "plays once") +
                             " · GO continues after the group"});
    }
    return items;
}

ReadyItem ReadyCheck::keyboardItem() {
    return {ReadyGroup::control, ReadyStatus::ready, "Keyboard",
            "Space GO · Esc Panic · ← → slides · . safe slide · V C B jump to song sections"};
}

std::vector<ReadyItem> ReadyCheck::midiItems(const ReadyMIDI& midi) {
    if (!midi.isEnabled || midi.boundActions.empty()) {
        return {withFix({ReadyGroup::control, ReadyStatus::optional, "MIDI control is off",
                         "Learn a MIDI button to run the show from a foot switch or pad."},
                        readyFix::OpenMIDI{}, "MIDI settings")};
    }
    if (midi.sources.empty()) {
        return {withFix({ReadyGroup::control, ReadyStatus::attention, "MIDI controller not connected",
                         "Buttons are set up (" + joined(midi.boundActions) + ") but no MIDI device is plugged in."},
                        readyFix::OpenMIDI{}, "MIDI settings")};
    }
    return {{ReadyGroup::control, ReadyStatus::ready, "MIDI control", joined(midi.sources)}};
}

} // namespace velarion
