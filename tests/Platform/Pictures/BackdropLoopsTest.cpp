#include "Platform/Pictures/BackdropLoops.h"

#include "ChildProcess.h"
#include "Platform/Gst/GstHandles.h"
#include "Platform/Pictures/BackdropLoopService.h"
#include "ScopedEnvironment.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include <gst/app/gstappsink.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <thread>

namespace velarion {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;

// Every frame of a video file as BGRx bytes, decoded by GStreamer; none when
// the file doesn't decode to the end.
std::optional<std::vector<std::vector<std::uint8_t>>> decodeFrames(const fs::path& file, int width,
                                                                   int height) {
    gst::ensureInitialized();
    gst::GCharPtr uri(gst_filename_to_uri(file.c_str(), nullptr));
    const std::string description = "uridecodebin uri=" + gst::text(uri.get()) +
                                    " ! videoconvert ! video/x-raw,format=BGRx ! appsink name=sink sync=false";
    GError* rawError = nullptr;
    gst::Element pipeline = gst::Element::adopt(gst_parse_launch(description.c_str(), &rawError));
    gst::GErrorPtr error(rawError);
    if (!pipeline || error) return std::nullopt;
    gst::Element sink = gst::Element::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);

    std::vector<std::vector<std::uint8_t>> frames;
    const std::size_t frameBytes = std::size_t(width) * height * 4;
    while (auto sample = gst::GstMiniRef<GstSample>::adopt(gst_app_sink_pull_sample(GST_APP_SINK(sink.get())))) {
        GstMapInfo map;
        GstBuffer* buffer = gst_sample_get_buffer(sample.get());
        if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) break;
        if (map.size == frameBytes) frames.emplace_back(map.data, map.data + map.size);
        gst_buffer_unmap(buffer, &map);
    }
    const bool whole = gst_app_sink_is_eos(GST_APP_SINK(sink.get()));
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    if (!whole) return std::nullopt;
    return frames;
}

// Mean absolute difference per byte, 0 to 255.
double difference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    double total = 0;
    for (std::size_t i = 0; i < a.size(); ++i) total += std::abs(int(a[i]) - int(b[i]));
    return total / double(a.size());
}

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path().filename());
    return files;
}

TEST(BackdropLoopsTest, AFinishedLoopDecodesAndItsLastFrameFlowsIntoItsFirst) {
    TempFolder folder("backdrop-loops");
    // Left by a render that died an hour ago, and by one still running elsewhere.
    std::ofstream(folder / "abandoned.partial.mov") << "x";
    fs::last_write_time(folder / "abandoned.partial.mov", fs::file_time_type::clock::now() - std::chrono::hours(1));
    std::ofstream(folder / "running.partial.mov") << "x";
    std::vector<double> fractions;
    BackdropLoops::MakeOptions options;
    options.progress = [&](double fraction) { fractions.push_back(fraction); };
    const auto result = BackdropLoops::make(BuiltInBackdrop::ocean, folder.path(), 320, 180, 2, 15, options);
    ASSERT_TRUE(std::holds_alternative<fs::path>(result)) << std::get<BackdropLoops::Failed>(result).message;
    const fs::path file = std::get<fs::path>(result);
    EXPECT_EQ(file, folder / "ocean-v1.mov");
    EXPECT_TRUE(BackdropLoops::isReady(BuiltInBackdrop::ocean, folder.path()));
    std::vector<fs::path> left = filesIn(folder.path());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<fs::path>{"ocean-v1.mov", "running.partial.mov"}))
        << "no partial file of its own left, and only abandoned ones cleared";
    ASSERT_FALSE(fractions.empty());
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end()));
    EXPECT_EQ(fractions.back(), 1.0);

    const auto frames = decodeFrames(file, 320, 180);
    ASSERT_TRUE(frames) << "the loop must decode to its end";
    ASSERT_EQ(frames->size(), 30u);

    std::vector<double> steps;
    for (std::size_t i = 0; i + 1 < frames->size(); ++i) steps.push_back(difference((*frames)[i], (*frames)[i + 1]));
    std::vector<double> sorted = steps;
    std::sort(sorted.begin(), sorted.end());
    const double typicalStep = sorted[sorted.size() / 2];
    const double seam = difference(frames->back(), frames->front());
    const double halfWay = difference(frames->front(), (*frames)[frames->size() / 2]);
    EXPECT_GT(typicalStep, 0.05) << "the glows must move";
    EXPECT_GT(halfWay, 4 * typicalStep) << "frames far apart differ far more than neighbours";
    EXPECT_LT(seam, 1.5 * typicalStep) << "the jump from the last frame to the first is a seam";
    EXPECT_GT(seam, 0.4 * typicalStep) << "a last frame that repeats the first stutters";
}

