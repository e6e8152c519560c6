// The background show writer: order, coalescing, failures and shutdown,
// on a real thread with results collected through a virtual main loop.

#include "ShowBuilder.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/OperatorText.h"
#include "Live/ThreadShowWriter.h"

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

namespace fs = std::filesystem;

Show titled(const std::string& title) {
    Show show;
    show.id = Uuid::random();
    show.title = title;
    return show;
}

TEST(ThreadShowWriterTest, WritesLandInOrderAndAQueuedSnapshotGivesWayToANewerOne) {
    TempFolder temp;
    VirtualScheduler scheduler;
    const ShowPackage package = ShowPackage::create(temp / "A.velarion", titled("start"));
    const ShowPackage other = ShowPackage::create(temp / "B.velarion", titled("other"));
    std::vector<std::string> results;
    {
        ThreadShowWriter writer(scheduler);
        for (int i = 1; i <= 50; ++i) {
            const std::string title = "take " + std::to_string(i);
            writer.write(package, titled(title), [&results, title](const std::optional<std::string>& error) {
                results.push_back(error ? "failed" : title);
            });
        }
        writer.write(other, titled("other 2"), {});
        writer.waitUntilIdle();
        EXPECT_TRUE(results.empty()) << "results wait for the main loop";
        scheduler.runDue();
        EXPECT_EQ(package.open().title, "take 50");
        EXPECT_EQ(other.open().title, "other 2");
        ASSERT_FALSE(results.empty());
        EXPECT_EQ(results.back(), "take 50");
        EXPECT_TRUE(std::is_sorted(results.begin(), results.end(), [](const auto& a, const auto& b) {
            return std::stoi(a.substr(5)) < std::stoi(b.substr(5));
        })) << "an earlier snapshot never lands after a later one";

        // Queued writes are finished by the destructor, not dropped.
        writer.write(package, titled("at the end"), {});
    }
    EXPECT_EQ(package.open().title, "at the end");
}

// Edits copy what a queued or half-written snapshot still shares, decided by
// reference counts the writer thread drops: run under ThreadSanitizer too.
TEST(ThreadShowWriterTest, EditsWhileSnapshotsAreWrittenLeaveEachSnapshotAsItWas) {
    TempFolder temp;
    VirtualScheduler scheduler;
    Show show = makeShow("edited", {makeSection("Main", {})});
    ShowBuilder(show).add("Welcome", MessageCue{"Hello"});
    const ShowPackage package = ShowPackage::create(temp / "A.velarion", show);
    {
        ThreadShowWriter writer(scheduler);
        for (int i = 1; i <= 200; ++i) {
            show.sections.edit(0).cues.edit(0).name = "take " + std::to_string(i);
            writer.write(package, show, {});
        }
    }
    EXPECT_EQ(package.open().sections[0].cues[0].name, "take 200");
}

TEST(ThreadShowWriterTest, AFailedWriteReportsTheSystemsWordsAndLeavesTheOldDocument) {
    TempFolder temp;
    VirtualScheduler scheduler;
    const ShowPackage package = ShowPackage::create(temp / "A.velarion", titled("kept"));
    fs::remove(package.url() / "show.json");
    fs::create_directories(package.url() / "show.json" / "in the way");

    ThreadShowWriter writer(scheduler);
    std::optional<std::string> reported;
    writer.write(package, titled("lost"), [&](const std::optional<std::string>& error) { reported = error; });
    writer.waitUntilIdle();
    scheduler.runDue();
    ASSERT_TRUE(reported);
    EXPECT_EQ(*reported, std::make_error_code(std::errc::is_a_directory).message());
    EXPECT_TRUE(fs::is_directory(package.url() / "show.json" / "in the way"));
}

TEST(OperatorTextTest, SizesReadAsAFileManagerShowsThem) {
    EXPECT_EQ(fileByteCountText(0), "Zero KB");
    EXPECT_EQ(fileByteCountText(1), "1 byte");
    EXPECT_EQ(fileByteCountText(1500), "2 KB");
    EXPECT_EQ(fileByteCountText(999'600), "1.0 MB");
    EXPECT_EQ(fileByteCountText(1'250'000'000), "1.25 GB");
}

} // namespace
} // namespace velarion::testing
