// How long what an agent or an edit asks holds the main loop, on the large
// generated show, with the real slide drawing and the real agent service:
//
// - MainLoop/addSong30: add_song of 30 slides through the agent service.
// - MainLoop/updateSong30: update_song of that song with every line new.
// - MainLoop/getShow: get_show of the large show.
// - MainLoop/largestDeckEdit: the slide editor opened on the show's largest
//   deck and one of its slides changed, the deck redrawn and applied.
//
// Each reports, as its time, the longest single stretch the main loop spent
// in the call or in any task it ran until the answer or the edit was in
// (aim: 16 ms, one frame; get_show 5 ms), averaged over the iterations;
// "worstHoldMs" is the worst iteration's, "worstHoldCpuMs" the same in the
// main thread's processor time, and "totalMs" the time until the answer or
// edit was in, drawing on the workers included. Tasks run on a virtual-time scheduler whose every
// task is timed; the engine's ticks don't run, as time doesn't move.

#include "AppDoubles.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "ShowGenerator.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/AppModel.h"
#include "Live/AppModelAgentHost.h"
#include "Live/ThreadShowWriter.h"
#include "LiveAgent/AgentService.h"
#include "LiveAgentKit/AgentLine.h"
#include "Platform/Pictures/QtSlidePages.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace velarion::bench {

namespace {

using Clock = std::chrono::steady_clock;

double threadCpuSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The worst of the iterations, besides the mean the library reports.
struct Worst {
    double holdSeconds = 0;
    double holdCpuSeconds = 0;
    double totalSeconds = 0;
    void put(benchmark::State& state) const {
        state.counters["worstHoldMs"] = holdSeconds * 1e3;
        state.counters["worstHoldCpuMs"] = holdCpuSeconds * 1e3;
        state.counters["totalMs"] = totalSeconds * 1e3 / static_cast<double>(state.iterations());
    }
};

// Forwards to a virtual-time scheduler and times every task it runs.
class HoldTimer final : public Scheduler {
public:
    double now() const override { return inner.now(); }
    double wallNow() const override { return inner.wallNow(); }
    const Calendar& calendar() const override { return inner.calendar(); }
    void post(Task task) override {
        inner.post([this, task = std::move(task)] { timed(task); });
    }
    TaskHandle after(double seconds, Task task) override {
        return inner.after(seconds, [this, task = std::move(task)] { timed(task); });
    }

    template <class Work> void timed(Work&& work) {
        const auto start = Clock::now();
        const double cpuStart = threadCpuSeconds();
        work();
        longestSeconds = std::max(longestSeconds, std::chrono::duration<double>(Clock::now() - start).count());
        longestCpuSeconds = std::max(longestCpuSeconds, threadCpuSeconds() - cpuStart);
    }
    // Runs posted tasks until `done`, giving the workers the processor
    // between rounds.
    void runUntil(const std::atomic<bool>& done) {
        while (!done.load()) {
            inner.runDue();
            if (!done.load()) std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }

    testing::VirtualScheduler inner;
    double longestSeconds = 0;
    // The same stretch counted in the main thread's own processor time: on
    // a busy machine the wall time also holds the waits for a core.
    double longestCpuSeconds = 0;
};

std::string lyrics(const std::string& word) {
    std::string text = "Title: Bench song\n\n";
    for (int verse = 1; verse <= 30; ++verse) {
        text += "[Verse " + std::to_string(verse) + "]\n";
        text += word + " line one of verse " + std::to_string(verse) + "\n";
        text += word + " line two of verse " + std::to_string(verse) + "\n\n";
    }
    return text;
}

struct BenchApp {
    BenchApp() {
        ShowPackage::create(location, makeBenchmarkShow());
        {
            // Opening organizes the show once and names the pages of decks
            // made without them; drawing them all for real would take
            // minutes and isn't what is measured here.
            testing::FakeSlidePages naming;
            AppModel namer(AppPorts{scheduler, players, images, cards, slides, nullptr, outputs, naming, desktop,
                                    folders, writer, application, preferences});
            namer.openShow(location);
        }
        model = std::make_unique<AppModel>(AppPorts{scheduler, players, images, cards, slides, nullptr, outputs,
                                                    slidePages, desktop, folders, writer, application,
                                                    preferences});
        model->openShow(location);
        model->setAgentMayEdit(true);
        host = std::make_shared<AppModelAgentHost>(*model, nullptr);
        service = std::make_unique<AgentService>(host, scheduler);
    }
    ~BenchApp() {
        service.reset();
        model.reset();
    }

