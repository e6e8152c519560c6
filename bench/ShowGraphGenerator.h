#pragma once
// A generated show graph for the show core library's tests, benchmarks and
// fuzz seeds: a run of the asked size whose actions go through every kind of
// payload and target, and resources that use every variant case, all with
// references that resolve. The same size and seed give the same graph.

#include "ShowCore/ShowDocument.h"

#include <cstdint>

namespace velarion::bench {

struct ShowGraphSize {
    int acts = 2;
    int scenesPerAct = 2;
    int cuesPerScene = 3;
    int actionsPerCue = 13; // one of each payload kind per cue at 13
    std::uint64_t seed = 8;
};

showcore::ShowDocument makeShowGraph(const ShowGraphSize& size = {});

} // namespace velarion::bench
