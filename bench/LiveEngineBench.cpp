// The live engine on the large generated show (5,000 cues), on the test
// doubles in virtual time: the cost of GO up to and including the scene
// handed to the outputs, and of one tick while fifty cues run.
//
// What we aim for on a two-core development machine: a GO within 0.5 ms and
// a tick with fifty running cues within 0.2 ms, since both happen on the main
// loop between frames. Only the engine's call is timed (manual time); moving
// virtual time past the GO lockout and starting the show again at its end
// are not. Every allocation of this program is counted (AllocationCounter.h),
// which adds a few nanoseconds to each; the times include that.

#include "AllocationCounter.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "ShowGenerator.h"
#include "VirtualScheduler.h"

#include "LiveEngine/LiveEngine.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion::bench {

namespace {

// Draws nothing and keeps no scenes, so that the outputs' side costs next to
// nothing. It does work out the program's layers at each apply, as a real
// manager does, because the engine asks for them on every publish.
class CountingOutputs final : public OutputManager {
public:
    void apply(const OutputScene& scene, const LayerKinds&, const VideoSurfaces&,
               const LayerRoutes& routes, const LyricPartPictures&,
               const std::optional<SceneID>&) override {
        ++applyCount;
        programLayers_.clear();
        for (const SceneLayer& layer : scene.layers) {
            auto route = routes.find(layer.id);
            if (route == routes.end() || route->second.contains(programID_))
                programLayers_.insert(layer.id);
        }
    }
    void configure(const OutputSetup&) override {}
    void updateStage(const ConfidenceState&, const std::optional<TimerState>&,
                     const std::optional<std::string>&, double) override {}
    void clearDiagnostics() override {}
    void closeAll() override {}
    void setOnHealthChange(HealthCallback) override {}
    std::vector<OutputHealth> health() const override { return {}; }
    std::optional<std::string> programOutputID() const override { return programID_; }
    std::string programOutputName() const override { return "Program"; }
    std::optional<std::string> programOutputSelection() const override { return std::nullopt; }
    void selectProgramOutput(const std::optional<std::string>&) override {}
    std::set<SceneID> programLayerIDs() const override { return programLayers_; }
    OutputScene programScene() const override { return {}; }
    std::optional<std::string> identify(const std::string&) override { return std::nullopt; }
    std::optional<std::string> setTestPattern(const std::string&, std::optional<OutputTestPattern>) override {
        return std::nullopt;
    }
    void setTestWindowVisible(const std::string&, bool) override {}
    bool testWindowIsVisible(const std::string&) const override { return false; }
    void showProgramPreview() override {}
    void addMirror(const std::weak_ptr<SceneSink>&) override {}
    void removeMirror(const std::shared_ptr<SceneSink>&) override {}
    std::vector<DisplayInfo> availableDisplays() const override { return {}; }

    std::uint64_t applyCount = 0;

private:
    std::string programID_ = LiveEngine::programDestination;
    std::set<SceneID> programLayers_;
};

// An engine on the doubles. The doubles are declared first so that they
// outlive the engine, as the ports' contract asks.
struct BenchEngine {
    explicit BenchEngine(const Show& show) {
        players.defaultSoundSeconds = 180;
        engine = std::make_unique<LiveEngine>(
            show, ShowPackage("/shows/Large.velarion"),
            EnginePorts{scheduler, outputs, players, images, cards, slides}, false);
        scheduler.runDue();
    }
    ~BenchEngine() { engine->shutdown(); }
    BenchEngine(const BenchEngine&) = delete;
    BenchEngine& operator=(const BenchEngine&) = delete;

