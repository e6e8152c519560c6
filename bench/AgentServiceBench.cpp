// The agent service behind the socket: get_show of the large benchmark show
// (5000 cues, 2000 library items, 50 songs), which should answer within
// 40 ms, and get_state with 20 cues running, within 1 ms. get_show's answer
// is built off the main loop from a snapshot (MainLoopBench measures what
// the main loop itself spends); get_state runs on the main loop. The socket
// adds about 0.05 ms on top (AgentSocketBench).
//
// The host is the tests' fake over a real show, history and engine; the
// figures include copying the show and state out of it, as the application
// does. "CPU" counts the calling thread only: get_show builds a large
// show's sections in parts on other threads.

#include "FakeAgentHost.h"
#include "ShowGenerator.h"

#include "LiveAgent/AgentService.h"
#include "LiveAgentKit/AgentLine.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <string>

namespace velarion::bench {

namespace {

using testing::FakeAgentHost;

void checkedOK(const AgentResponse& response) {
    if (!response.ok) throw std::runtime_error(response.error.value_or("failed"));
}

void BM_GetShowOfTheBenchmarkShow(benchmark::State& state) {
    auto host = std::make_shared<FakeAgentHost>();
    host->load(makeBenchmarkShow());
    AgentService service(host, host->scheduler);
    const AgentRequest request{1, "get_show", JSONValue::Object{}};
    std::size_t bytes = 0;
    for (auto _ : state) {
        const AgentResponse response = service.handle(request);
        checkedOK(response);
        benchmark::DoNotOptimize(response);
        state.PauseTiming();
        bytes = agentLine::encode(response).value_or("").size();
        state.ResumeTiming();
    }
    state.counters["reply_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_GetShowOfTheBenchmarkShow)->Unit(benchmark::kMillisecond);

// The processor time of every thread of the process, in seconds: on a
// shared, busy machine the wall time says more about the neighbours.
double processCpuSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The same answer written out as the socket writes it, and let go.
// "allThreadsCpuMs" is the work on every thread per answer.
void BM_GetShowEncoded(benchmark::State& state) {
    auto host = std::make_shared<FakeAgentHost>();
    host->load(makeBenchmarkShow());
    AgentService service(host, host->scheduler);
    const AgentRequest request{1, "get_show", JSONValue::Object{}};
    const double startCpu = processCpuSeconds();
    for (auto _ : state) {
        const AgentResponse response = service.handle(request);
        checkedOK(response);
        benchmark::DoNotOptimize(agentLine::encode(response));
    }
    const auto iterations = static_cast<double>(std::max<benchmark::IterationCount>(state.iterations(), 1));
    state.counters["allThreadsCpuMs"] = (processCpuSeconds() - startCpu) * 1000 / iterations;
}
BENCHMARK(BM_GetShowEncoded)->Unit(benchmark::kMillisecond);

void BM_GetStateWith20RunningCues(benchmark::State& state) {
    Show show;
    show.sections.push_back(Section{Uuid::random(), "Effects", std::nullopt, std::nullopt, {}});
    for (int i = 0; i < 20; ++i) {
        MediaItem item;
        item.id = Uuid::random();
        item.kind = MediaKind::audio;
        item.name = "Bed " + std::to_string(i + 1) + ".wav";
        item.fileName = item.name;
        item.duration = 30;
        show.library.push_back(item);
        AudioCue audio{item.id};
        audio.loops = true;
        audio.role = SoundRole::effect; // effects play on top of each other
        Cue cue;
        cue.id = Uuid::random();
        cue.name = "Bed " + std::to_string(i + 1);
        cue.kind = audio;
        show.sections.edit(0).cues.push_back(cue);
    }
    auto host = std::make_shared<FakeAgentHost>();
    host->load(show);
    for (const Cue* cue : show.allCues()) host->agentPerform(command::Fire{cue->id});
    host->scheduler.advance(1);
    if (host->engine->state().running.size() != 20) throw std::runtime_error("expected 20 running cues");

    AgentService service(host, host->scheduler);
    const AgentRequest request{1, "get_state", JSONValue::Object{}};
    for (auto _ : state) {
        const AgentResponse response = service.handle(request);
        checkedOK(response);
        benchmark::DoNotOptimize(response);
    }
}
BENCHMARK(BM_GetStateWith20RunningCues)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace velarion::bench

BENCHMARK_MAIN();