TEST(BackdropLoopsTest, ACancelledRenderLeavesNothingBehind) {
    TempFolder folder("backdrop-loops");
    std::stop_source stop;
    BackdropLoops::MakeOptions options;
    options.stop = stop.get_token();
    options.progress = [&](double fraction) {
        if (fraction > 0.3) stop.request_stop();
    };
    const auto result = BackdropLoops::make(BuiltInBackdrop::drift, folder.path(), 320, 180, 2, 15, options);
    EXPECT_TRUE(std::holds_alternative<BackdropLoops::Cancelled>(result));
    EXPECT_FALSE(fs::exists(BackdropLoops::url(BuiltInBackdrop::drift, folder.path())));
    EXPECT_TRUE(filesIn(folder.path()).empty()) << "the partial file must be removed";
}

TEST(BackdropLoopsTest, BadRequestsFailWithASentenceAndWriteNothing) {
    TempFolder folder("backdrop-loops");
    {
        // A disk that fills part-way through the file.
        testing::ScopedFileSizeLimit fullDisk(8 * 1024);
        const auto full = BackdropLoops::make(BuiltInBackdrop::mono, folder.path(), 320, 180, 2, 15);
        ASSERT_TRUE(std::holds_alternative<BackdropLoops::Failed>(full));
        EXPECT_EQ(std::get<BackdropLoops::Failed>(full).message.rfind("The Mono backdrop loop couldn't be made: ", 0), 0u);
        EXPECT_TRUE(filesIn(folder.path()).empty()) << "the partial file must be removed";
    }
    for (auto [width, height, seconds, fps] : {std::tuple{321, 180, 2.0, 15}, std::tuple{320, 180, 0.0, 15}}) {
        const auto result = BackdropLoops::make(BuiltInBackdrop::mono, folder.path(), width, height, seconds, fps);
        ASSERT_TRUE(std::holds_alternative<BackdropLoops::Failed>(result));
        EXPECT_EQ(std::get<BackdropLoops::Failed>(result).message.rfind("The Mono backdrop loop couldn't be made: ", 0), 0u);
    }
    // A file where the folder should be.
    std::ofstream(folder / "blocked") << "x";
    const auto blocked = BackdropLoops::make(BuiltInBackdrop::mono, folder / "blocked" / "Looks", 320, 180, 1, 10);
    EXPECT_TRUE(std::holds_alternative<BackdropLoops::Failed>(blocked));
    EXPECT_EQ(filesIn(folder.path()), std::vector<fs::path>{"blocked"});
}

using testing::VirtualScheduler;
using Answer = std::optional<fs::path>;

// Runs the main loop's posted work until `done` holds; gives up after a
// generous while so that a lost answer fails instead of hanging.
template <class Done> bool runUntil(VirtualScheduler& scheduler, Done done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        scheduler.runDue();
    }
    return true;
}

