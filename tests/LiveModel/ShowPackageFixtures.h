#pragma once
// Shows, library items and file helpers shared by the package tests.

#include "ScopedEnvironment.h"
#include "ShowBuilder.h"

#include "LiveModel/Show.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace velarion::testing {

inline void writeText(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string readText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Names in a folder, sorted; shows left-over temporary files.
inline std::vector<std::string> folderListing(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

inline MediaItem fileItem(MediaKind kind, std::string fileName) { return makeItem(kind, std::move(fileName)); }

inline MediaItem deckItem(std::vector<std::string> pages, std::string fileName) {
    MediaItem item = fileItem(MediaKind::deck, std::move(fileName));
    item.deck = DeckInfo{};
    item.deck->pages = std::move(pages);
    item.deck->source = "Talk.pdf";
    return item;
}

inline Show showWithLibrary(std::vector<MediaItem> items) { return makeShow("Sunday", {}, std::move(items)); }

// A show with a realistic mix of cues and library items; `cueCount` makes
// it as large as a test needs.
inline Show sampleShow(const std::string& title, int cueCount) {
    Show show;
    show.id = Uuid::random();
    show.title = title;
    show.subtitle = "Morning service";
    show.slideDissolve = 0.4;
    show.holding.title = "Welcome";

    MediaItem video = fileItem(MediaKind::video, "Video/Opening.mov");
    video.duration = 93.25;
    MediaItem sound = fileItem(MediaKind::audio, "Audio/Walk-in – Ünïcode.m4a");
    sound.bin = "Music";
    MediaItem deck = deckItem({"Decks/Deck 1/1.png", "Decks/Deck 1/2.png"}, "Decks/Talk.pdf");
    deck.deck->notes = {"First", "Second"};
    show.library = {video, sound, deck};

    Section section;
    section.id = Uuid::random();
    section.title = "Welcome";
    section.plannedStart = 10 * 60;
    for (int i = 0; i < cueCount; ++i) {
        Cue cue;
        cue.id = Uuid::random();
        cue.name = title + " cue " + std::to_string(i);
        cue.notes = "Notes for " + std::to_string(i) + " with \"quotes\" and a \\ backslash";
        switch (i % 4) {
        case 0:
            cue.kind = VideoCue{.mediaID = video.id, .fadeIn = 0.5, .level = 0.8};
            break;
        case 1:
            cue.kind = AudioCue{.mediaID = sound.id, .inPoint = 1.5, .bus = AudioBus::headphones};
            break;
        case 2:
            cue.kind = SlidesCue{.deckID = deck.id, .startSlide = i % 3};
            break;
        default:
            cue.kind = MessageCue{.text = "Doors", .duration = 12.5};
            break;
        }
        cue.follow = i % 3 == 0 ? Follow::manual : Follow::afterPrevious;
        cue.preWait = i * 0.25;
        if (i % 5 == 0) cue.geometry = CueGeometry{0.5, 0.1, -0.2, 15, 0.9};
        section.cues.push_back(std::move(cue));
    }
    show.sections.emplace_back(std::move(section));
    return show;
}

} // namespace velarion::testing
