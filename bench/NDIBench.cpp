// Network feeds: composing a 1080p picture and handing it to the runtime
// (the stand-in libndi.so.6, which copies it into shared memory, as the real
// one copies it to its encoder), for one and two feeds, and the time from
// applying a new scene to the first picture of it reaching the sender.
#include "LiveEngine/FeedRunner.h"
#include "Platform/NDI/CNDIBridge.h"
#include "Platform/NDI/CpuFeedCompositor.h"
#include "Platform/NDI/NDILibrary.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <unistd.h>

namespace velarion {
namespace {

constexpr int width = 1920, height = 1080;

SceneLayer still(int w, int h, std::uint8_t shade, SceneRect frame) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(w) * h * 4);
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        pixels[i] = shade, pixels[i + 1] = static_cast<std::uint8_t>(i / 4 % 251), pixels[i + 2] = 40, pixels[i + 3] = 255;
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneStillContent{*StillImage::fromBGRA(w, h, std::move(pixels))};
    layer.frame = frame;
    return layer;
}

// A slide with a lower third over it: the common picture of a feed.
OutputScene typicalScene() {
    OutputScene scene;
    scene.layers = {still(width, height, 90, SceneRect::full()), still(1600, 200, 200, SceneRect{0.08, 0.05, 0.84, 0.18})};
    return scene;
}

void useStandInRuntime() {
    static const bool ready = [] {
        const auto folder = std::filesystem::temp_directory_path() / ("velarion-ndi-bench-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        ::setenv("VELARION_FAKE_NDI_DIR", folder.c_str(), 1);
        ::setenv("NDI_RUNTIME_DIR_V6", VELARION_FAKE_NDI_DIR "/whole", 1);
        return NDILibrary::status().isAvailable;
    }();
    if (!ready) std::abort();
}

struct SenderClose {
    void operator()(vela_ndi_sender* sender) const { vela_ndi_send_destroy(sender); }
};

// One 1080p frame composed and handed to the runtime per iteration, per feed;
// "core_at_60fps" is the share of one core 60 such frames a second take.
void BM_ComposeAndSendFeeds(benchmark::State& state) {
    useStandInRuntime();
    const int feeds = static_cast<int>(state.range(0));
    const int alpha = static_cast<int>(state.range(1));
    std::vector<std::unique_ptr<CpuFeedCompositor>> compositors;
    std::vector<std::unique_ptr<vela_ndi_sender, SenderClose>> senders;
    for (int i = 0; i < feeds; ++i) {
        compositors.push_back(std::make_unique<CpuFeedCompositor>(width, height, alpha != 0));
        compositors.back()->apply(typicalScene(), {}, 0);
        senders.emplace_back(vela_ndi_send_create(("Bench " + std::to_string(getpid()) + "-" + std::to_string(i) + "-" +
                                                   std::to_string(alpha)).c_str()));
    }
    double t = 1;
    timespec before{}, after{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &before);
    for (auto _ : state) {
        for (int i = 0; i < feeds; ++i) {
            const auto picture = compositors[i]->frame(t);
            benchmark::DoNotOptimize(vela_ndi_send_video(senders[i].get(), picture->bgra.data(), width, height,
                                                         width * 4, 60, 1, alpha));
        }
        t += 1.0 / 60;
    }
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &after);
    const double cpuSeconds = static_cast<double>(after.tv_sec - before.tv_sec) +
                              static_cast<double>(after.tv_nsec - before.tv_nsec) * 1e-9;
    // The share of one core that 60 such frames a second take, in percent.
    state.counters["core_pct_at_60fps"] = cpuSeconds / static_cast<double>(state.iterations()) * 60 * 100;
}
BENCHMARK(BM_ComposeAndSendFeeds)->ArgsProduct({{1, 2}, {0, 1}})->ArgNames({"feeds", "alpha"})->Unit(benchmark::kMillisecond)->UseRealTime();

// A sender that notes when the first picture showing the new scene arrives.
class WatchingSender final : public FeedSender {
public:
    NDISource source() const override { return {}; }
    NDISenderStatus status() const override { return {}; }
    void send(std::shared_ptr<const FeedPicture> picture) override {
        std::lock_guard guard(lock);
        if (waiting && picture->bgra[centre] == wanted) {
            arrived = std::chrono::steady_clock::now();
            waiting = false;
            done.notify_all();
        }
    }
    void sendAudio(NDIAudioFrame) override {}
    void close(std::function<void()> completion) override {
        if (completion) completion();
    }

    std::mutex lock;
    std::condition_variable done;
    bool waiting = false;
    std::uint8_t wanted = 0;
    std::size_t centre = (static_cast<std::size_t>(height / 2) * width + width / 2) * 4;
    std::chrono::steady_clock::time_point arrived;
};

// From `apply` of a scene on the main thread to the first picture of it
// handed to the sender, with the feed's own 60 fps timer.
void BM_ApplyToSenderLatency(benchmark::State& state) {
    auto sender = std::make_shared<WatchingSender>();
    NetworkFeed feed;
    feed.width = width, feed.height = height, feed.frameRate = {60, 1};
    const auto origin = std::chrono::steady_clock::now();
    auto clock = [origin] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - origin).count(); };
    FeedRunner runner(feed, sender, std::make_unique<CpuFeedCompositor>(width, height, false), clock);
    runner.start();
    std::uint8_t shade = 10;
    for (auto _ : state) {
        shade = static_cast<std::uint8_t>(shade == 250 ? 10 : shade + 10);
        OutputScene scene;
        scene.layers = {still(width, height, shade, SceneRect::full())};
        {
            std::lock_guard guard(sender->lock);
            sender->wanted = shade;
            sender->waiting = true;
        }
        const auto applied = std::chrono::steady_clock::now();
        runner.apply(scene, {}, clock());
        std::unique_lock guard(sender->lock);
        sender->done.wait(guard, [&] { return !sender->waiting; });
        state.SetIterationTime(std::chrono::duration<double>(sender->arrived - applied).count());
    }
    runner.stop();
}
BENCHMARK(BM_ApplyToSenderLatency)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(60);

} // namespace
} // namespace velarion

BENCHMARK_MAIN();
