#include "LiveModel/ShowPackage.h"
#include "ShowPackageFixtures.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

namespace fs = std::filesystem;
using testing::deckItem;
using testing::fileItem;
using testing::readText;
using testing::showWithLibrary;
using testing::TempFolder;
using testing::writeText;

class ShowPackageTidy : public ::testing::Test {
protected:
    ShowPackageTidy() : package(ShowPackage::create(temp / "Show.velarion", Show{})) {}

    void put(const std::string& storedName, const std::string& content = "data") const {
        writeText(package.mediaURL(storedName), content);
    }
    bool has(const std::string& storedName) const {
        return fs::exists(package.mediaURL(storedName));
    }
    static const MediaItem& item(const Show& show, std::size_t index) {
        return show.library[index];
    }

    TempFolder temp;
    ShowPackage package;
};

TEST_F(ShowPackageTidy, CopiesFlatNamesIntoTheFolderOfTheirKind) {
    put("a.mov", "movie");
    put("b.png");
    put("c.wav");
    MediaItem video = fileItem(MediaKind::video, "a.mov");
    video.duration = 12;
    const Show show = showWithLibrary(
        {video, fileItem(MediaKind::image, "b.png"), fileItem(MediaKind::audio, "c.wav"),
         fileItem(MediaKind::video, "gone.mov"), fileItem(MediaKind::video, "Video/tidy.mov")});

    const TidyResult result = package.tidy(show);
    EXPECT_EQ(item(result.show, 0).fileName, "Video/a.mov");
    EXPECT_EQ(item(result.show, 0).duration, 12); // the rest of the item is kept
    EXPECT_EQ(item(result.show, 1).fileName, "Images/b.png");
    EXPECT_EQ(item(result.show, 2).fileName, "Audio/c.wav");
    EXPECT_EQ(item(result.show, 3).fileName, "gone.mov"); // reported missing under its old name
    EXPECT_EQ(item(result.show, 4).fileName, "Video/tidy.mov");
    EXPECT_EQ(result.oldFiles, (std::vector<std::string>{"a.mov", "b.png", "c.wav"}));
    // Only copies: the old files stay until the tidied show is saved.
    EXPECT_EQ(readText(package.mediaURL("Video/a.mov")), "movie");
    EXPECT_TRUE(has("a.mov"));
    // The input show is a value and stays as it was.
    EXPECT_EQ(item(show, 0).fileName, "a.mov");

    // A second tidy finds nothing to do, even before the old files are gone.
    const TidyResult again = package.tidy(result.show);
    EXPECT_EQ(again.show, result.show);
    EXPECT_TRUE(again.oldFiles.empty());
}

TEST_F(ShowPackageTidy, GathersDeckPagesIntoADeckFolder) {
    put("1.png", "page one");
    put("2.png");
    put("Talk.pdf");
    put("Old Talk/1.png");
    MediaItem flat = deckItem({"1.png", "2.png"}, "Talk.pdf");
    MediaItem inFolder = deckItem({"Old Talk/1.png"}, "Decks/Old.pdf");
    put("m1.png");
    put("x2.png");
    put("Other.pdf");
    MediaItem made = deckItem({"m1.png"}, "made");
    made.deck->made = std::vector<MadeSlide>{};
    MediaItem tidied = deckItem({"Decks/X/1.png", "x2.png"}, "Other.pdf");
    MediaItem unrendered = deckItem({}, "Other.pdf");
    const Show show = showWithLibrary({flat, inFolder, made, tidied, unrendered});

    const TidyResult result = package.tidy(show);
    const std::string deckFolder = "Decks/Deck " + flat.id.text().substr(0, 8);
    EXPECT_EQ(item(result.show, 0).deck->pages,
              (std::vector<std::string>{deckFolder + "/1.png", deckFolder + "/2.png"}));
    EXPECT_EQ(item(result.show, 0).fileName, "Decks/Talk.pdf");
    EXPECT_EQ(readText(package.mediaURL(deckFolder + "/1.png")), "page one");
    EXPECT_EQ(item(result.show, 1).deck->pages, std::vector<std::string>{"Decks/Old Talk/1.png"});
    // Made slides, already tidied decks and decks without pages are left alone.
    EXPECT_EQ(item(result.show, 2), item(show, 2));
    EXPECT_EQ(item(result.show, 3), item(show, 3));
    EXPECT_EQ(item(result.show, 4), item(show, 4));
    EXPECT_EQ(result.oldFiles,
              (std::vector<std::string>{"1.png", "2.png", "Talk.pdf", "Old Talk/1.png"}));
}