    testing::VirtualScheduler scheduler;
    CountingOutputs outputs;
    testing::FakeMediaPlayers players{scheduler};
    testing::FakeImageLoader images;
    testing::FakeTextCards cards;
    testing::FakeSlidePictures slides;
    std::unique_ptr<LiveEngine> engine;
};

const Show& largeShow() {
    static const Show show = makeBenchmarkShow();
    return show;
}

// The library's items of one kind, in library order.
std::vector<const MediaItem*> mediaOf(const Show& show, MediaKind kind) {
    std::vector<const MediaItem*> items;
    for (const MediaItem& item : show.library)
        if (item.kind == kind) items.push_back(&item);
    if (items.empty()) throw std::logic_error("the benchmark show has no media of that kind");
    return items;
}

Cue manualCue(std::string name, CueKind kind) {
    Cue cue;
    cue.id = Uuid::random();
    cue.name = std::move(name);
    cue.kind = std::move(kind);
    return cue;
}

// The large show with one more section of cues that all keep running side by
// side: one picture per layer (a background video that loops, an image on the
// media layer, a lower third without an end), one timer counting up (there is
// only ever one timer), and looping sound effects, which hold no layer and
// don't hand music over. The sounds are spread over the library, as a real
// show's are.
Show showWithLongRunningSection(std::size_t cueCount) {
    Show show = largeShow();
    Section section{Uuid::random(), "Long runners", std::nullopt, std::nullopt, {}};
    VideoCue video{};
    video.mediaID = mediaOf(show, MediaKind::video).front()->id;
    video.layer = LayerKind::background;
    video.loops = true;
    section.cues.push_back(manualCue("Backdrop loop", video));
    const Uuid imageID = mediaOf(show, MediaKind::image).front()->id;
    section.cues.push_back(manualCue("Welcome slide", ImageCue{imageID, LayerKind::media, 0}));
    section.cues.push_back(manualCue("Speaker name", GraphicCue{"Speaker", "Title", std::nullopt}));
    TimerCue timer{};
    timer.mode = CountUpMode{};
    section.cues.push_back(manualCue("Service clock", timer));
    const std::vector<const MediaItem*> sounds = mediaOf(show, MediaKind::audio);
    for (std::size_t i = section.cues.size(); i < cueCount; ++i) {
        AudioCue sound{};
        sound.mediaID = sounds[(i * 7919) % sounds.size()]->id;
        sound.loops = true;
        sound.role = SoundRole::effect;
        section.cues.push_back(manualCue("Ambience " + std::to_string(i), sound));
    }
    show.sections.push_back(std::move(section));
    return show;
}

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// GO through the whole show again and again, each time past the lockout.
// At the end of the show the engine is built afresh (untimed), so that every
// GO is measured as it happens in a show played from the top.
void goBenchmark(benchmark::State& state) {
    const Show& show = largeShow();
    auto bench = std::make_unique<BenchEngine>(show);
    std::int64_t retainedBytes = 0;
    std::int64_t transientBytes = 0;
    std::uint64_t applies = 0;
    std::uint64_t sweeps = 0;
    std::uint64_t runsAtGo = 0;
    std::size_t mostRuns = 0;
    // A GO that starts a cue group also validates it and works out its
    // steps, so it is counted apart as well.
    double groupStartSeconds = 0;
    std::uint64_t groupStarts = 0;
    for (auto _ : state) {
        bench->scheduler.advance(LiveEngine::goLockoutSeconds + 0.05);
        if (!bench->engine->state().nextCueID) {
            bench.reset();
            bench = std::make_unique<BenchEngine>(show);
            ++sweeps;
        }
        const std::size_t runs = bench->engine->runs().size();
        runsAtGo += runs;
        mostRuns = std::max(mostRuns, runs);
        const std::uint64_t appliesBefore = bench->outputs.applyCount;
        const auto& group = bench->engine->playbackGroup();
        const std::optional<Uuid> groupBefore =
            group ? std::optional<Uuid>(group->id) : std::nullopt;
        const std::int64_t liveBefore = allocation::liveBytes();
        allocation::resetPeak();

        const auto start = std::chrono::steady_clock::now();
        bench->engine->perform(command::Go{});
        const double seconds = secondsSince(start);
        state.SetIterationTime(seconds);

        if (group && group->id != groupBefore) {
            groupStartSeconds += seconds;
            ++groupStarts;
        }

        transientBytes += allocation::peakBytes() - liveBefore;
        retainedBytes += allocation::liveBytes() - liveBefore;
        applies += bench->outputs.applyCount - appliesBefore;
    }
    const auto perGo = [&](auto total) {
        return static_cast<double>(total) / static_cast<double>(state.iterations());
    };
    state.counters["appliesPerGo"] = perGo(applies);
    state.counters["peakBytesPerGo"] = perGo(transientBytes);
    state.counters["keptBytesPerGo"] = perGo(retainedBytes);
    state.counters["runsAtGo"] = perGo(runsAtGo);
    state.counters["mostRuns"] = static_cast<double>(mostRuns);
    state.counters["showSweeps"] = static_cast<double>(sweeps);
    state.counters["groupStarts"] = static_cast<double>(groupStarts);
    state.counters["groupStartMicros"] =
        groupStarts == 0 ? 0 : groupStartSeconds * 1e6 / static_cast<double>(groupStarts);
}
BENCHMARK(goBenchmark)->Unit(benchmark::kMicrosecond)->UseManualTime();

// One tick of the engine (and its publish) while fifty cues run.
void tickBenchmark(benchmark::State& state) {
    constexpr std::size_t runningCount = 50;
    const Show show = showWithLongRunningSection(runningCount);
    BenchEngine bench(show);
    for (const Cue& cue : show.sections[show.sections.size() - 1].cues)
        bench.engine->perform(command::Fire{cue.id});
    // Lets the video prepare and the first ticks pass.
    for (int i = 0; i < 5; ++i) bench.scheduler.advance(LiveEngine::tickSeconds);

    const std::uint64_t ticksBefore = bench.engine->tickCount();
    bench.scheduler.advance(LiveEngine::tickSeconds);
    if (bench.engine->runs().size() != runningCount) {
        state.SkipWithError(
            ("expected 50 runs, found " + std::to_string(bench.engine->runs().size())).c_str());
        return;
    }
    if (bench.engine->tickCount() != ticksBefore + 1) {
        state.SkipWithError("one advance didn't run exactly one tick");
        return;
    }

    const std::uint64_t ticksAtStart = bench.engine->tickCount();
    const std::uint64_t appliesAtStart = bench.outputs.applyCount;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        bench.scheduler.advance(LiveEngine::tickSeconds);
        state.SetIterationTime(secondsSince(start));
    }
    const auto ticks = bench.engine->tickCount() - ticksAtStart;
    if (ticks != static_cast<std::uint64_t>(state.iterations()) ||
        bench.engine->runs().size() != runningCount)
        state.SkipWithError("the ticks or the runs drifted during the measurement");
    state.counters["runs"] = static_cast<double>(bench.engine->runs().size());
    state.counters["appliesPerTick"] =
        static_cast<double>(bench.outputs.applyCount - appliesAtStart) /
        static_cast<double>(state.iterations());
}
BENCHMARK(tickBenchmark)->Unit(benchmark::kMicrosecond)->UseManualTime();

