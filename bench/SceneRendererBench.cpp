// The renderer's layer tree: turning a 12-layer scene into the draw list of
// one frame, which every output does at display rate while anything moves,
// and applying the same scene again, which the engine does whenever any
// output's scene is republished. Both must stay far below a frame (the draw
// list's budget is 50 µs).
//
// The scene mixes colours, stills and videos; half its layers are mid
// dissolve, two dropped layers are mid fade-out, and some layers are rotated
// and corner-pinned.

#include "AllocationCounter.h"
#include "ShowStage/SceneRenderer.h"

#include <benchmark/benchmark.h>
#include <cstdint>
#include <memory>
#include <vector>

namespace velarion::bench {

namespace {

class PlayingSurface : public SceneVideoSource {
public:
    bool hasFrameToShow() const override { return true; }
};

struct Stage {
    SceneRenderer renderer{1920, 1080};
    SceneSurfaces surfaces;
    OutputScene scene;
};

SceneContent contentFor(int index, SceneSurfaces& surfaces) {
    switch (index % 4) {
    case 0: return SceneColorContent{SceneColor{0.1 * index, 0.2, 0.3, 1}};
    case 1: {
        const SceneID surface = Uuid::random();
        surfaces[surface] = std::make_shared<PlayingSurface>();
        return SceneVideoContent{surface};
    }
    default: {
        std::vector<std::uint8_t> pixels(64 * 36 * 4, static_cast<std::uint8_t>(index));
        return SceneStillContent{*StillImage::fromBGRA(64, 36, std::move(pixels))};
    }
    }
}

// Six layers up since 0 s and two more that go; at 10 s six new ones arrive
// with a 2 s dissolve. The frames are measured at 11 s.
std::unique_ptr<Stage> makeStage() {
    auto stage = std::make_unique<Stage>();
    std::vector<SceneLayer> layers;
    for (int index = 0; index < 12; ++index) {
        SceneLayer layer{.id = Uuid::random(),
                         .content = contentFor(index, stage->surfaces),
                         .frame = SceneRect{0.05 * index, 0.04 * index, 0.4, 0.3},
                         .scaling = static_cast<SceneScaling>(index % 3),
                         .opacity = 0.5 + 0.04 * index,
                         .dissolveSeconds = index >= 6 ? 2.0 : 0.0};
        if (index % 3 == 0) layer.rotationDegrees = 7.5 * index;
        if (index % 4 == 2)
            layer.cornerPin = SceneCornerPin{.topLeft = {0.1, 0.05}, .bottomRight = {0.95, 0.9}};
        layers.push_back(std::move(layer));
    }
    std::vector<SceneLayer> earlier(layers.begin(), layers.begin() + 6);
    for (int index = 0; index < 2; ++index) {
        SceneLayer leaving{.id = Uuid::random(),
                           .content = SceneColorContent{SceneColor{1, 1, 1, 1}},
                           .dissolveSeconds = 3};
        earlier.push_back(leaving);
    }
    stage->renderer.apply(OutputScene{.layers = std::move(earlier)}, stage->surfaces, 0);
    stage->scene = OutputScene{.layers = std::move(layers)};
    stage->renderer.apply(stage->scene, stage->surfaces, 10);
    return stage;
}

// Bytes newly held at the peak of one call, after a warm-up call.
template <typename Call> std::int64_t peakBytesOfOneCall(Call call) {
    call();
    const std::int64_t before = allocation::liveBytes();
    allocation::resetPeak();
    call();
    return allocation::peakBytes() - before;
}

void drawListBenchmark(benchmark::State& state) {
    const auto stage = makeStage();
    SceneFrame frame;
    const auto draw = [&] { stage->renderer.drawList(11, frame); };
    const std::int64_t peakBytes = peakBytesOfOneCall(draw);
    for (auto _ : state) {
        draw();
        benchmark::DoNotOptimize(frame.operations.data());
    }
    state.counters["operations"] = static_cast<double>(frame.operations.size());
    state.counters["allocatedBytes"] = static_cast<double>(peakBytes);
}

void applyUnchangedBenchmark(benchmark::State& state) {
    const auto stage = makeStage();
    const auto apply = [&] { stage->renderer.apply(stage->scene, stage->surfaces, 11); };
    const std::int64_t peakBytes = peakBytesOfOneCall(apply);
    for (auto _ : state) {
        apply();
        benchmark::ClobberMemory();
    }
    state.counters["allocatedBytes"] = static_cast<double>(peakBytes);
}

} // namespace

BENCHMARK(drawListBenchmark)->Name("SceneRenderer/drawList12Layers")->Unit(benchmark::kMicrosecond);
BENCHMARK(applyUnchangedBenchmark)
    ->Name("SceneRenderer/applyUnchanged12Layers")
    ->Unit(benchmark::kMicrosecond);

} // namespace velarion::bench

BENCHMARK_MAIN();
