// Video surfaces on generated 1080p H.264 files (AAC sound):
// - cold `prepare` until the first frame is in the slot;
// - decoding and presenting one 1080p30 and one 1080p60 stream, as CPU per
//   cent of one core with frames shown and dropped; the presenter takes the
//   planes an OpenGL window uploads;
// - a crossfade of two 1080p30 streams, their levels ramped at 30 steps a
//   second as the engine does;
// - the BGRA conversion a CPU reader (feed, preview) pays once per frame.
// VELARION_VIDEO_BENCH_SECONDS sets how long each stream plays (default 20).

#include "PrivateSoundServer.h"
#include "RealTimeScheduler.h"
#include "TempFolder.h"

#include "Platform/Video/GstVideoSurface.h"
#include "ShowStage/VideoFrame.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace velarion {
namespace {

using testing::PrivateSoundServer;
using testing::RealTimeScheduler;

// The sound plays on a private sound server's null sink, as it would on a
// real one; without a server it goes to a null sink in the process.
void ensureSoundServer() {
    static std::string whyNot;
    static std::unique_ptr<PrivateSoundServer> server = PrivateSoundServer::start(whyNot);
    if (!server) std::fprintf(stderr, "VideoBench: no sound server (%s)\n", whyNot.c_str());
}
using testing::TempFolder;

TempFolder& media() {
    static TempFolder folder("velarion-video-bench");
    return folder;
}

// A moving test pattern with a tone, 4 s long, made once per process.
std::filesystem::path video(int framesPerSecond) {
    const auto path = media() / ("1080p" + std::to_string(framesPerSecond) + ".mp4");
    if (std::filesystem::exists(path)) return path;
    const int frames = framesPerSecond * 4;
    const std::string command =
        "gst-launch-1.0 -q videotestsrc pattern=smpte horizontal-speed=4 num-buffers=" + std::to_string(frames) +
        " ! video/x-raw,format=I420,width=1920,height=1080,framerate=" + std::to_string(framesPerSecond) +
        "/1 ! x264enc speed-preset=veryfast bitrate=8000 key-int-max=" + std::to_string(framesPerSecond * 2) +
        " ! h264parse ! mp4mux name=mux ! filesink location=\"" + path.string() +
        "\" audiotestsrc num-buffers=" + std::to_string(4 * 44100 / 1024) +
        " ! audio/x-raw,rate=44100,channels=2 ! avenc_aac ! mux. >/dev/null";
    if (std::system(command.c_str()) != 0) return {};
    return path;
}

double playSeconds() {
    const char* value = std::getenv("VELARION_VIDEO_BENCH_SECONDS");
    return value != nullptr ? std::max(1.0, std::atof(value)) : 20.0;
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

std::shared_ptr<GstVideoSurface> prepared(RealTimeScheduler& scheduler, const std::filesystem::path& path,
                                          bool& failed) {
    ensureSoundServer();
    // Null sinks stall a clock they provide.
    auto surface = GstVideoSurface::make(scheduler, nullptr, Uuid::random(), path, {.sinkProvidesClock = false});
    bool answered = false;
    surface->prepare(5, [&](VideoPreparation result) {
        answered = true;
        failed = !std::holds_alternative<VideoSurfaceInfo>(result);
    });
    while (!answered || (!failed && !surface->hasFrameToShow())) scheduler.runFor(0.001);
    return surface;
}

void BM_ColdPrepareToFirstFrame(benchmark::State& state) {
    const auto path = video(30);
    RealTimeScheduler scheduler;
    bool failed = false;
    prepared(scheduler, path, failed); // the process's first pipeline loads the plugins
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        auto surface = prepared(scheduler, path, failed);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (failed) state.SkipWithError("the video didn't prepare");
    }
}
BENCHMARK(BM_ColdPrepareToFirstFrame)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

// Plays `streams` copies of the file at once, looping, while a renderer
// takes the latest frame of each at 60 Hz; with `crossfade`, the first
// fades out and the second in over the run.
void playStreams(benchmark::State& state, int framesPerSecond, int streams, bool crossfade = false) {
    const auto path = video(framesPerSecond);
    for (auto _ : state) {
        RealTimeScheduler scheduler;
        std::vector<std::shared_ptr<GstVideoSurface>> surfaces;
        bool failed = false;
        for (int i = 0; i < streams; ++i) {
            surfaces.push_back(prepared(scheduler, path, failed));
            surfaces.back()->setLoops(true);
            surfaces.back()->setVolume(0.5, false);
        }
        if (failed) {
            state.SkipWithError("the video didn't prepare");
            return;
        }
        const double seconds = playSeconds();
        const double cpuBefore = cpuSeconds();
        for (const auto& surface : surfaces) surface->play();
        int tick = 0;
        for (double played = 0; played < seconds; played += 1.0 / 60, ++tick) {
            for (const auto& surface : surfaces) benchmark::DoNotOptimize(surface->latestVideoFrame());
            if (crossfade && tick % 2 == 0) {
                surfaces.front()->setVolume(0.5 * (1 - played / seconds), false);
                surfaces.back()->setVolume(0.5 * played / seconds, false);
            }
            scheduler.runFor(1.0 / 60);
        }
        const double cpu = cpuSeconds() - cpuBefore;
        double shown = 0, dropped = 0;
        for (const auto& surface : surfaces) {
            shown += static_cast<double>(surface->frameCounts().shown);
            dropped += static_cast<double>(surface->frameCounts().dropped);
        }
        state.SetIterationTime(seconds);
        state.counters["cpuPercentOfOneCore"] = 100 * cpu / seconds;
        state.counters["framesShown"] = shown;
        state.counters["framesDropped"] = dropped;
        // On a machine shared with other work, the cost of each frame that
        // came out of the decoder says more than the frames that were late.
        state.counters["cpuMillisecondsPerFrame"] = shown + dropped > 0 ? 1000 * cpu / (shown + dropped) : 0;
        state.counters["secondsPlayed"] = seconds;
    }
}

void BM_Play1080p30(benchmark::State& state) { playStreams(state, 30, 1); }
void BM_Play1080p60(benchmark::State& state) { playStreams(state, 60, 1); }
void BM_Crossfade1080p30(benchmark::State& state) { playStreams(state, 30, 2, true); }
BENCHMARK(BM_Play1080p30)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(BM_Play1080p60)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(BM_Crossfade1080p30)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1);

// A 1080p frame in I420 with a gradient in every plane, converted as the
// first CPU reader of each frame converts it.
void BM_ConvertFrameForCpuReaders(benchmark::State& state) {
    constexpr int width = 1920, height = 1080;
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(width * height * 3 / 2);
    for (std::size_t i = 0; i < bytes->size(); ++i) (*bytes)[i] = static_cast<std::uint8_t>(i * 7 / 1920);
    const std::uint8_t* data = bytes->data();
    const auto frame = VideoFrame::make(VideoPlaneLayout::i420, width, height,
                                        {VideoPlane{data, width, width, height},
                                         VideoPlane{data + width * height, width / 2, width / 2, height / 2},
                                         VideoPlane{data + width * height * 5 / 4, width / 2, width / 2, height / 2}},
                                        {}, bytes);
    StillPixels target;
    for (auto _ : state) {
        convertToBGRA(*frame, target);
        benchmark::DoNotOptimize(target.bgra.data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ConvertFrameForCpuReaders)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace velarion

BENCHMARK_MAIN();
