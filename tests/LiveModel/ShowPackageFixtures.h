#pragma once
// Shows, library items and file helpers shared by the package tests.

#include "ScopedEnvironment.h"
#include "ShowBuilder.h"
#include "ShowGenerator.h"

#include "LiveModel/Show.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
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

// A generated show with every case of cue and library item, at least
// `cueCount` cues; the title seeds it, so that two titles give two shows.
inline Show sampleShow(const std::string& title, int cueCount) {
    bench::BenchmarkShowShape shape = bench::smallShowShape(std::hash<std::string>{}(title));
    shape.cueCount = std::max(shape.cueCount, cueCount);
    Show show = bench::makeBenchmarkShow(shape);
    show.title = title;
    return show;
}

} // namespace velarion::testing
