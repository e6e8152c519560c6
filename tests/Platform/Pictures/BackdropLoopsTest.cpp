#include "Platform/Pictures/BackdropLoops.h"

#include "Platform/Gst/GstHandles.h"
#include "ChildProcess.h"
#include "ScopedEnvironment.h"
#include "TempFolder.h"

#include <gst/app/gstappsink.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>

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

} // namespace
} // namespace velarion
