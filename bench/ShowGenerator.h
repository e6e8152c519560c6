#pragma once
// Large, realistic show documents for benchmarks and property tests.
//
// The show is made from a seed alone: the same shape gives the same show on
// every run and compiler. Every cue kind and payload case appears (timer modes,
// looks with each backdrop, clears with and without a cue), optional fields are
// set in a realistic mix, and every reference points at something that exists:
// cues at library items and earlier cues, screens at feeds and looks, groups at
// cues. Pure function; any thread.

#include "LiveModel/Show.h"

#include <cstdint>

namespace velarion::bench {

struct BenchmarkShowShape {
    std::uint64_t seed = 1;
    int sectionCount = 100;
    int cueCount = 5000;
    // Videos, images, sounds and decks together, song decks included.
    int libraryItemCount = 2000;
    int songDeckCount = 50;
    int slidesPerSongDeck = 40;
    int screenCount = 4;
    int feedCount = 2;
    int cueGroupCount = 40;
};

// The shape of a small show that still covers every case; for tests and the
// fuzz seeds.
BenchmarkShowShape smallShowShape(std::uint64_t seed = 1);

// Throws std::invalid_argument for a shape too small to hold one item of each
// library kind or one cue of each case.
Show makeBenchmarkShow(const BenchmarkShowShape& shape = {});

} // namespace velarion::bench
