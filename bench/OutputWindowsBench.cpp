// OpenGL output under a private Xvfb with Mesa's software rasteriser
// (llvmpipe): the time of one 1080p frame of three layers (drawn off screen),
// and the frames a 640x360 window misses over 10 s at 60 Hz while the main
// loop is blocked for 200 ms every second (target 0). Software GL: the figures say what this
// machine does, not what a graphics card would.

#include "GoldenScenes.h"
#include "PrivateXServer.h"

#include "Platform/Outputs/GlOutputWindow.h"
#include "Platform/Outputs/GlSceneDrawer.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QScreen>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>

namespace velarion {
namespace {

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

OutputScene threeLayers(SceneRenderer& renderer, double at) {
    using testing::generatedStill;
    using testing::stillLayer;
    OutputScene scene;
    scene.layers = {stillLayer(generatedStill(1920, 1080)),
                    stillLayer(generatedStill(1536, 216, true), SceneRect{0.1, 0.08, 0.8, 0.2}, SceneScaling::stretch)};
    renderer.apply(scene, {}, at);
    SceneLayer dissolving = stillLayer(generatedStill(1920, 1080));
    dissolving.dissolveSeconds = 1;
    scene.layers.push_back(dissolving);
    renderer.apply(scene, {}, at + 10);
    return scene;
}

void BM_GlFrame1080pThreeLayers(benchmark::State& state) {
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) {
        state.SkipWithError("no OpenGL context");
        return;
    }
    SceneRenderer renderer(1920, 1080);
    threeLayers(renderer, 0);
    const SceneFrame frame = renderer.drawList(10.5);
    QOpenGLFramebufferObject target(1920, 1080);
    target.bind();
    GlSceneDrawer drawer;
    drawer.draw(frame, 1920, 1080); // uploads the stills once
    context.functions()->glFinish();
    for (auto _ : state) {
        drawer.draw(frame, 1920, 1080);
        context.functions()->glFinish();
    }
    target.release();
    drawer.release();
}
BENCHMARK(BM_GlFrame1080pThreeLayers)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FramesMissedWhileMainLoopBlocked(benchmark::State& state) {
    constexpr double seconds = 10;
    constexpr double refreshSeconds = 1.0 / 60;
    for (auto _ : state) {
        GlOutputWindow window(QGuiApplication::primaryScreen(), "Frames", steadySeconds);
        std::mutex lock;
        std::vector<double> drawn;
        window.setFrameObserver([&](double at, const SceneFrame&) {
            std::lock_guard guard(lock);
            drawn.push_back(at);
        });
        SceneRenderer scratch(1920, 1080);
        const OutputScene scene = threeLayers(scratch, 0);
        window.show(scene, {}, steadySeconds());
        const double start = steadySeconds();
        std::vector<std::pair<double, double>> blocked;
        while (steadySeconds() < start + seconds) {
            const double second = steadySeconds();
            while (steadySeconds() < second + 0.8) QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            const double from = steadySeconds();
            std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the main loop is blocked
            blocked.emplace_back(from, steadySeconds());
        }
        std::lock_guard guard(lock);
        std::erase_if(drawn, [&](double at) { return at < start || at > start + seconds; });
        // Gaps that end inside a block tell whether the block was the cause;
        // the others are the machine's own stalls.
        double longestGap = 0, longestGapWhileBlocked = 0;
        for (std::size_t i = 1; i < drawn.size(); ++i) {
            const double gap = drawn[i] - drawn[i - 1];
            longestGap = std::max(longestGap, gap);
            for (const auto& [from, until] : blocked)
                if (drawn[i] >= from && drawn[i] <= until) longestGapWhileBlocked = std::max(longestGapWhileBlocked, gap);
        }
        state.counters["longest_gap_while_blocked_vsyncs"] = longestGapWhileBlocked / refreshSeconds;
        // The render thread's rate inside the blocks against outside them: on
        // a machine too loaded to hold 60 Hz the totals miss frames anyway,
        // but a block that cost frames would show as a lower rate inside.
        double blockedSeconds = 0;
        std::size_t drawnWhileBlocked = 0;
        for (const auto& [from, until] : blocked) {
            blockedSeconds += until - from;
            drawnWhileBlocked += static_cast<std::size_t>(
                std::count_if(drawn.begin(), drawn.end(), [&](double at) { return at >= from && at <= until; }));
        }
        state.counters["fps_while_blocked"] = static_cast<double>(drawnWhileBlocked) / blockedSeconds;
        state.counters["fps_otherwise"] =
            static_cast<double>(drawn.size() - drawnWhileBlocked) / (seconds - blockedSeconds);
        const double expected = seconds / refreshSeconds;
        state.counters["frames"] = static_cast<double>(drawn.size());
        state.counters["missed"] = std::max(0.0, expected - static_cast<double>(drawn.size()));
        state.counters["longest_gap_vsyncs"] = longestGap / refreshSeconds;
    }
}
BENCHMARK(BM_FramesMissedWhileMainLoopBlocked)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

} // namespace
} // namespace velarion

int main(int argc, char** argv) {
    std::string whyNot;
    const auto server = velarion::testing::PrivateXServer::start({"640x360"}, whyNot);
    if (!server) {
        std::fprintf(stderr, "OutputWindowsBench: %s\n", whyNot.c_str());
        return 1;
    }
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
