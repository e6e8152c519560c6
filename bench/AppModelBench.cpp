// The application model on the large generated show (5,000 cues, 2,000
// library items), with a real engine on the test doubles and the real
// background writer:
//
// - AppModel/openShow: opening a package through load and organize, a new
//   engine and output manager included. Aim: within 150 ms.
// - AppModel/autosaveMainLoop: how long an autosave holds the main loop,
//   the snapshot and the hand-over to the writer only. Aim: under 5 ms.
// - AppModel/autosaveRoundTrip: from the autosave firing until its result
//   is back on the main loop, encode and atomic write included.
//
// Time runs in virtual time; only the model's own work is timed (manual
// time), not the edits that precede each autosave.

#include "BenchAppDoubles.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "ShowGenerator.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/AppModel.h"
#include "Live/ThreadShowWriter.h"
#include "LiveModel/ShowEdit.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <string>

namespace velarion::bench {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// CPU time of the calling thread: what the main loop itself spent, apart
// from time it lost to other programs on a busy machine.
double threadCpuSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// A model on the doubles in a temporary home, with the large show saved
// twice so that opens can alternate between two packages.
struct BenchApp : BenchAppDoubles {
    BenchApp() : BenchAppDoubles("velarion-bench") {
        const Show show = makeBenchmarkShow();
        ShowPackage::create(first, show);
        ShowPackage::create(second, show);
        model = std::make_unique<AppModel>(ports());
        // The first opens organize and write each package once; what is
        // measured afterwards is the open of a tidy show.
        model->openShow(first);
        model->openShow(second);
    }

    std::filesystem::path first = home / "Documents" / "A.velarion";
    std::filesystem::path second = home / "Documents" / "B.velarion";
    std::unique_ptr<AppModel> model;
};

void openShowBenchmark(benchmark::State& state) {
    BenchApp app;
    bool toFirst = true;
    for (auto _ : state) {
        app.model->openShow(toFirst ? app.first : app.second);
        toFirst = !toFirst;
    }
    state.counters["cues"] = static_cast<double>(app.model->show()->allCues().size());
}

// Puts the clock between engine ticks, so that a short step around the
// autosave's moment runs the autosave alone.
constexpr double stepSeconds = 1e-6;

void autosaveMainLoopBenchmark(benchmark::State& state) {
    BenchApp app;
    app.scheduler.advance(LiveEngine::tickSeconds / 2);
    int edits = 0;
    double cpuSeconds = 0;
    double longestSeconds = 0;
    for (auto _ : state) {
        app.model->edit(edit::SetTitle{"Take " + std::to_string(++edits), ""});
        app.scheduler.advance(AppModel::autosaveDelaySeconds - stepSeconds);
        const auto start = Clock::now();
        const double cpuStart = threadCpuSeconds();
        app.scheduler.advance(2 * stepSeconds);
        cpuSeconds += threadCpuSeconds() - cpuStart;
        const double seconds = secondsSince(start);
        longestSeconds = std::max(longestSeconds, seconds);
        state.SetIterationTime(seconds);
        app.writer.waitUntilIdle();
        app.scheduler.advance(LiveEngine::tickSeconds - stepSeconds);
        if (app.model->isDirty()) state.SkipWithError("the autosave didn't come back");
    }
    state.counters["mainThreadCpuUs"] = cpuSeconds * 1e6 / static_cast<double>(state.iterations());
    state.counters["longestUs"] = longestSeconds * 1e6;
}

void autosaveRoundTripBenchmark(benchmark::State& state) {
    BenchApp app;
    app.scheduler.advance(LiveEngine::tickSeconds / 2);
    int edits = 0;
    for (auto _ : state) {
        app.model->edit(edit::SetTitle{"Take " + std::to_string(++edits), ""});
        app.scheduler.advance(AppModel::autosaveDelaySeconds - stepSeconds);
        const auto start = Clock::now();
        app.scheduler.advance(2 * stepSeconds);
        app.writer.waitUntilIdle();
        app.scheduler.runDue();
        state.SetIterationTime(secondsSince(start));
        if (app.model->isDirty()) state.SkipWithError("the autosave didn't come back");
        app.scheduler.advance(LiveEngine::tickSeconds - stepSeconds);
    }
}

} // namespace

BENCHMARK(openShowBenchmark)->Name("AppModel/openShow")->Unit(benchmark::kMillisecond);
BENCHMARK(autosaveMainLoopBenchmark)
    ->Name("AppModel/autosaveMainLoop")
    ->UseManualTime()
    // Each step also edits and writes the whole show untimed; a fixed count
    // keeps the run short when the timed part is only microseconds.
    ->Iterations(300)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(autosaveRoundTripBenchmark)
    ->Name("AppModel/autosaveRoundTrip")
    ->UseManualTime()
    ->Iterations(60)
    ->Unit(benchmark::kMillisecond);

} // namespace velarion::bench

BENCHMARK_MAIN();
