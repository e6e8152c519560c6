// The CPU compositor at 1920x1080: a full-frame still, a lower third with
// alpha and a layer dissolving in over them — what a feed or the program
// preview draws each frame. The target is 4 ms a frame on one core.

#include "GoldenScenes.h"
#include "VirtualScheduler.h"

#include "LiveEngine/ScreenOutputManager.h"
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

// The main thread's share of a publish with four screens on four displays:
// narrowing the scene per screen and handing it to each window.
class NullWindow final : public OutputWindow {
public:
    void show(const OutputScene& scene, const SceneSurfaces&, double) override {
        benchmark::DoNotOptimize(scene.layers.data());
    }
    std::optional<std::string> failure() const override { return std::nullopt; }
    bool isClosed() const override { return false; }
};

class FourDisplays final : public OutputDisplays {
public:
    std::vector<DisplayInfo> displays() const override {
        return {{"HDMI-1", "", 1920, 1080, true}, {"HDMI-2", "", 1920, 1080, false},
                {"DP-1", "", 1920, 1080, false}, {"DP-2", "", 1920, 1080, false}};
    }
    void setOnChange(std::function<void()>) override {}
    std::unique_ptr<OutputWindow> open(const std::optional<DisplayInfo>&, const std::string&) override {
        return std::make_unique<NullWindow>();
    }
};

class NoPictures final : public ScreenPictures {
public:
    std::optional<StillImage> stage(const StagePictureInputs&) override { return std::nullopt; }
    std::optional<StillImage> identify(const std::string&, ScreenRole) override { return std::nullopt; }
    std::optional<StillImage> pattern(OutputTestPattern) override { return std::nullopt; }
};

void BM_ApplyFourScreens(benchmark::State& state) {
    testing::VirtualScheduler scheduler;
    FourDisplays displays;
    NoPictures pictures;
    ScreenOutputManager manager(scheduler, displays, pictures, [] { return false; });
    OutputSetup setup;
    setup.usesLogicalScreens = true;
    int number = 0;
    for (const DisplayInfo& display : displays.displays()) {
        LogicalScreen screen;
        screen.id = "screen-" + std::to_string(++number);
        screen.name = screen.id;
        screen.destination = destination::Display{display.id};
        screen.layers = {LayerKind::background, LayerKind::media, LayerKind::slides, LayerKind::messages};
        setup.screens.push_back(screen);
    }
    manager.configure(setup);
    // Six layers of every kind, two routed to one screen only.
    OutputScene scene;
    LayerKinds kinds;
    LayerRoutes routes;
    const StillImage still = testing::generatedStill(16, 9);
    const LayerKind order[] = {LayerKind::background, LayerKind::media,   LayerKind::slides,
                               LayerKind::graphics,   LayerKind::holding, LayerKind::messages};
    for (const LayerKind kind : order) {
        SceneLayer layer = testing::stillLayer(still);
        kinds.emplace(layer.id, kind);
        if (kind == LayerKind::graphics || kind == LayerKind::slides) routes[layer.id] = {"screen-1"};
        scene.layers.push_back(layer);
    }
    for (auto _ : state) manager.apply(scene, kinds, {}, routes, {}, std::nullopt);
}
BENCHMARK(BM_ApplyFourScreens)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace velarion

BENCHMARK_MAIN();
