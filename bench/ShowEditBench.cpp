// Editing the large generated show through the undo history: the time of one
// recorded cue update, and the memory a hundred recorded updates add.
//
// What we aim for: one updateCue within 1 ms; a hundred recorded single-cue
// edits adding less than a quarter of the show's own memory. Every allocation
// of this program is counted (AllocationCounter.h).

#include "AllocationCounter.h"
#include "ShowGenerator.h"

#include "LiveModel/EditHistory.h"
#include "LiveModel/ShowEdit.h"
#include "LiveModel/ShowJson.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace velarion::bench {

namespace {

// The show as an open would hold it: decoded, so nothing is shared yet.
Show loadedShow() { return decodeShow(encodeShow(makeBenchmarkShow())); }

// A cue of the show, spread over every section, with new notes.
ShowEdit noteEdit(const Show& show, std::size_t step) {
    const auto cues = show.allCues();
    Cue cue = *cues[(step * 37) % cues.size()];
    cue.notes = "Note " + std::to_string(step);
    return edit::UpdateCue{std::move(cue)};
}

void updateCueThroughHistory(benchmark::State& state) {
    Show show = loadedShow();
    EditHistory history(100);
    std::size_t step = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const ShowEdit edit = noteEdit(show, step++);
        state.ResumeTiming();
        show = history.apply(edit, show);
        benchmark::DoNotOptimize(show);
    }
}
BENCHMARK(updateCueThroughHistory)->Unit(benchmark::kMillisecond);

void hundredRecordedEdits(benchmark::State& state) {
    std::int64_t showBytes = 0;
    std::int64_t historyBytes = 0;
    for (auto _ : state) {
        const std::int64_t empty = allocation::liveBytes();
        Show show = loadedShow();
        showBytes = allocation::liveBytes() - empty;
        EditHistory history(100);
        const std::int64_t loaded = allocation::liveBytes();
        for (std::size_t step = 0; step < 100; ++step) show = history.apply(noteEdit(show, step), show);
        historyBytes = allocation::liveBytes() - loaded;
        benchmark::DoNotOptimize(history);
    }
    state.counters["showBytes"] = static_cast<double>(showBytes);
    state.counters["historyBytes"] = static_cast<double>(historyBytes);
    state.counters["historyPerShow"] = static_cast<double>(historyBytes) / showBytes;
}
BENCHMARK(hundredRecordedEdits)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

} // namespace velarion::bench

BENCHMARK_MAIN();
