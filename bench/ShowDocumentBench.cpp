// The show document on its way to and from disk, on a large generated show
// (5,000 cues, 2,000 library items): JSON encode and decode, the package's
// open and save, copying a Show, and the memory a loaded show holds.
//
// What we aim for on a two-core development machine: open within 100 ms, save
// within 60 ms, a loaded show under four times the size of its JSON text.
// Every allocation of this program is counted (AllocationCounter.h), which
// adds a few nanoseconds to each; the times include that.

#include "AllocationCounter.h"
#include "ShowGenerator.h"
#include "TempFolder.h"

#include "LiveModel/ShowJson.h"
#include "LiveModel/ShowPackage.h"

#include <benchmark/benchmark.h>

#include <string>

namespace velarion::bench {

namespace {

const Show& largeShow() {
    static const Show show = makeBenchmarkShow();
    return show;
}

const std::string& largeShowText() {
    static const std::string text = encodeShow(largeShow());
    return text;
}

double jsonBytes() { return static_cast<double>(largeShowText().size()); }

// A package holding the large show, in a folder removed at the end.
struct SavedPackage {
    testing::TempFolder folder{"velarion-bench"};
    ShowPackage package = ShowPackage::create(folder / "Large.velarion", largeShow());
};

void encodeBenchmark(benchmark::State& state) {
    const Show& show = largeShow();
    for (auto _ : state) {
        std::string text = encodeShow(show);
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["jsonBytes"] = jsonBytes();
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * largeShowText().size()));
}

void decodeBenchmark(benchmark::State& state) {
    const std::string& text = largeShowText();
    for (auto _ : state) {
        Show show = decodeShow(text);
        benchmark::DoNotOptimize(show.sections.sharedItems().data());
    }
    state.counters["jsonBytes"] = jsonBytes();
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// Reads and decodes show.json. Also measures, on every run, what the loaded
// show holds once the text and the parse buffers are gone, and the most the
// open held at once on the way.
void openBenchmark(benchmark::State& state) {
    const SavedPackage saved;
    std::int64_t loadedBytes = 0;
    std::int64_t peakBytes = 0;
    for (auto _ : state) {
        const std::int64_t before = allocation::liveBytes();
        allocation::resetPeak();
        Show show = saved.package.open();
        loadedBytes = allocation::liveBytes() - before;
        peakBytes = allocation::peakBytes() - before;
        benchmark::DoNotOptimize(show.sections.sharedItems().data());
    }
    state.counters["jsonBytes"] = jsonBytes();
    state.counters["loadedBytes"] = static_cast<double>(loadedBytes);
    state.counters["peakBytes"] = static_cast<double>(peakBytes);
    state.counters["loadedPerJsonByte"] = static_cast<double>(loadedBytes) / jsonBytes();
    state.counters["peakPerJsonByte"] = static_cast<double>(peakBytes) / jsonBytes();
}

// Encodes and replaces show.json atomically, flushed to the disk.
void saveBenchmark(benchmark::State& state) {
    const SavedPackage saved;
    const Show& show = largeShow();
    for (auto _ : state) saved.package.save(show);
    state.counters["jsonBytes"] = jsonBytes();
}

// Undo snapshots and the engine's copy: sections and library items are
// shared, so a copy allocates only the top-level lists.
void copyBenchmark(benchmark::State& state) {
    const Show& show = largeShow();
    std::int64_t copyBytes = 0;
    for (auto _ : state) {
        const std::int64_t before = allocation::liveBytes();
        Show copy = show;
        copyBytes = allocation::liveBytes() - before;
        benchmark::DoNotOptimize(copy.sections.sharedItems().data());
    }
    state.counters["copyBytes"] = static_cast<double>(copyBytes);
}

} // namespace

BENCHMARK(encodeBenchmark)->Name("ShowJson/encode")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeBenchmark)->Name("ShowJson/decode")->Unit(benchmark::kMillisecond);
BENCHMARK(openBenchmark)->Name("ShowPackage/open")->Unit(benchmark::kMillisecond);
BENCHMARK(saveBenchmark)->Name("ShowPackage/save")->Unit(benchmark::kMillisecond);
BENCHMARK(copyBenchmark)->Name("Show/copy")->Unit(benchmark::kMicrosecond);

} // namespace velarion::bench

BENCHMARK_MAIN();
