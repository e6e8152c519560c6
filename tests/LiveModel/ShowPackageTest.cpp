#include "LiveModel/ShowPackage.h"

#include "LiveModel/ShowJson.h"
#include "ChildProcess.h"
#include "ShowPackageFixtures.h"
#include "TempFolder.h"

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace velarion {
namespace {

namespace fs = std::filesystem;
using testing::deckItem;
using testing::fileItem;
using testing::folderListing;
using testing::readText;
using testing::ScopedEnvironment;
using testing::showWithLibrary;
using testing::TempFolder;
using testing::writeText;

// Opens the package and returns the error it refused with.
ShowPackageError openError(const ShowPackage& package) {
    try {
        package.open();
    } catch (const ShowPackageError& error) {
        return error;
    }
    ADD_FAILURE() << "open succeeded";
    return ShowPackageError(ShowPackageError::NotAShowFile{});
}

std::string decoderMessage(const std::string& text) {
    try {
        decodeShow(text);
    } catch (const ShowDecodeError& error) {
        return error.what();
    }
    return "(decoded)";
}

TEST(ShowPackageSave, RoundTripsThroughTheSortedPrettyDocumentAndLeavesNoTemporaryFile) {
    TempFolder temp;
    const Show show = testing::sampleShow("Sunday", 12);
    const ShowPackage package = ShowPackage::create(temp / "Sunday.velarion", show);

    EXPECT_EQ(package.open(), show);
    EXPECT_EQ(readText(temp / "Sunday.velarion/show.json"), encodeShow(show));
    EXPECT_EQ(folderListing(package.url()), (std::vector<std::string>{"Media", "show.json"}));

    // Replacing keeps one document and the mode somebody gave it.
    fs::permissions(package.url() / "show.json", fs::perms(0640));
    Show changed = show;
    changed.title = "Sunday, second service";
    package.save(changed);
    EXPECT_EQ(package.open(), changed);
    EXPECT_EQ(folderListing(package.url()), (std::vector<std::string>{"Media", "show.json"}));
    EXPECT_EQ(fs::status(package.url() / "show.json").permissions(), fs::perms(0640));
}

TEST(ShowPackageSave, WritesTheVersionAsItStandsAndRefusesOnlyNewerOnOpen) {
    TempFolder temp;
    Show show = testing::sampleShow("Old", 2);
    show.formatVersion = 0;
    const ShowPackage package = ShowPackage::create(temp / "Old.velarion", show);
    EXPECT_EQ(package.open().formatVersion, 0);

    // Everything else in it decodes; the version alone refuses it.
    show.formatVersion = 2;
    package.save(show);
    const ShowPackageError error = openError(package);
    EXPECT_EQ(error.error(), ShowPackageError::Case(ShowPackageError::NewerFormat{2}));
    EXPECT_EQ(error.message(),
              "This show was saved by a newer Velarion (format 2). Update Velarion to open it.");
}

TEST(ShowPackageOpen, RefusesWhatIsntAShowWithTheRightCase) {
    TempFolder temp;
    const ShowPackage package(temp / "Broken.velarion");
    fs::create_directories(package.mediaFolder());
    const fs::path document = package.url() / "show.json";

    // No document: a folder that merely looks like a package, as create leaves after a failure.
    EXPECT_EQ(openError(package).message(), "That isn't a Velarion show.");

    // Broken JSON is unreadable, and in the decoder's words.
    writeText(document, "{\"formatVersion\": 1, \"title\": ");
    EXPECT_EQ(openError(package).message(),
              "The show couldn't be read: " + decoderMessage(readText(document)));

    // A header that doesn't decode is skipped; the full decode speaks instead.
    std::string text = encodeShow(testing::sampleShow("Header", 1));
    const std::string version = "\"formatVersion\": 1";
    ASSERT_NE(text.find(version), std::string::npos);
    text.replace(text.find(version), version.size(), "\"formatVersion\": \"two\"");
    writeText(document, text);
    const ShowPackageError badHeader = openError(package);
    EXPECT_TRUE(std::holds_alternative<ShowPackageError::Unreadable>(badHeader.error()));
    EXPECT_EQ(badHeader.message(), "The show couldn't be read: " + decoderMessage(text));

}

TEST(ShowPackageOpen, ReadFailuresGiveTheSystemsDescriptionWithoutBlocking) {
    TempFolder temp;
    const ShowPackage folderDocument(temp / "Folder.velarion");
    fs::create_directories(folderDocument.url() / "show.json");
    EXPECT_EQ(openError(folderDocument).message(), "The show couldn't be read: Is a directory");

    // A FIFO would block a plain open for ever.
    const ShowPackage fifoDocument(temp / "Fifo.velarion");
    fs::create_directories(fifoDocument.url());
    ASSERT_EQ(::mkfifo((fifoDocument.url() / "show.json").c_str(), 0600), 0);
    EXPECT_TRUE(
        std::holds_alternative<ShowPackageError::Unreadable>(openError(fifoDocument).error()));
}

TEST(ShowPackageOpen, RefusesAnOversizedDocumentFromItsSize) {
    TempFolder temp;
    const ShowPackage package(temp / "Huge.velarion");
    fs::create_directories(package.url());
    writeText(package.url() / "show.json", "");
    fs::resize_file(package.url() / "show.json", 200u << 20); // sparse: no disk used

    // The size sentence, not the decoder's: the text was never read.
    EXPECT_EQ(openError(package).message(),
              "The show couldn't be read: show.json is 200 MB, more than the 100 MB a show "
              "document may hold");
}

TEST(ShowPackageCopy, ReplacesOrMakesTheTargetAndAFailureLeavesItAsItWas) {
    TempFolder temp;
    const Show saved = testing::sampleShow("Draft", 2);
    const ShowPackage source = ShowPackage::create(temp / "Draft.velarion", saved);
    writeText(source.mediaURL("Video/Opening.mov"), "frames");
    const fs::path target = temp / "Shows" / "Final.velarion";
    writeText(target / "stale.txt", "old package");

    Show current = saved;
    current.title = "Final";
    const ShowPackage copy = source.saveCopy(target, current);
    EXPECT_EQ(copy, ShowPackage(target));
    EXPECT_FALSE(fs::exists(target / "stale.txt"));
    EXPECT_EQ(readText(copy.mediaURL("Video/Opening.mov")), "frames");
    EXPECT_EQ(copy.open(), current);
    EXPECT_EQ(source.saveCopy(temp / "New" / "Deeper" / "Final.velarion", saved).open(), saved);

    Show broken = current;
    broken.slideDissolve = std::nan("");
    EXPECT_THROW(source.saveCopy(target, broken), fs::filesystem_error);
    EXPECT_EQ(copy.open(), current) << "the copy it would have replaced is whole";
    EXPECT_EQ(folderListing(target.parent_path()), (std::vector<std::string>{"Final.velarion"}))
        << "and nothing half made is left beside it";
}

TEST(ShowPackageCopy, NeverRemovesItsOwnSource) {
    TempFolder temp;
    const Show show = testing::sampleShow("Self", 1);
    const ShowPackage package = ShowPackage::create(temp / "Self.velarion", show);
    writeText(package.mediaURL("Audio/a.wav"), "sound");

    Show current = show;
    current.title = "Self, again";
    EXPECT_EQ(package.saveCopy(temp / "." / "Self.velarion", current), package);
    EXPECT_EQ(package.open(), current);
    EXPECT_THROW(package.saveCopy(temp.path(), show), fs::filesystem_error);
    EXPECT_THROW(package.saveCopy(package.mediaFolder() / "Inner.velarion", show),
                 fs::filesystem_error);
    EXPECT_EQ(package.open(), current);
    EXPECT_EQ(readText(package.mediaURL("Audio/a.wav")), "sound");
}

TEST(ShowPackageFolders, FollowTheFreedesktopUserFolders) {
    TempFolder temp;
    const ScopedEnvironment home("HOME", temp.path().string());
    const ScopedEnvironment config("XDG_CONFIG_HOME", (temp / "config").string());
    const ScopedEnvironment documents("XDG_DOCUMENTS_DIR", std::nullopt);
    const ScopedEnvironment data("XDG_DATA_HOME", std::nullopt);

    // No user-dirs.dirs: home stands in for Documents.
    EXPECT_EQ(ShowPackage::showsFolder(), temp / "Velarion Shows");
    writeText(temp / "config/user-dirs.dirs", "# written by xdg-user-dirs-update\n"
                                              "XDG_DESKTOP_DIR=\"$HOME/Desktop\"\n"
                                              "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
    EXPECT_EQ(ShowPackage::showsFolder(), temp / "Dokumente/Velarion Shows");
    EXPECT_FALSE(fs::exists(temp / "Dokumente/Velarion Shows")); // named, not created

    EXPECT_EQ(ShowPackage::scratchFolder(), temp / ".local/share/Velarion/Unsaved");
    const ScopedEnvironment setData("XDG_DATA_HOME", (temp / "data").string());
    EXPECT_EQ(ShowPackage::scratchFolder(), temp / "data/Velarion/Unsaved");
}

TEST(ShowPackageMedia, ClassifiesFilesByExtension) {
    const std::vector<std::pair<std::string, std::optional<MediaKind>>> cases = {
        {"Talk.PDF", MediaKind::deck},    {"b.pptx", MediaKind::deck},
        {"photo.HEIC", MediaKind::image}, {"song.Mp3", MediaKind::audio},
        {"archive.tar.gz", std::nullopt}, {"README", std::nullopt},
    };
    for (const auto& [name, kind] : cases) {
        EXPECT_EQ(ShowPackage::mediaKind(fs::path("/in") / name), kind) << name;
    }
}

TEST(ShowPackageMedia, ImportCopiesUnderAFreeName) {
    TempFolder temp;
    const ShowPackage package = ShowPackage::create(temp / "P.velarion", Show{});
    writeText(temp / "in/a.mov", "movie");
    writeText(temp / "in/name", "plain");

    EXPECT_EQ(package.importFile(temp / "in/a.mov", "Video"), "Video/a.mov");
    EXPECT_EQ(package.importFile(temp / "in/a.mov", "Video"), "Video/a 2.mov");
    EXPECT_EQ(package.importFile(temp / "in/name"), "name");
    EXPECT_EQ(package.importFile(temp / "in/name"), "name 2");

    EXPECT_EQ(readText(package.mediaURL("Video/a 2.mov")), "movie");
    EXPECT_TRUE(fs::exists(temp / "in/a.mov")); // copied, never moved

    EXPECT_THROW(package.importFile(temp / "in/missing.mov", "Video"), fs::filesystem_error);
    EXPECT_THROW(package.importFile(temp / "in/a.mov", "../Outside"), fs::filesystem_error);
    EXPECT_FALSE(fs::exists(package.url() / "Outside"));
}

TEST(ShowPackageMedia, WriteMediaReplacesAtomicallyInsideThePackageOnly) {
    TempFolder temp;
    const ShowPackage package = ShowPackage::create(temp / "P.velarion", Show{});

    package.writeMedia("first", "Slides/ABC/1.png");
    package.writeMedia("second", "Slides/ABC/1.png");
    EXPECT_EQ(readText(package.mediaURL("Slides/ABC/1.png")), "second");
    EXPECT_EQ(folderListing(package.mediaURL("Slides/ABC")), std::vector<std::string>{"1.png"});

    EXPECT_THROW(package.writeMedia("x", "../show.json"), fs::filesystem_error);
    EXPECT_THROW(package.writeMedia("x", "/etc/evil"), fs::filesystem_error);
    EXPECT_EQ(package.open(), Show{});
}

// ----------------------------------------------------------- tidying

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
    const Show show = showWithLibrary(
        {fileItem(MediaKind::video, "a.mov"), fileItem(MediaKind::image, "b.png"), fileItem(MediaKind::audio, "c.wav"),
         fileItem(MediaKind::video, "gone.mov"), fileItem(MediaKind::video, "Video/tidy.mov")});

    const TidyResult result = package.tidy(show);
    EXPECT_EQ(item(result.show, 0).fileName, "Video/a.mov");
    EXPECT_EQ(item(result.show, 1).fileName, "Images/b.png");
    EXPECT_EQ(item(result.show, 2).fileName, "Audio/c.wav");
    EXPECT_EQ(item(result.show, 3).fileName, "gone.mov"); // reported missing under its old name
    EXPECT_EQ(item(result.show, 4).fileName, "Video/tidy.mov");
    EXPECT_EQ(result.oldFiles, (std::vector<std::string>{"a.mov", "b.png", "c.wav"}));
    // Only copies: the old files stay until the tidied show is saved.
    EXPECT_EQ(readText(package.mediaURL("Video/a.mov")), "movie");
    EXPECT_TRUE(has("a.mov"));

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
    const Show show = showWithLibrary({flat, inFolder});

    const TidyResult result = package.tidy(show);
    const std::string deckFolder = "Decks/Deck " + flat.id.text().substr(0, 8);
    EXPECT_EQ(item(result.show, 0).deck->pages,
              (std::vector<std::string>{deckFolder + "/1.png", deckFolder + "/2.png"}));
    EXPECT_EQ(item(result.show, 0).fileName, "Decks/Talk.pdf");
    EXPECT_EQ(readText(package.mediaURL(deckFolder + "/1.png")), "page one");
    EXPECT_EQ(item(result.show, 1).deck->pages, std::vector<std::string>{"Decks/Old Talk/1.png"});
    EXPECT_EQ(result.oldFiles,
              (std::vector<std::string>{"1.png", "2.png", "Talk.pdf", "Old Talk/1.png"}));
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

// ----------------------------------------------------------- a killed save

TEST(ShowPackageCrash, AKilledSaveLeavesTheOldOrTheNewDocument) {
    TempFolder temp;
    // Different sizes too, so that a torn write can't pass for either.
    const std::array<Show, 2> shows = {testing::sampleShow("First", 250),
                                       testing::sampleShow("Second", 180)};
    const ShowPackage package = ShowPackage::create(temp / "Crash.velarion", shows[0]);

    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> delayMicroseconds(0, 20'000);
    for (int kill = 0; kill < 200; ++kill) {
        // Saves until it is killed, saying when the first save is done so
        // that the kill lands among the later ones however slow a build is.
        testing::ChildProcess saver([&](int output) {
            package.save(shows[1]);
            if (::write(output, "s\n", 2) == 2)
                for (std::size_t n = 0;; ++n) package.save(shows[n % 2]);
            return 1;
        });
        const bool saved = saver.readLine().has_value();
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
        saver.signal(SIGKILL);
        ASSERT_TRUE(saved && saver.wait() == -SIGKILL) << "the saving child stopped by itself";

        Show opened;
        ASSERT_NO_THROW(opened = package.open()) << "after kill " << kill;
        ASSERT_TRUE(opened == shows[0] || opened == shows[1]) << "after kill " << kill;
    }
}

} // namespace
} // namespace velarion
