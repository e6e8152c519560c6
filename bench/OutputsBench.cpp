// The CPU compositor at 1920x1080: a full-frame still, a lower third with
// alpha and a layer dissolving in over them — what a feed or the program
// preview draws each frame. The target is 4 ms a frame on one core.

#include "GoldenScenes.h"
#include "Platform/Outputs/CpuCompositor.h"

#include <benchmark/benchmark.h>

namespace velarion {
namespace {

constexpr int width = 1920;
constexpr int height = 1080;

SceneRenderer threeLayers(bool scaled) {
    using testing::generatedStill;
    using testing::stillLayer;
    // Scaled: the pictures are not at the output's size, as a photograph or
    // a 720p slide would be, so every pixel is filtered.
    const StillImage page = scaled ? generatedStill(1280, 720) : generatedStill(width, height);
    const StillImage card = scaled ? generatedStill(1200, 180, true) : generatedStill(1536, 216, true);
    const StillImage next = scaled ? generatedStill(1024, 576) : generatedStill(width, height);
    OutputScene scene;
    scene.layers = {stillLayer(page), stillLayer(card, SceneRect{0.1, 0.08, 0.8, 0.2}, SceneScaling::stretch)};
    SceneRenderer renderer(width, height);
    renderer.apply(scene, {}, 0);
    SceneLayer dissolving = stillLayer(next);
    dissolving.dissolveSeconds = 1;
    scene.layers.push_back(dissolving);
    renderer.apply(scene, {}, 10);
    return renderer;
}

void BM_CpuCompositor1080pThreeLayers(benchmark::State& state) {
    const SceneRenderer renderer = threeLayers(state.range(0) != 0);
    const SceneFrame frame = renderer.drawList(10.5);
    RasterImage target(width, height);
    for (auto _ : state) {
        CpuCompositor::draw(frame, target);
        benchmark::DoNotOptimize(target.bgra.data());
    }
    state.SetLabel(state.range(0) != 0 ? "scaled pictures" : "pictures at output size");
}
BENCHMARK(BM_CpuCompositor1080pThreeLayers)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace velarion

BENCHMARK_MAIN();
