// The Ready check on the large generated show (5,000 cues and its library),
// as the console or the agent runs it: every line, the media files looked up
// in a package on disk. The package folder holds no files, so every library
// item is looked for and reported missing: the most lines the check can make.
//
// What we aim for on a two-core development machine: within 5 ms, since the
// console may run it on the main loop whenever the operator opens the list.

#include "FakeAudioDevices.h"
#include "ShowGenerator.h"
#include "TempFolder.h"

#include "LiveEngine/ReadyCheck.h"

#include <benchmark/benchmark.h>

namespace velarion::bench {

namespace {

// With `hasPackage` 0 the media files aren't looked up: the check's own work.
void BM_ReadyCheckOfTheBenchmarkShow(benchmark::State& state) {
    const bool hasPackage = state.range(0) != 0;
    const Show show = makeBenchmarkShow();
    const testing::TempFolder folder("ready-bench");
    const ShowPackage package(folder / "Bench.velarion");
    const testing::FakeAudioDevices devices({{"speakers", "Speakers", true}, {"usb", "USB Headphones", false}});
    ReadyCheckInputs inputs;
    inputs.spotify.presence = ReadyMusicApp::Presence::running;
    std::size_t lines = 0;
    for (auto _ : state) {
        const std::vector<ReadyItem> items = ReadyCheck::evaluate(show, hasPackage ? &package : nullptr, devices, inputs);
        lines = items.size();
        benchmark::DoNotOptimize(items.data());
    }
    state.counters["lines"] = static_cast<double>(lines);
}
BENCHMARK(BM_ReadyCheckOfTheBenchmarkShow)->ArgName("package")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace velarion::bench

BENCHMARK_MAIN();
