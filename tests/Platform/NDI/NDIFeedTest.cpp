// The runtime bridge against the stand-in runtime, and network feeds sent by
// the output manager and received in another process.
#include "FakeOutputDisplays.h"
#include "FakePlayers.h"
#include "NDITestSupport.h"
#include "RealTimeScheduler.h"
#include "ScopedEnvironment.h"
#include "TempFolder.h"

#include "LiveEngine/ScreenOutputManager.h"
#include "Platform/NDI/NDIFeeds.h"
#include "Platform/NDI/NDILibrary.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace velarion::testing {
namespace {

TEST(NDIRuntime, StatusSaysWhetherTheRuntimeIsMissingIncompleteOrPresent) {
    // Loading sticks for the life of a process, so the search runs in a child.
    const std::string answer = runInForkedChild([] {
        struct Case {
            std::vector<std::filesystem::path> candidates;
            bool failInit;
            std::string message;
        };
        const std::string whole = fakeRuntimeDir("whole") + "/libndi.so.6";
        const std::vector<Case> cases = {
            {{}, false, NDILibrary::notInstalledWords},
            {{"/nonexistent/libndi.so.6"}, false, NDILibrary::notInstalledWords},
            {{fakeRuntimeDir("incomplete") + "/libndi.so.6"}, false,
             "NDI could not load: The NDI runtime is missing NDIlib_recv_get_performance."},
            {{whole}, true, "NDI could not load: The NDI runtime could not start on this computer."},
            {{whole}, false, NDILibrary::availableWords},
        };
        std::string report;
        for (const Case& c : cases) {
            ScopedEnvironment fail("VELARION_FAKE_NDI_FAIL_INIT", c.failInit ? std::optional<std::string>("1") : std::nullopt);
            const NDIRuntimeStatus status = NDILibrary::search(c.candidates);
            if (status.message != c.message) report += "got \"" + status.message + "\" for \"" + c.message + "\"\n";
        }
        {
            ScopedEnvironment empty("NDI_RUNTIME_DIR_V6", "");
            for (const auto& path : NDILibrary::candidates())
                if (path.parent_path().empty()) report += "an empty runtime folder was searched\n";
        }
        const NDIRuntimeStatus first = NDILibrary::status();
        if (first != NDILibrary::status() || first.version != "6.0.0 (test runtime)") report += "status changed\n";
        return report;
    });
    EXPECT_EQ(answer, "");
}

SceneLayer redSquare() {
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneColorContent{SceneColor{1, 0, 0, 1}};
    layer.frame = SceneRect{0.25, 0.25, 0.5, 0.5};
    return layer;
}

NetworkFeed feedNamed(const std::string& name, int width = 64, int height = 36) {
    NetworkFeed feed;
    feed.id = Uuid::random();
    feed.name = name;
    feed.width = width, feed.height = height;
    feed.layers = {LayerKind::background, LayerKind::media, LayerKind::slides};
    return feed;
}

std::string decorated(const std::string& name) {
    char host[128] = {};
    gethostname(host, sizeof host - 1);
    std::string upper = host;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper + " (" + name + ")";
}

std::string expectedVideoLine(const OutputScene& scene, int width, int height) {
    CpuFeedCompositor compositor(width, height, false);
    compositor.apply(scene, {}, 0);
    const auto picture = compositor.frame(0);
    return "video " + std::to_string(width) + " " + std::to_string(height) + " BGRX 30/1 " +
           std::to_string(pictureHash(picture->bgra.data(), width, height, width * 4));
}

// Waits, running the manager's main-loop tasks, for a line starting `prefix`.
std::optional<std::string> lineStarting(ChildProcess& child, RealTimeScheduler& scheduler, const std::string& prefix,
                                        double seconds = 10) {
    for (double waited = 0; waited < seconds; waited += 0.05) {
        scheduler.runFor(0.01);
        if (auto line = child.readLine(0.04); line && line->rfind(prefix, 0) == 0) return line;
    }
    return std::nullopt;
}

struct FeedFixture : ::testing::Test {
    std::string name = "Feed " + std::to_string(getpid()) + "-" + Uuid::random().text().substr(0, 6);
    std::unique_ptr<ChildProcess> receiver = startReceiverProcess(decorated(name));
    RealTimeScheduler scheduler;
    FakeOutputDisplays displays;
    FakeScreenPictures pictures;
    ScreenOutputManager manager{scheduler, displays, pictures, [] { return false; }};

    FeedFixture() { manager.setFeedFactories(ndiFeedFactories([this] { return scheduler.now(); })); }
    ~FeedFixture() override { manager.closeAll(); }