TEST_F(ShowPackageTidy, KeepsAnExistingDestinationAndFinishesAnInterruptedTidy) {
    put("a.mov", "old copy");
    put("Video/a.mov", "kept");
    put("Images/b.png"); // an earlier tidy copied it, then stopped
    const Show show =
        showWithLibrary({fileItem(MediaKind::video, "a.mov"), fileItem(MediaKind::image, "b.png")});

    const TidyResult result = package.tidy(show);
    EXPECT_EQ(item(result.show, 0).fileName, "Video/a.mov");
    EXPECT_EQ(readText(package.mediaURL("Video/a.mov")), "kept");
    EXPECT_EQ(item(result.show, 1).fileName, "Images/b.png");
    EXPECT_EQ(result.oldFiles, std::vector<std::string>{"a.mov"});
}

TEST_F(ShowPackageTidy, NeverHandsOutANameTheShowStillUses) {
    // Pages half in the new layout: the second one is its own destination.
    put("Old/1.png");
    put("Decks/Old/2.png");
    // A made deck, left alone, shares a flat page with a deck that moves.
    put("shared.png");
    MediaItem made = deckItem({"shared.png"}, "made");
    made.deck->made = std::vector<MadeSlide>{};
    const Show show = showWithLibrary({deckItem({"Old/1.png", "Decks/Old/2.png"}, "Decks/x.pdf"),
                                       made, deckItem({"shared.png"}, "Decks/y.pdf")});

    const TidyResult result = package.tidy(show);
    EXPECT_EQ(item(result.show, 0).deck->pages,
              (std::vector<std::string>{"Decks/Old/1.png", "Decks/Old/2.png"}));
    EXPECT_EQ(item(result.show, 1).deck->pages, std::vector<std::string>{"shared.png"});
    EXPECT_NE(item(result.show, 2).deck->pages, std::vector<std::string>{"shared.png"});
    EXPECT_EQ(result.oldFiles, std::vector<std::string>{"Old/1.png"});
}

TEST_F(ShowPackageTidy, RemovingOldFilesEmptiesOneFolderLevelAndIgnoresFailures) {
    put("flat.mov");
    put("Old Talk/1.png");
    put("Shared/1.png");
    put("Shared/other.png");
    put("A/B/page.png");
    writeText(package.url() / "outside.txt", "not media");

    package.removeOldFiles({"missing.mov", "flat.mov", "Old Talk/1.png", "Shared/1.png",
                            "A/B/page.png", "../outside.txt"});
    EXPECT_FALSE(has("flat.mov"));
    EXPECT_FALSE(has("Old Talk"));
    EXPECT_TRUE(has("Shared/other.png"));
    EXPECT_FALSE(has("A/B"));
    EXPECT_TRUE(has("A")); // only the file's own folder is looked at
    EXPECT_TRUE(fs::exists(package.url() / "outside.txt")); // names never reach outside Media/
    EXPECT_TRUE(fs::is_directory(package.mediaFolder()));
}

TEST_F(ShowPackageTidy, UsedFilesCountsEveryReferenceAndSkipsItemsWithoutFiles) {
    put("Video/a.mov", "12345");
    put("Decks/D/1.png", "123");
    MediaItem camera = fileItem(MediaKind::video, "Video/a.mov");
    camera.ndiSource = NDISource{"STUDIO (Camera 1)", std::nullopt};
    MediaItem made = deckItem({"Decks/D/1.png"}, "made");
    made.deck->made = std::vector<MadeSlide>{};
    const Show show = showWithLibrary({fileItem(MediaKind::video, "Video/a.mov"),
                                       fileItem(MediaKind::video, "Video/a.mov"), camera, made,
                                       fileItem(MediaKind::audio, "Audio/missing.wav")});

    // a.mov twice, the made deck's page, and the missing file adding 0 bytes.
    EXPECT_EQ(package.usedFiles(show), (UsedFiles{4, 5 + 5 + 3}));
    EXPECT_EQ(package.usedFiles(Show{}), (UsedFiles{0, 0}));
}

TEST_F(ShowPackageTidy, MissingMediaLooksAtDeckPagesOrTheFile) {
    put("Video/here.mov");
    put("Decks/D/1.png");
    const MediaItem present = fileItem(MediaKind::video, "Video/here.mov");
    const MediaItem gone = fileItem(MediaKind::audio, "Audio/gone.wav");
    const MediaItem deckWithGap =
        deckItem({"Decks/D/1.png", "Decks/D/2.png", "Decks/D/3.png"}, "Decks/here.pdf");
    const MediaItem wholeDeck = deckItem({"Decks/D/1.png"}, "Decks/gone.pdf");
    MediaItem unrendered = deckItem({}, "made");
    unrendered.deck->made = std::vector<MadeSlide>{MadeSlide{}};
    // A live input has no file; the rule still looks only at the deck.
    MediaItem camera = fileItem(MediaKind::video, "Camera 1");
    camera.ndiSource = NDISource{"STUDIO (Camera 1)", std::nullopt};
    const Show show = showWithLibrary({present, gone, deckWithGap, wholeDeck, unrendered, camera});

    EXPECT_EQ(package.missingMedia(show), (std::vector<MediaItem>{gone, deckWithGap, camera}));
}

} // namespace
} // namespace velarion
