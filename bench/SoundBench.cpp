// Sound files on GStreamer, on a private sound server with null sinks:
// - how soon a prepared player's sound reaches the sink after `play`
//   (target within 20 ms), and a cold one's from the moment it is opened
//   (target within 150 ms);
// - 32 players at once on one device: late-buffer reports at the sinks,
//   which is how an underrun shows;
// - CPU per playing stereo file;
// - the main loop's hold at GO of a sound cue, the live engine on the real
//   players (target within 5 ms: the file opens off the main loop), and
//   "untilSoundingMs", the time until the cue sounds.

#include "FakePictures.h"
#include "GeneratedSound.h"
#include "PrivateSoundServer.h"
#include "RecordingOutputManager.h"
#include "ShowBuilder.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "LiveEngine/LiveEngine.h"

#include "Platform/Sound/GstMediaPlayers.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <sys/resource.h>
#include <thread>

namespace velarion::bench {
namespace {

using testing::PrivateSoundServer;

struct Setting {
    std::unique_ptr<PrivateSoundServer> server;
    std::string whyNot;
    testing::TempFolder folder{"velarion-sound-bench"};
    std::filesystem::path file;
    GstMediaPlayers players{nullptr, [](const SceneID&, const std::filesystem::path&) { return nullptr; },
                            GstSoundOptions{.sinkProvidesClock = false}};

    Setting() {
        server = PrivateSoundServer::start(whyNot);
        file = folder / "stereo.wav";
        testing::writeSineWav(file, {.amplitude = 0.1, .seconds = 20});
    }
};

Setting& setting() {
    static Setting shared;
    return shared;
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) { return time.tv_sec + time.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::shared_ptr<GstSoundFilePlayer> open(benchmark::State& state) {
    auto player = std::dynamic_pointer_cast<GstSoundFilePlayer>(setting().players.openSound(setting().file));
    if (!player) state.SkipWithError(setting().players.lastFailure().c_str());
    return player;
}

// Waits for the first buffer after `play` to reach the sink.
std::optional<double> firstBuffer(const GstSoundFilePlayer& player) {
    for (int i = 0; i < 2000; ++i) {
        if (auto seconds = player.secondsToFirstBufferAfterPlay()) return seconds;
        std::this_thread::sleep_for(std::chrono::microseconds(250));
    }
    return std::nullopt;
}

bool serverRuns(benchmark::State& state) {
    if (setting().server) return true;
    state.SkipWithError(("no sound server: " + setting().whyNot).c_str());
    return false;
}

void BM_PreparedPlayToFirstBuffer(benchmark::State& state) {
    if (!serverRuns(state)) return;
    for (auto _ : state) {
        auto player = open(state);
        if (!player) return;
        player->setDevice("House");
        player->play();
        const auto seconds = firstBuffer(*player);
        if (!seconds) return state.SkipWithError("no buffer reached the sink");
        state.SetIterationTime(*seconds);
        player->stop();
    }
}
BENCHMARK(BM_PreparedPlayToFirstBuffer)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_ColdOpenAndPlayToFirstBuffer(benchmark::State& state) {
    if (!serverRuns(state)) return;
    for (auto _ : state) {
        const auto opening = std::chrono::steady_clock::now();
        auto player = open(state);
        if (!player) return;
        player->setDevice("House");
        player->setCurrentSeconds(0); // as the engine does: the in point
        player->setVolume(1);
        const double openSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - opening).count();
        player->play();
        const auto seconds = firstBuffer(*player);
        if (!seconds) return state.SkipWithError("no buffer reached the sink");
        state.SetIterationTime(openSeconds + *seconds);
        player->stop();
    }
}
BENCHMARK(BM_ColdOpenAndPlayToFirstBuffer)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// 32 files on one device for 4 s; reports late buffers and CPU per file.
void BM_ThirtyTwoPlayersOnOneDevice(benchmark::State& state) {
    if (!serverRuns(state)) return;
    constexpr int count = 32;
    constexpr double seconds = 4;
    for (auto _ : state) {
        std::vector<std::shared_ptr<GstSoundFilePlayer>> playing;
        for (int i = 0; i < count; ++i) {
            auto player = open(state);
            if (!player) return;
            player->setDevice("House");
            playing.push_back(player);
        }
        for (auto& player : playing) player->play();
        std::this_thread::sleep_for(std::chrono::milliseconds(300)); // past the start
        const double cpuBefore = cpuSeconds();
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
        const double cpu = cpuSeconds() - cpuBefore;
        int late = 0, stillPlaying = 0;
        for (auto& player : playing) {
            late += player->lateBufferReports();
            stillPlaying += player->isPlaying() ? 1 : 0;
            player->stop();
        }
        state.counters["lateBufferReports"] = late;
        state.counters["playing"] = stillPlaying;
        state.counters["cpuPercentPerFile"] = 100 * cpu / seconds / count;
    }
}
BENCHMARK(BM_ThirtyTwoPlayersOnOneDevice)->Unit(benchmark::kSecond)->Iterations(1);

void BM_GoOfASoundCueHoldsTheMainLoop(benchmark::State& state) {
    if (!serverRuns(state)) return;
    const ShowPackage package(setting().folder / "Bench.velarion");
    std::filesystem::create_directories(package.mediaFolder());
    std::filesystem::copy_file(setting().file, package.mediaURL("Go.wav"),
                               std::filesystem::copy_options::overwrite_existing);
    Show show;
    show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
    show.audio.houseDeviceID = "House";
    testing::ShowBuilder build(show);
    const Uuid item = build.addItem("Go.wav", MediaKind::audio, 20);
    build.add("Go", AudioCue{item});

    testing::VirtualScheduler scheduler;
    testing::RecordingOutputManager outputs;
    testing::FakeImageLoader images;
    testing::FakeTextCards cards;
    testing::FakeSlidePictures slides;
    double sounding = 0;
    for (auto _ : state) {
        LiveEngine engine(show, package, EnginePorts{scheduler, outputs, setting().players, images, cards, slides},
                          false);
        scheduler.runDue();
        const auto pressed = std::chrono::steady_clock::now();
        engine.perform(command::Go{});
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - pressed).count());
        // The main loop goes on turning until the player is in and plays.
        const auto playing = [&] {
            const auto& running = engine.runs();
            return !running.empty() && running.begin()->second.audio &&
                   running.begin()->second.audio->player->isPlaying();
        };
        for (int i = 0; i < 20000 && !playing(); ++i) {
            scheduler.runDue();
            std::this_thread::sleep_for(std::chrono::microseconds(250));
        }
        if (!playing()) return state.SkipWithError("the cue never sounded");
        sounding += std::chrono::duration<double>(std::chrono::steady_clock::now() - pressed).count();
        engine.shutdown();
        scheduler.runDue();
    }
    state.counters["untilSoundingMs"] = sounding * 1000 / static_cast<double>(state.iterations());
}
BENCHMARK(BM_GoOfASoundCueHoldsTheMainLoop)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

} // namespace
} // namespace velarion::bench

BENCHMARK_MAIN();