    void configure(std::vector<NetworkFeed> feeds) {
        OutputSetup setup;
        setup.feeds = std::move(feeds);
        manager.configure(setup);
    }
    std::optional<std::string> detailOf(const NetworkFeed& feed) {
        for (const OutputHealth& row : manager.health())
            if (row.destinationID == feed.id.text()) return row.detail;
        return "no row";
    }
};

TEST_F(FeedFixture, AnotherProcessReceivesTheComposedPictureAtTheFeedsSizeAndRate) {
    const NetworkFeed feed = feedNamed(name);
    configure({feed});
    OutputScene scene;
    scene.layers = {redSquare()};
    manager.apply(scene, {}, {}, {}, {}, std::nullopt);
    // Waited for whole: a feed sends black until its first scene is composed.
    EXPECT_TRUE(lineStarting(*receiver, scheduler, expectedVideoLine(scene, 64, 36)));

    // A connected receiver shows in health within the health timer's second.
    scheduler.runFor(1.2);
    const auto rows = manager.health();
    ASSERT_EQ(rows.size(), 1u);
    ASSERT_TRUE(rows[0].sender);
    EXPECT_TRUE(rows[0].sender->isSending);
    EXPECT_GE(rows[0].sender->connections, 1u);
    EXPECT_GT(rows[0].sender->videoFrames, 10u);
    EXPECT_EQ(rows[0].detail, std::nullopt);
}

TEST_F(FeedFixture, SendsTheVideosSoundAtItsLevel) {
    NetworkFeed feed = feedNamed(name);
    feed.sendsSound = true;
    configure({feed});
    auto surface = std::make_shared<FakeVideoSurface>(scheduler, Uuid::random(), "clip.mp4");
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneVideoContent{surface->id()};
    OutputScene scene;
    scene.layers = {layer};
    manager.apply(scene, {}, {{surface->id(), surface}}, {}, {}, std::nullopt);
    ASSERT_TRUE(surface->audioSink) << "the feed taps the video it shows";

    // The surface's level is already in what the tap hands over.
    std::vector<float> left(480, 0.25f), right(480, -0.5f);
    const float* channels[] = {left.data(), right.data()};
    std::optional<std::string> heard;
    for (int block = 0; block < 200 && !heard; ++block) {
        surface->audioSink(VideoAudioBlock{channels, 480, 48000});
        heard = lineStarting(*receiver, scheduler, "audio", 0.01);
    }
    EXPECT_EQ(heard, "audio 48000 2 0.250000 -0.500000");

    manager.apply(OutputScene{}, {}, {}, {}, {}, std::nullopt);
    EXPECT_FALSE(surface->audioSink) << "a video that left is untapped";
}

TEST_F(FeedFixture, AChangedFeedReopensUnderTheSameNameOnceTheOldSenderHasGone) {
    const NetworkFeed feed = feedNamed(name);
    configure({feed});
    OutputScene scene;
    scene.layers = {redSquare()};
    manager.apply(scene, {}, {}, {}, {}, std::nullopt);
    ASSERT_TRUE(lineStarting(*receiver, scheduler, "video 64 36"));

    NetworkFeed bigger = feed;
    bigger.width = 96, bigger.height = 54;
    configure({bigger});
    EXPECT_EQ(manager.runningFeedIDs().size() + manager.closingFeedCount(), 1u);
    // The receiver sees the picture change size without being restarted.
    EXPECT_TRUE(lineStarting(*receiver, scheduler, expectedVideoLine(scene, 96, 54)));
    EXPECT_EQ(manager.closingFeedCount(), 0u);
    EXPECT_EQ(detailOf(bigger), std::nullopt);
}

TEST_F(FeedFixture, BadFeedsShowWhyInHealthAndMakeNoSender) {
    const NetworkFeed good = feedNamed(name);
    NetworkFeed sameName = feedNamed(name);
    NetworkFeed oddWidth = feedNamed(name + " odd", 1921, 1080);
    NetworkFeed tooFast = feedNamed(name + " fast");
    tooFast.frameRate = {240, 1};
    NetworkFeed unnamed = feedNamed("  ");
    configure({good, sameName, oddWidth, tooFast, unnamed});
    EXPECT_EQ(detailOf(good), std::nullopt);
    EXPECT_EQ(detailOf(sameName), NDIFeedSender::takenWords);
    EXPECT_EQ(detailOf(oddWidth), NDIFeedSender::formatWords);
    EXPECT_EQ(detailOf(tooFast), NDIFeedSender::formatWords);
    EXPECT_EQ(detailOf(unnamed), NDIFeedSender::nameWords);
    EXPECT_EQ(manager.runningFeedIDs(), std::vector<std::string>{good.id.text()});
}

} // namespace
} // namespace velarion::testing

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // Each run gets its own folder of senders, so runs side by side don't meet.
    velarion::testing::TempFolder folder("velarion-ndi");
    ::setenv("VELARION_FAKE_NDI_DIR", folder.path().c_str(), 1);
    ::setenv("NDI_RUNTIME_DIR_V6", velarion::testing::fakeRuntimeDir("whole").c_str(), 1);
    return RUN_ALL_TESTS();
}
