#include "Platform/Pictures/BackdropLoopService.h"

#include "TempFolder.h"
#include "VirtualScheduler.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <thread>

namespace velarion {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;
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
