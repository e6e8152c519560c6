// The built-in backdrop loops: a whole 1280×720, 10-second loop at 30 frames
// a second as the application asks for it (drawing, encoding, the file),
// the smaller one the snapshot tool asks for, and one frame's drawing alone.

#include "Platform/Pictures/BackdropLoops.h"
#include "TempFolder.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

namespace velarion {
namespace {

void makeLoop(benchmark::State& state, int width, int height, double seconds, int fps) {
    testing::TempFolder folder("backdrop-bench");
    std::uintmax_t fileBytes = 0;
    for (auto _ : state) {
        const auto result =
            BackdropLoops::make(BuiltInBackdrop::drift, folder.path(), width, height, seconds, fps);
        const auto* file = std::get_if<std::filesystem::path>(&result);
        if (file == nullptr) {
            state.SkipWithError(std::get<BackdropLoops::Failed>(result).message.c_str());
            return;
        }
        state.PauseTiming();
        fileBytes = std::filesystem::file_size(*file);
        std::filesystem::remove(*file);
        state.ResumeTiming();
    }
    const double frames = seconds * fps;
    state.counters["frames/s"] =
        benchmark::Counter(frames * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["fileMB"] = double(fileBytes) / 1e6;
}

void BM_MakeLoop1280x720TenSeconds(benchmark::State& state) { makeLoop(state, 1280, 720, 10, 30); }
BENCHMARK(BM_MakeLoop1280x720TenSeconds)->Unit(benchmark::kSecond)->Iterations(2)->UseRealTime();

void BM_MakeLoop640x360SixSeconds(benchmark::State& state) { makeLoop(state, 640, 360, 6, 15); }
BENCHMARK(BM_MakeLoop640x360SixSeconds)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void BM_DrawFrame1280x720(benchmark::State& state) {
    int index = 0;
    for (auto _ : state) {
        QImage picture = BackdropLoops::frame(BuiltInBackdrop::ocean, 1280, 720, index++ % 300, 300);
        benchmark::DoNotOptimize(picture.constBits());
    }
}
BENCHMARK(BM_DrawFrame1280x720)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace velarion

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
