// Trim marks, poster positions, waveform bars, PowerPoint notes and the
// preview player: import and inspection without real media.

#include "FakePlayers.h"
#include "VirtualScheduler.h"

#include "LiveEngine/MediaImporter.h"
#include "LiveEngine/MediaPreviewPlayer.h"
#include "LiveEngine/MediaTrim.h"
#include "LiveEngine/PowerPointNotes.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <sys/stat.h>

namespace velarion::testing {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(MediaTrim, MarksKeepTheShortestTrimAndAnEndMarkMeansToTheEnd) {
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(5, 5.05, std::nullopt), 4.95);
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(-3, std::nullopt, 10), 0);
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(nan, std::nullopt, std::nullopt), 0);
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(20, std::nullopt, 10), 9.9);
    EXPECT_EQ(mediaTrim::outPoint(10 - 0.0005, 0, 10), std::nullopt);
    EXPECT_EQ(mediaTrim::outPoint(std::nullopt, 0, 10), std::nullopt);
    EXPECT_DOUBLE_EQ(*mediaTrim::outPoint(2, 3, std::nullopt), 3.1);
    EXPECT_DOUBLE_EQ(*mediaTrim::outPoint(4, 0, 10), 4);
}

TEST(MediaTrim, APosterPastTheEndIsTheLastFrameAndANegativeOneTheFirst) {
    EXPECT_DOUBLE_EQ(posterPosition(100, 10), 10 - 1.0 / 30);
    EXPECT_DOUBLE_EQ(posterPosition(-1, 10), 0);
    EXPECT_DOUBLE_EQ(posterPosition(nan, std::nullopt), 0);
    EXPECT_DOUBLE_EQ(posterPosition(3, std::nullopt), 3);
    EXPECT_DOUBLE_EQ(posterPosition(3, 0.01), 0);
}

TEST(MediaTrim, ShortSoundsGetOneSampleABarAndTheLastBarTakesTheRest) {
    WaveformBars bars(500, 0.01); // 80 samples
    std::vector<std::int16_t> samples(600, 0);
    samples[3] = -16384;
    samples[550] = 32767;
    bars.add(samples);
    EXPECT_FLOAT_EQ(bars.bars()[3], 16384.0F / 32767.0F);
    EXPECT_FLOAT_EQ(bars.bars()[498], 0.0F);
    EXPECT_FLOAT_EQ(bars.bars()[499], 1.0F);
}

TEST(PowerPointNotes, NotesFollowShownSlidesWithoutFieldsOrEntities) {
    const std::map<std::string, std::string> parts = {
        {"ppt/presentation.xml", R"(<p:sldIdLst><p:sldId id="256" r:id="rId2"/><p:sldId id="257" r:id="rId3"/>)"
                                 R"(<p:sldId id="258" r:id="rId4"/></p:sldIdLst>)"},
        {"ppt/_rels/presentation.xml.rels",
         R"(<Relationship Id="rId2" Type="x" Target="slides/slide1.xml"/><Relationship Id="rId3" Type="x" )"
         R"(Target="slides/slide2.xml"/><Relationship Id="rId4" Type="x" Target="slides/slide3.xml"/>)"},
        {"ppt/slides/slide1.xml", "<p:sld>"},
        {"ppt/slides/slide2.xml", R"(<p:sld show="0">)"},
        {"ppt/slides/slide3.xml", "<p:sld>"},
        {"ppt/slides/_rels/slide1.xml.rels", R"(<Relationship Target="../notesSlides/notesSlide1.xml"/>)"},
        {"ppt/slides/_rels/slide2.xml.rels", R"(<Relationship Target="../notesSlides/notesSlide2.xml"/>)"},
        {"ppt/slides/_rels/slide3.xml.rels", R"(<Relationship Target="../notesSlides/notesSlide3.xml"/>)"},
        {"ppt/notesSlides/notesSlide1.xml",
         R"(<a:p><a:r><a:t>Thank &amp; </a:t></a:r><a:r><a:t>welcome</a:t></a:r></a:p><a:p></a:p>)"
         R"(<a:p><a:t>&lt;pause&gt;</a:t></a:p>)"},
        {"ppt/notesSlides/notesSlide2.xml", "<a:p><a:t>Hidden</a:t></a:p>"},
        {"ppt/notesSlides/notesSlide3.xml", R"(<a:p><a:fld id="x" type="slidenum"><a:t>3</a:t></a:fld></a:p>)"},
    };
    const auto read = [&](const std::string& name) -> std::optional<std::string> {
        const auto found = parts.find(name);
        return found == parts.end() ? std::nullopt : std::optional<std::string>(found->second);
    };
    EXPECT_EQ(powerPointNotes::notes(read), (std::vector<std::string>{"Thank & welcome\n<pause>", ""}));
    EXPECT_EQ(powerPointNotes::notes([](const std::string&) { return std::nullopt; }), std::nullopt);
}

TEST(PreviewSeekQueue, TwentySeeksDuringOneRunThatSeekAndTheLastOnly) {
    PreviewSeekQueue queue;
    EXPECT_EQ(queue.request({1, false}), (PreviewSeekQueue::Request{1, false}));
    for (int wish = 2; wish <= 21; ++wish) EXPECT_EQ(queue.request({double(wish), wish == 21}), std::nullopt);
    EXPECT_EQ(queue.finished(), (PreviewSeekQueue::Request{21, true}));
    EXPECT_TRUE(queue.isSeeking);
    EXPECT_EQ(queue.finished(), std::nullopt);
    EXPECT_FALSE(queue.isSeeking);
}

TEST(MediaPreviewPlayerTest, AMissingFileSaysSoAndAStaleOpenIsDropped) {
    VirtualScheduler scheduler;
    FakeMediaPlayers players{scheduler};
    MediaPreviewPlayer preview(players, scheduler, nullptr);
    players.missingPaths.insert("/show/Media/Gone.mov");
    preview.load("/show/Media/Gone.mov");
    EXPECT_EQ(preview.error(), MediaPreviewPlayer::missingFile);

    players.soundDurations = {{"/show/Media/A.wav", 12}, {"/show/Media/B.wav", 30}};
    preview.load("/show/Media/A.wav", 12);
    preview.load("/show/Media/B.wav");
    scheduler.runDue();
    EXPECT_TRUE(players.sound("/show/Media/A.wav") == nullptr || players.sound("/show/Media/A.wav")->isStopped());
    EXPECT_EQ(preview.duration(), 30);
    EXPECT_FALSE(preview.soundEnabled());
    EXPECT_EQ(players.sound("/show/Media/B.wav")->volume(), 0); // silent until a device is chosen
}

// Importing files into a real package: names, kinds, free names for
// duplicates, one sentence per failure, and nothing half-copied left behind.
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
