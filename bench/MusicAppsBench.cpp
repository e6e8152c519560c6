// The music apps: what a status poll costs the main thread (the app's
// answer is taken off the clock, as it comes from a worker), and the time
// from GO to a confirmed start against the stand-in MPRIS player on a
// private bus and sound server; and a music folder search, first and again.

#include "ChildProcess.h"
#include "FakeStreamApp.h"
#include "GeneratedSound.h"
#include "LiveMusicShow.h"
#include "PrivateSessionBus.h"
#include "PrivateSoundServer.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Platform/Music/MusicLibrary.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <thread>

namespace velarion {
namespace {

// Keeps the work for the benchmark to run off the clock.
class DeferredTasks final : public StreamTasks {
public:
    void launch(Work work, StreamCancel cancel) override { waiting.emplace_back(std::move(work), cancel); }
    void runAll() {
        auto now = std::move(waiting);
        waiting.clear();
        for (auto& [work, cancel] : now) work(cancel);
    }
    std::vector<std::pair<Work, StreamCancel>> waiting;
};

void BM_StatusPollOnTheMainThread(benchmark::State& state) {
    Show show;
    show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
    testing::ShowBuilder build{show};
    StreamTrackCue song;
    song.reference = "spotify:track:song";
    song.level = 70;
    build.add("Song", SpotifyTrack{song});
    testing::VirtualScheduler scheduler;
    testing::RecordingOutputManager outputs;
    testing::FakeMediaPlayers players{scheduler};
    testing::FakeImageLoader images;
    testing::FakeTextCards cards;
    testing::FakeSlidePictures slides;
    testing::FakeStreamApp app;
    DeferredTasks tasks;
    EngineStreams streams{app.remote(), tasks};
    LiveEngine engine(show, ShowPackage("/shows/Bench.velarion"),
                      EnginePorts{scheduler, outputs, players, images, cards, slides, nullptr, &streams}, true);
    scheduler.runDue();
    engine.perform(command::Go{});
    tasks.runAll();
    scheduler.runDue();
    for (auto _ : state) {
        scheduler.advance(LiveEngine::tickSeconds * LiveEngine::streamPollTicks); // one poll
        state.PauseTiming();
        tasks.runAll(); // the app's answer, on a worker in the application
        state.ResumeTiming();
        scheduler.runDue(); // the answer back on the main loop
    }
    if (!engine.runs().begin()->second.streamStatus) state.SkipWithError("no status arrived");
    engine.shutdown();
}
BENCHMARK(BM_StatusPollOnTheMainThread)->Unit(benchmark::kMicrosecond);

void BM_GoToConfirmedStartAgainstTheStandIn(benchmark::State& state) {
    constexpr int songs = 20;
    std::string whyNot;
    auto sound = testing::PrivateSoundServer::start(whyNot);
    auto bus = sound ? testing::PrivateSessionBus::start(whyNot) : nullptr;
    if (!bus) return state.SkipWithError(whyNot.c_str());
    testing::ChildProcess player(VELARION_MPRIS_STANDIN, {"--name", "spotify", "--identity", "Spotify",
                                                          "--app-name", "Spotify", "--ignores-volume"});
    if (player.readLine(10) != "ready") return state.SkipWithError("the stand-in player didn't start");
    testing::LiveMusicShow live;
    for (int song = 0; song < songs; ++song)
        live.song("Song " + std::to_string(song), StreamApp::spotify, "spotify:track:f" + std::to_string(400 + song * 10));
    live.start();
    int song = 0;
    for (auto _ : state) {
        live.engine->perform(command::Go{});
        if (!live.runUntil([&] { return live.confirmed("Song " + std::to_string(song)); }, 10))
            return state.SkipWithError("the start wasn't confirmed");
        state.PauseTiming();
        live.scheduler.runFor(0.3); // past GO's lockout
        ++song;
        state.ResumeTiming();
    }
}
BENCHMARK(BM_GoToConfirmedStartAgainstTheStandIn)->Unit(benchmark::kMillisecond)->Iterations(20);

// A search of a music folder of 500 songs: with `fresh` every file's tags
// are read (a first search), else the folder is walked again and the cached
// tags are kept (a rescan).
void BM_MusicLibrarySearch(benchmark::State& state) {
    const bool fresh = state.range(0) == 1;
    testing::TempFolder folder("velarion-bench-library");
    for (int song = 0; song < 500; ++song) {
        const auto path = folder / ("Artist " + std::to_string(song / 50)) / ("Album " + std::to_string(song / 10)) /
                          ("Song " + std::to_string(song) + ".wav");
        std::filesystem::create_directories(path.parent_path());
        testing::writeSineWav(path, testing::Sine{441, 0.5, 0.01});
    }
    testing::VirtualScheduler clock;
    auto library = std::make_unique<MusicLibrary>(clock, folder.path());
    const auto search = [&] {
        bool done = false;
        library->searchMusicLibrary("song 42", [&](std::vector<StreamTrackResult>) { done = true; });
        while (!done) {
            std::this_thread::yield();
            clock.runDue();
        }
    };
    search();
    for (auto _ : state) {
        state.PauseTiming();
        if (fresh) library = std::make_unique<MusicLibrary>(clock, folder.path());
        clock.advance(MusicLibrary::rescanSeconds + 1);
        state.ResumeTiming();
        search();
    }
}
BENCHMARK(BM_MusicLibrarySearch)->Arg(1)->Arg(0)->ArgNames({"fresh"})->Unit(benchmark::kMillisecond);

} // namespace
} // namespace velarion

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