TEST(BackdropLoopServiceTest, RequestsShareARenderAndAFailureIsTriedAgainNextTime) {
    VirtualScheduler scheduler;
    std::atomic<int> calls = 0;
    std::atomic<bool> oceanFails = true;
    BackdropLoopService service(scheduler, "/loops", {},
                                [&](BuiltInBackdrop backdrop, const fs::path& in, const BackdropLoopSize&,
                                    const BackdropLoops::MakeOptions&) -> BackdropLoops::MakeResult {
                                    ++calls;
                                    if (backdrop == BuiltInBackdrop::ocean && oceanFails)
                                        return BackdropLoops::Failed{"The Ocean backdrop loop couldn't be made: disk full."};
                                    return BackdropLoops::url(backdrop, in);
                                });
    std::vector<std::string> sentences;
    service.onFailure = [&](BuiltInBackdrop, const std::string& sentence) { sentences.push_back(sentence); };
    std::vector<Answer> drift, ocean;
    service.prepare(BuiltInBackdrop::drift, [&](Answer file) { drift.push_back(file); });
    service.prepare(BuiltInBackdrop::ocean, [&](Answer file) { ocean.push_back(file); });
    service.prepare(BuiltInBackdrop::drift, [&](Answer file) { drift.push_back(file); });
    EXPECT_TRUE(drift.empty()) << "answers come later, on the main loop";
    ASSERT_TRUE(runUntil(scheduler, [&] { return drift.size() == 2 && ocean.size() == 1; }));
    EXPECT_EQ(calls, 2) << "one render for both drift requests";
    EXPECT_EQ(drift, (std::vector<Answer>{fs::path("/loops/drift-v1.mov"), fs::path("/loops/drift-v1.mov")}));
    EXPECT_EQ(ocean, std::vector<Answer>{std::nullopt});
    EXPECT_EQ(sentences, std::vector<std::string>{"The Ocean backdrop loop couldn't be made: disk full."});

    oceanFails = false;
    service.prepare(BuiltInBackdrop::ocean, [&](Answer file) { ocean.push_back(file); });
    ASSERT_TRUE(runUntil(scheduler, [&] { return ocean.size() == 2; }));
    EXPECT_EQ(ocean[1], fs::path("/loops/ocean-v1.mov"));
    EXPECT_EQ(calls, 3);
}

TEST(BackdropLoopServiceTest, DestroyingTheServiceStopsTheRenderAndDropsItsAnswer) {
    VirtualScheduler scheduler;
    std::atomic<bool> started = false;
    std::atomic<bool> sawStop = false;
    bool answered = false;
    {
        BackdropLoopService service(
            scheduler, "/loops", {},
            [&](BuiltInBackdrop, const fs::path&, const BackdropLoopSize&,
                const BackdropLoops::MakeOptions& options) -> BackdropLoops::MakeResult {
                started = true;
                while (!options.stop.stop_requested()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
                sawStop = true;
                return BackdropLoops::Cancelled{};
            });
        service.prepare(BuiltInBackdrop::forest, [&](Answer) { answered = true; });
        while (!started) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(sawStop);
    scheduler.runDue();
    EXPECT_FALSE(answered);
}

TEST(BackdropLoopServiceTest, RendersARealLoopOnceAndThenFindsItReady) {
    VirtualScheduler scheduler;
    TempFolder folder("backdrop-service");
    BackdropLoopService service(scheduler, folder.path(), BackdropLoopSize{64, 36, 1, 10});
    std::vector<double> progress;
    service.onProgress = [&](BuiltInBackdrop, double fraction) { progress.push_back(fraction); };
    EXPECT_EQ(service.readyURL(BuiltInBackdrop::dawn), std::nullopt);

    std::optional<Answer> answer;
    service.prepare(BuiltInBackdrop::dawn, [&](Answer file) { answer = file; });
    ASSERT_TRUE(runUntil(scheduler, [&] { return answer.has_value(); }));
    ASSERT_TRUE(*answer);
    EXPECT_TRUE(fs::is_regular_file(**answer));
    EXPECT_EQ(service.readyURL(BuiltInBackdrop::dawn), *answer);
    ASSERT_FALSE(progress.empty());
    EXPECT_EQ(progress.back(), 1.0);
}

} // namespace
} // namespace velarion
