#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/SlideMaker.h"
#include "ChildProcess.h"
#include "TempFolder.h"

#include <QImage>

#include <gtest/gtest.h>

#include <fstream>

namespace velarion {
namespace {

void writeFile(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

struct Fixture : ::testing::Test {
    testing::TempFolder folder;
    ShowPackage package{folder / "Show.velarion"};
    SharedList<MediaItem> library;
    MediaItem deck;

    Fixture() {
        std::filesystem::create_directories(package.mediaFolder());
        deck.id = Uuid::random();
        deck.kind = MediaKind::deck;
        deck.fileName = std::string(MediaItem::madeFileName);
        deck.deck = DeckInfo{};
        deck.deck->source = "Velarion";
        MadeSlide first = slideTemplate::makeSlide(SlideTemplate::title, "Welcome", "");
        first.notes = "Smile";
        first.sectionNames = std::vector<std::string>{"Opening", "Hello"};
        MadeSlide second = slideTemplate::makeSlide(SlideTemplate::statement, "", "Be kind");
        second.sectionName = "Middle";
        deck.deck->made = std::vector<MadeSlide>{first, second};
    }

    MadeSlide& slide(std::size_t index) { return (*deck.deck->made)[index]; }
};

using SlidePages = Fixture;

TEST_F(SlidePages, UpdateDrawsMissingPagesAndRebuildsTheDeck) {
    const MediaItem updated = SlideMaker::update(deck, package, library);
    const DeckInfo& info = *updated.deck;
    ASSERT_EQ(info.pages.size(), 2u);
    EXPECT_EQ(info.pages[0], SlideMaker::pageName(deck.id, slide(0)));
    EXPECT_EQ(info.notes, (std::vector<std::string>{"Smile", ""}));
    EXPECT_EQ(info.groups, (std::vector<DeckGroup>{{"Opening", 0}, {"Hello", 0}, {"Middle", 1}}));
    const QImage page(QString::fromStdString(package.mediaURL(info.pages[1]).string()));
    EXPECT_EQ(page.size(), QSize(1920, 1080));
    // The item given is untouched, so a caller keeps it when a write fails.
    EXPECT_TRUE(deck.deck->pages.empty());
}

TEST_F(SlidePages, AWriteThatFailsFailsTheUpdate) {
    // A file where the deck's folder should be makes every page unwritable.
    std::filesystem::create_directories(package.mediaURL("Slides"));
    writeFile(package.mediaURL("Slides/" + deck.id.text()), "in the way");
    EXPECT_ANY_THROW(SlideMaker::update(deck, package, library));
}

// A disk that fills while a changed slide is drawn: the system's words come
// back, the pages drawn before stay whole and nothing half-written is left.
TEST_F(SlidePages, AFullDiskKeepsTheEarlierPagesAndSaysWhy) {
    const MediaItem drawn = SlideMaker::update(deck, package, library);
    const auto bytesOf = [&](const std::string& page) { return std::filesystem::file_size(package.mediaURL(page)); };
    const std::uintmax_t firstBytes = bytesOf(drawn.deck->pages[0]);
    slide(1) = slideTemplate::makeSlide(SlideTemplate::statement, "", "Be kinder");
    std::string failure;
    {
        testing::ScopedFileSizeLimit fullDisk(4096);
        try {
            SlideMaker::update(deck, package, library);
        } catch (const std::exception& error) {
            failure = error.what();
        }
    }
    EXPECT_NE(failure.find("File too large"), std::string::npos) << failure;
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(package.mediaURL("Slides")))
        if (entry.is_regular_file()) left.push_back(entry.path().filename().string());
    EXPECT_EQ(left.size(), 2u) << "only the two earlier pages";
    EXPECT_EQ(bytesOf(drawn.deck->pages[0]), firstBytes);
}

TEST_F(SlidePages, PruneKeepsOnlyPagesSomeDeckNames) {
    deck.deck->pages = {"Slides/A/keep.png"};
    library.push_back(deck);
    std::filesystem::create_directories(package.mediaURL("Slides/A"));
    std::filesystem::create_directories(package.mediaURL("Slides/B/old"));
    writeFile(package.mediaURL("Slides/A/keep.png"), "x");
    writeFile(package.mediaURL("Slides/A/drop.png"), "x");
    writeFile(package.mediaURL("Slides/A/notes.txt"), "x");
    writeFile(package.mediaURL("Slides/B/old/drop.PNG"), "x");

    SlideMaker::prunePages(package, library);
    EXPECT_TRUE(std::filesystem::exists(package.mediaURL("Slides/A/keep.png")));
    EXPECT_TRUE(std::filesystem::exists(package.mediaURL("Slides/A/notes.txt")));
    EXPECT_FALSE(std::filesystem::exists(package.mediaURL("Slides/A/drop.png")));
    EXPECT_FALSE(std::filesystem::exists(package.mediaURL("Slides/B")));
}

} // namespace
} // namespace velarion