    // The answer, and the longest hold and total time it took.
    AgentResponse ask(const std::string& tool, JSONValue::Object arguments, double& holdSeconds,
                      double& totalSeconds) {
        scheduler.longestSeconds = 0;
        scheduler.longestCpuSeconds = 0;
        std::atomic<bool> answered{false};
        std::optional<AgentResponse> answer;
        std::mutex lock;
        const auto start = Clock::now();
        scheduler.timed([&] {
            service->handle(AgentRequest{++requests, tool, std::move(arguments)}, [&](AgentResponse response) {
                // Encoded as the socket would, on whichever thread answers.
                benchmark::DoNotOptimize(agentLine::encode(response));
                std::lock_guard guard(lock);
                answer = std::move(response);
                answered = true;
            });
        });
        scheduler.runUntil(answered);
        totalSeconds = std::chrono::duration<double>(Clock::now() - start).count();
        holdSeconds = scheduler.longestSeconds;
        std::lock_guard guard(lock);
        if (!answer->ok) throw std::runtime_error(answer->error.value_or("failed"));
        return *answer;
    }

    testing::TempFolder home{"velarion-mainloop-bench"};
    std::filesystem::path location = home / "Documents" / "Bench.velarion";
    HoldTimer scheduler;
    testing::FakeMediaPlayers players{scheduler};
    testing::FakeImageLoader images;
    testing::FakeTextCards cards;
    testing::FakeSlidePictures slides;
    testing::RecordingOutputManagers outputs;
    QtSlidePages slidePages{scheduler};
    testing::RecordingDesktopServices desktop;
    testing::TempShowFolders folders{home.path()};
    ThreadShowWriter writer{scheduler};
    testing::RecordingApplicationControl application;
    Preferences preferences{home / "preferences.json"};
    std::unique_ptr<AppModel> model;
    std::shared_ptr<AppModelAgentHost> host;
    std::unique_ptr<AgentService> service;
    std::int64_t requests = 0;
};

void report(benchmark::State& state, const HoldTimer& timer, double totalSeconds, Worst& worst) {
    state.SetIterationTime(timer.longestSeconds);
    worst.holdSeconds = std::max(worst.holdSeconds, timer.longestSeconds);
    worst.holdCpuSeconds = std::max(worst.holdCpuSeconds, timer.longestCpuSeconds);
    worst.totalSeconds += totalSeconds;
}

void addSong30(benchmark::State& state) {
    BenchApp app;
    Worst worst;
    int round = 0;
    for (auto _ : state) {
        double hold = 0, total = 0;
        app.ask("add_song", JSONValue::Object{{"lyrics", lyrics("Take " + std::to_string(++round))}}, hold, total);
        report(state, app.scheduler, total, worst);
    }
    worst.put(state);
}

void updateSong30(benchmark::State& state) {
    BenchApp app;
    double hold = 0, total = 0;
    const AgentResponse added = app.ask("add_song", JSONValue::Object{{"lyrics", lyrics("First")}}, hold, total);
    const std::string cueID = (*(*added.result)["cue"])["id"]->stringValue().value_or("");
    Worst worst;
    int round = 0;
    for (auto _ : state) {
        app.ask("update_song",
                JSONValue::Object{{"song", cueID}, {"lyrics", lyrics("Again " + std::to_string(++round))}}, hold,
                total);
        report(state, app.scheduler, total, worst);
    }
    worst.put(state);
}

void getShow(benchmark::State& state) {
    BenchApp app;
    Worst worst;
    for (auto _ : state) {
        double hold = 0, total = 0;
        app.ask("get_show", JSONValue::Object{}, hold, total);
        report(state, app.scheduler, total, worst);
    }
    worst.put(state);
}

void largestDeckEdit(benchmark::State& state) {
    BenchApp app;
    const MediaItem* largest = nullptr;
    for (const MediaItem& item : app.model->show()->library) {
        if (item.deck && item.deck->made && (!largest || item.deck->made->size() > largest->deck->made->size()))
            largest = &item;
    }
    if (!largest) throw std::runtime_error("the benchmark show has no deck of made slides");
    const Uuid deckID = largest->id;
    state.counters["slides"] = static_cast<double>(largest->deck->made->size());
    Worst worst;
    int round = 0;
    const auto editOneSlide = [&] {
        app.scheduler.timed([&] {
            app.model->openSlideEditor(deckID);
            app.model->updateSlides(deckID, [&](std::vector<MadeSlide>& slides) {
                slides.front().notes = "Take " + std::to_string(++round);
            });
        });
        while (app.model->isDrawingPages()) {
            app.scheduler.inner.runDue();
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    };
    editOneSlide(); // draws every page of the deck once
    for (auto _ : state) {
        app.scheduler.longestSeconds = 0;
        app.scheduler.longestCpuSeconds = 0;
        const auto start = Clock::now();
        editOneSlide();
        report(state, app.scheduler, std::chrono::duration<double>(Clock::now() - start).count(), worst);
    }
    worst.put(state);
}

} // namespace

BENCHMARK(addSong30)->Name("MainLoop/addSong30")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(updateSong30)->Name("MainLoop/updateSong30")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(getShow)->Name("MainLoop/getShow")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(largestDeckEdit)->Name("MainLoop/largestDeckEdit")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace velarion::bench

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
