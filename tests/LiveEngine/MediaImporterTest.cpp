// Importing files into a real package: names, kinds, free names for
// duplicates, one sentence per failure, and nothing half-copied left behind.

#include "TempFolder.h"

#include "LiveEngine/MediaImporter.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

namespace velarion::testing {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& bytes = "data") {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

// Every hidden file under the package's media: what an unfinished copy leaves.
std::vector<std::string> hiddenFiles(const ShowPackage& package) {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(package.mediaFolder(), error)) {
        if (entry.path().filename().string().starts_with(".")) found.push_back(entry.path().string());
    }
    return found;
}

// Answers a length, and takes away the source named `vanishing` while its
// copy is being looked at.
struct Durations final : MediaDurations {
    fs::path vanishing;
    std::optional<double> durationSeconds(const fs::path& file) override {
        if (!vanishing.empty() && file.filename() == vanishing.filename()) fs::remove(vanishing);
        return 12.5;
    }
};

struct Expected {
    std::string source; // under the test folder
    std::string storedOrReason;
    std::optional<MediaKind> kind; // none: a failure
    std::string name = {};
};

TEST(MediaImporter, AMixedBatchGivesEachFileItsItemOrOneSentence) {
    TempFolder temp{"velarion-import"};
    const ShowPackage package(temp / "Show.velarion");
    const std::string machine = "0F8E4C2A-3B1D-4E5F-9A6B-7C8D9E0F1A2B";
    const std::vector<Expected> table = {
        {"a/Intro.mov", "Video/Intro.mov", MediaKind::video, "Intro"},
        {"b/Intro.mov", "Video/Intro 2.mov", MediaKind::video, "Intro"},
        {"Logo.PNG", "Images/Logo.PNG", MediaKind::image, "Logo"},
        {machine + ".wav", "Audio/" + machine + ".wav", MediaKind::audio, "Sound"},
        {machine + ".jpg", "Images/" + machine + ".jpg", MediaKind::image, "Image"},
        {"Notes.txt", "Notes.txt isn't a file Velarion can play.", std::nullopt},
        {"Gone.mp3", "The file isn't there any more.", std::nullopt},
        {"Folder.mov", "Only files can be imported, not folders.", std::nullopt},
        {"Pipe.wav", "Only ordinary files can be imported.", std::nullopt},
        {"Vanishing.m4a", "The file was moved or deleted while it was being imported.", std::nullopt},
        {"Deck.pdf", MediaImportTools::decksUnavailable, std::nullopt},
    };
    std::vector<fs::path> files;
    for (const Expected& row : table) {
        const fs::path path = temp / "in" / row.source;
        files.push_back(path);
        if (row.source == "Folder.mov") fs::create_directories(path);
        else if (row.source == "Pipe.wav") ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0);
        else if (row.source != "Gone.mp3") write(path, row.source);
    }
    // Filler up to a batch of fifty, all of which must land.
    for (int index = 0; files.size() < 50; ++index) {
        files.push_back(temp / "in" / ("Clip " + std::to_string(index) + (index % 2 ? ".mp4" : ".flac")));
        write(files.back(), std::string(1000 + index, 'x'));
    }

    Durations durations;
    durations.vanishing = temp / "in" / "Vanishing.m4a";
    const std::atomic<bool> cancelled{false};
    int reports = 0;
    const ImportResult result = mediaImporter::importFiles(files, package, {&durations, nullptr}, cancelled,
                                                           [&](const ImportProgress&) { ++reports; });

    std::size_t item = 0, failure = 0;
    for (const Expected& row : table) {
        SCOPED_TRACE(row.source);
        if (!row.kind) {
            ASSERT_LT(failure, result.failures.size());
            EXPECT_EQ(result.failures[failure].fileName, fs::path(row.source).filename().string());
            EXPECT_EQ(result.failures[failure++].reason, row.storedOrReason);
            continue;
        }
        ASSERT_LT(item, result.items.size());
        const MediaItem& made = result.items[item++];
        EXPECT_EQ(made.kind, *row.kind);
        EXPECT_EQ(made.name, row.name);
        EXPECT_EQ(made.fileName, row.storedOrReason);
        EXPECT_EQ(made.duration, *row.kind == MediaKind::image ? std::nullopt : std::optional<double>(12.5));
        std::ifstream copy(package.mediaURL(made.fileName));
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(copy), {}), row.source);
    }
    EXPECT_EQ(result.items.size(), 50 - table.size() + item);
    EXPECT_EQ(failure, result.failures.size());
    EXPECT_FALSE(fs::exists(package.mediaURL("Audio/Vanishing.m4a")));
    EXPECT_TRUE(hiddenFiles(package).empty());
    EXPECT_GE(reports, 100); // before and after each file
}

TEST(MediaImporter, ACancelMidCopyLeavesNothingOfThatFile) {
    TempFolder temp{"velarion-import"};
    const ShowPackage package(temp / "Show.velarion");
    write(temp / "Small.mov");
    write(temp / "Big.mov");
    fs::resize_file(temp / "Big.mov", 40 << 20); // several chunks
    write(temp / "After.mov");

    std::atomic<bool> cancelled{false};
    const ImportResult result = mediaImporter::importFiles(
        {temp / "Small.mov", temp / "Big.mov", temp / "After.mov"}, package, {}, cancelled,
        [&](const ImportProgress& progress) {
            if (progress.currentFile == "Big.mov" && progress.bytesDone > 4) cancelled = true;
        });

    EXPECT_TRUE(result.cancelled);
    ASSERT_EQ(result.items.size(), 1u);
    EXPECT_EQ(result.items[0].fileName, "Video/Small.mov");
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(package.mediaURL("Video"))) left.push_back(entry.path().filename());
    EXPECT_EQ(left, std::vector<std::string>{"Small.mov"});
}

TEST(MediaImporter, LeftoversOfACrashedCopyAreCleared) {
    TempFolder temp{"velarion-import"};
    const ShowPackage package(temp / "Show.velarion");
    write(package.mediaURL("Video/.4E1C.importing"));
    write(package.mediaURL("Video/Kept.mov"));
    mediaImporter::removeLeftovers(package);
    EXPECT_TRUE(hiddenFiles(package).empty());
    EXPECT_TRUE(fs::exists(package.mediaURL("Video/Kept.mov")));
}

} // namespace
} // namespace velarion::testing