// Stepping a 40-slide song deck live while two screens show two and four
// lyric lines: each step (a slide, or a part of one) up to and including the
// scene handed to the outputs, lyric part pictures drawn by the double.
void deckStepBenchmark(benchmark::State& state) {
    Show show = largeShow();
    // A generated song deck, with the page pictures and lyric sources that
    // drawing its slides gives it in the application.
    const MediaItem* song = nullptr;
    for (std::size_t i = 0; i < show.library.size() && song == nullptr; ++i) {
        const MediaItem& item = show.library[i];
        if (!item.song || !item.deck || !item.deck->made || item.deck->made->size() < 40) continue;
        MediaItem& deckItem = show.library.edit(i);
        DeckInfo& deck = *deckItem.deck;
        deck.pages.clear();
        deck.lyricSources.emplace();
        for (const MadeSlide& slide : *deck.made) {
            deck.pages.push_back("Songs/" + slide.id.text() + ".png");
            deck.lyricSources->push_back(slide.lyricSource.value_or(LyricSlideSource{}));
        }
        song = &show.library[i];
    }
    if (song == nullptr) {
        state.SkipWithError("the benchmark show has no 40-slide song deck");
        return;
    }
    show.outputs.materializeScreens();
    int limit = 2;
    for (LogicalScreen& screen : show.outputs.screens)
        if (screen.role == ScreenRole::audience && limit <= 4) {
            screen.lyricLines = limit;
            screen.lookID.reset();
            limit += 2;
        }
    Section section{Uuid::random(), "Worship", std::nullopt, std::nullopt, {}};
    section.cues.push_back(manualCue("Song", SlidesCue{song->id, 0, std::nullopt}));
    const Uuid cueID = section.cues[0].id;
    show.sections.push_back(std::move(section));
    BenchEngine bench(show);
    bench.engine->perform(command::Fire{cueID});
    const int lastSlide = static_cast<int>(song->deck->pages.size()) - 1;
    std::uint64_t steps = 0;
    std::uint64_t parts = 0;
    for (auto _ : state) {
        if (bench.engine->state().activeSlide == lastSlide) {
            bench.engine->perform(command::GoToSlide{0});
            bench.scheduler.runDue();
        }
        const auto slideBefore = bench.engine->state().activeSlide;
        const auto start = std::chrono::steady_clock::now();
        bench.engine->perform(command::NextSlide{});
        state.SetIterationTime(secondsSince(start));
        bench.scheduler.runDue(); // the second publish of a dissolve, untimed
        ++steps;
        if (bench.engine->state().activeSlide == slideBefore) ++parts;
    }
    state.counters["partSteps"] = static_cast<double>(parts) / static_cast<double>(steps);
    state.counters["lyricLimits"] = static_cast<double>(show.outputs.lyricLineLimits().size());
}
BENCHMARK(deckStepBenchmark)->Unit(benchmark::kMicrosecond)->UseManualTime();

} // namespace

} // namespace velarion::bench

BENCHMARK_MAIN();
