// The show core library's graph on its way to and from text, at the size of
// a very large production: 100 acts x 20 scenes x 10 cues x 3 actions
// (20,000 cues, 60,000 actions) with every kind of resource.
//
// What we aim for on a two-core development machine: decode and validate
// within 150 ms, encode within 100 ms. Validation alone is measured too, so
// a slow rule shows on its own.

#include "ShowGraphGenerator.h"

#include "ShowCore/ShowDocumentJson.h"

#include <benchmark/benchmark.h>

#include <string>

namespace velarion::bench {

namespace {

const showcore::ShowDocument& largeGraph() {
    static const showcore::ShowDocument graph = makeShowGraph({100, 20, 10, 3, 2026});
    return graph;
}

const std::string& largeGraphText() {
    static const std::string text = showcore::encodeShowDocument(largeGraph());
    return text;
}

void setCounters(benchmark::State& state) {
    state.counters["jsonBytes"] = static_cast<double>(largeGraphText().size());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * largeGraphText().size()));
}

void decodeAndValidateBenchmark(benchmark::State& state) {
    const std::string& text = largeGraphText();
    for (auto _ : state) {
        showcore::ShowDocument graph = showcore::decodeShowDocument(text);
        benchmark::DoNotOptimize(graph.acts.data());
    }
    setCounters(state);
}

void validateBenchmark(benchmark::State& state) {
    const showcore::ShowDocument& graph = largeGraph();
    for (auto _ : state) {
        auto findings = showcore::validationFindings(graph);
        benchmark::DoNotOptimize(findings.data());
    }
}

void encodeBenchmark(benchmark::State& state) {
    const showcore::ShowDocument& graph = largeGraph();
    for (auto _ : state) {
        std::string text = showcore::encodeShowDocument(graph);
        benchmark::DoNotOptimize(text.data());
    }
    setCounters(state);
}

} // namespace

BENCHMARK(decodeAndValidateBenchmark)->Name("ShowCore/decodeAndValidate")->Unit(benchmark::kMillisecond);
BENCHMARK(validateBenchmark)->Name("ShowCore/validate")->Unit(benchmark::kMillisecond);
BENCHMARK(encodeBenchmark)->Name("ShowCore/encode")->Unit(benchmark::kMillisecond);

} // namespace velarion::bench

BENCHMARK_MAIN();
