#pragma once
// The library half of a generated show: files, imported decks, made decks and
// song decks, plus an index by kind so that cues can refer to real items.

#include "SeededRandom.h"
#include "ShowGenerator.h"

#include "LiveModel/MediaItem.h"
#include "LiveModel/Shared.h"

#include <vector>

namespace velarion::bench {

struct LibraryIndex {
    struct Deck {
        Uuid id;
        int slideCount = 0;
    };
    std::vector<Uuid> videos;
    std::vector<Uuid> images;
    std::vector<Uuid> sounds;
    std::vector<Deck> decks;
};

struct GeneratedLibrary {
    std::vector<Shared<MediaItem>> items;
    LibraryIndex index;
};

// Throws std::invalid_argument when the shape leaves no room for a video, an
// image, a sound and a deck besides the song decks.
GeneratedLibrary makeLibrary(const BenchmarkShowShape& shape, SeededRandom& random);

// A backdrop of the given case (the variant's index, taken modulo its size);
// a media backdrop shows one of the library's images.
Backdrop makeBackdrop(std::size_t caseIndex, SeededRandom& random, const LibraryIndex& library);

} // namespace velarion::bench
