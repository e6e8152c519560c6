#include "ChildProcess.h"
#include "GoldenPicture.h"
#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFile.h"
#include "Platform/Pictures/QtSlidePictures.h"
#include "Platform/Pictures/SlideMaker.h"
#include "TempFolder.h"

#include <QImage>

#include <gtest/gtest.h>

#include <QBuffer>
#include <QImageWriter>
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

using testing::generatedPhoto;
using testing::inkBounds;
using testing::matchesGolden;

TextBox textBox(std::string text, double x, double y, double width, double height, double size) {
    return {.id = Uuid::random(), .text = std::move(text), .x = x, .y = y, .width = width,
            .height = height, .size = size};
}

MadeSlide slideWith(std::vector<TextBox> boxes, int color = 0x1C2541) {
    return {.id = Uuid::random(), .color = color, .boxes = std::move(boxes)};
}

MadeSlide lyricSlide() {
    TextBox lyrics = textBox("Amazing grace, how sweet the sound\nThat saved a wretch like me", 0.06, 0.62,
                             0.88, 0.3, 72);
    lyrics.bold = true;
    lyrics.color = 0xFF0000; // ignored on a clear slide
    MadeSlide slide = slideWith({lyrics});
    slide.isClear = true;
    return slide;
}

TEST(SlideMaker, PagesMatchTheirGoldens) {
    MadeSlide title = slideTemplate::makeSlide(SlideTemplate::title, "Annual Conference 2025",
                                               "Welcome, everyone");
    title.color = 0x14213D;
    EXPECT_TRUE(matchesGolden(SlideMaker::render(title, std::nullopt), "slide-title"));

    MadeSlide bullets = slideTemplate::makeSlide(
        SlideTemplate::agenda, "Today",
        "Welcome and introductions\n\n   Keynote: the year ahead  \nPanel discussion\nQuestions");
    bullets.color = 0xF4F1EA;
    EXPECT_TRUE(matchesGolden(SlideMaker::render(bullets, std::nullopt), "slide-bullets"));

    EXPECT_TRUE(matchesGolden(SlideMaker::render(lyricSlide(), std::nullopt), "slide-clear-lyric"));

    TextBox caption = textBox("Thank you for coming", 0.078, 0.35, 0.844, 0.3, 120);
    caption.bold = true;
    MadeSlide photo = slideWith({caption});
    photo.imageID = Uuid::random();
    EXPECT_TRUE(matchesGolden(SlideMaker::render(photo, generatedPhoto(1600, 1200)), "slide-photo"));
}

TEST(SlideMaker, TextStaysInsideItsBoxAndTheLastLineIsCut) {
    TextBox box = textBox("one two three four five six seven eight nine ten eleven twelve thirteen", 0.1,
                          0.1, 0.3, 0.2, 60);
    box.align = TextAlign::left;
    const MadeSlide slide = slideWith({box}, 0xFFFFFF);
    const QImage page = SlideMaker::render(slide, std::nullopt);
    const QRect ink = inkBounds(page, qRgb(255, 255, 255));
    const QRect boxPixels(192, 108, 576, 216);
    EXPECT_TRUE(boxPixels.adjusted(-2, -2, 2, 2).contains(ink)) << ink.x() << "," << ink.y() << " "
                                                                  << ink.width() << "x" << ink.height();
    // The default ink on a white slide is the near-black grey.
    EXPECT_FALSE(inkBounds(page, qRgb(255, 255, 255), 230).isEmpty());
}

TEST(SlideMaker, PortDrawsOverTheSlidePictureOrTheDecksPictureBackdrop) {
    const testing::TempFolder folder;
    const Uuid photoID = Uuid::random();
    const QImage photo = generatedPhoto(192, 108);
    ASSERT_TRUE(photo.save(QString::fromStdString((folder / "photo.png").string())));
    QtSlidePictures pictures([&](const Uuid& id) -> std::optional<std::filesystem::path> {
        if (id == photoID) return folder / "photo.png";
        return std::nullopt;
    });
    auto corner = [](const std::optional<StillImage>& still) {
        EXPECT_TRUE(still);
        return toQImage(*still).convertToFormat(QImage::Format_ARGB32).pixel(5, 5);
    };
    MadeSlide slide = slideWith({}, 0x204060);
    EXPECT_EQ(corner(pictures.render(slide, std::nullopt)), qRgb(0x20, 0x40, 0x60));
    EXPECT_EQ(corner(pictures.render(slide, Backdrop{backdrop::Color{0xFF0000}})), qRgb(0x20, 0x40, 0x60));
    const QRgb photoCorner = corner(pictures.render(slide, Backdrop{backdrop::Media{photoID}}));
    EXPECT_NE(photoCorner, qRgb(0x20, 0x40, 0x60));
    slide.imageID = photoID;
    EXPECT_EQ(corner(pictures.render(slide, std::nullopt)), photoCorner);
    // A picture that can't be found leaves the slide's colour.
    slide.imageID = Uuid::random();
    EXPECT_EQ(corner(pictures.render(slide, std::nullopt)), qRgb(0x20, 0x40, 0x60));
}

// Picture files as the library reads them: formats, orientation, size, failures.
// Left half red, right half blue: which way up it came out is visible.
QImage halves(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::blue);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width / 2; ++x) image.setPixel(x, y, qRgb(255, 0, 0));
    return image;
}

void writeBytes(const std::filesystem::path& path, const QByteArray& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.constData(), bytes.size());
}

QByteArray encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    EXPECT_TRUE(writer.write(image)) << format << ": " << writer.errorString().toStdString();
    return bytes;
}

// A JPEG carrying an EXIF orientation tag (6: turn 90 degrees clockwise).
QByteArray jpegWithOrientation(const QImage& image, quint16 orientation) {
    const QByteArray jpeg = encoded(image, "jpeg");
    QByteArray exif("Exif\0\0", 6);
    exif += QByteArray("II\x2A\x00\x08\x00\x00\x00", 8); // little-endian TIFF, IFD at 8
    exif += QByteArray("\x01\x00", 2);                   // one entry
    exif += QByteArray("\x12\x01\x03\x00\x01\x00\x00\x00", 8); // Orientation, SHORT, 1
    exif += char(orientation & 0xFF);
    exif += char(orientation >> 8);
    exif += QByteArray("\x00\x00\x00\x00\x00\x00", 6); // padding, no next IFD
    QByteArray segment("\xFF\xE1", 2);
    const int length = static_cast<int>(exif.size()) + 2;
    segment += char(length >> 8);
    segment += char(length & 0xFF);
    segment += exif;
    return jpeg.left(2) + segment + jpeg.mid(2); // right after the start marker
}

// A two-frame GIF of 8 by 8, red then blue, made by hand since Qt reads GIF
// but can't write it: a four-colour table, then per frame a 0.1 s control
// block, an image block and LZW data kept at three-bit codes by a clear code
// before every pair of pixels.
QByteArray twoFrameGIF() {
    static const char bytes[] =
        "\x47\x49\x46\x38\x39\x61\x08\x00\x08\x00\x91\x00\x00\xFF\x00\x00\x00\x00\xFF\x00\xFF\x00\x00\x00"
        "\x00\x21\xF9\x04\x00\x0A\x00\x00\x00\x2C\x00\x00\x00\x00\x08\x00\x08\x00\x00\x02\x25\x04\x08\x10"
        "\x20\x40\x80\x00\x01\x02\x04\x08\x10\x20\x40\x80\x00\x01\x02\x04\x08\x10\x20\x40\x80\x00\x01\x02"
        "\x04\x08\x10\x20\x40\x80\x00\x01\x02\x05\x00\x21\xF9\x04\x00\x0A\x00\x00\x00\x2C\x00\x00\x00\x00"
        "\x08\x00\x08\x00\x00\x02\x25\x4C\x98\x30\x61\xC2\x84\x09\x13\x26\x4C\x98\x30\x61\xC2\x84\x09\x13"
        "\x26\x4C\x98\x30\x61\xC2\x84\x09\x13\x26\x4C\x98\x30\x61\xC2\x84\x09\x13\x26\x05\x00\x3B";
    return QByteArray(bytes, sizeof bytes - 1);
}

QRgb at(const QImage& image, int x, int y) {
    return image.pixel(x, y) & 0xFFFFFF;
}

bool near(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) < 40 && std::abs(qGreen(a) - qGreen(b)) < 40 &&
           std::abs(qBlue(a) - qBlue(b)) < 40;
}

TEST(PictureFile, ReadsEveryFormatItOffers) {
    const testing::TempFolder folder;
    const QImage source = halves(64, 32);
    for (const char* format : {"png", "jpeg", "webp", "tiff", "bmp"}) {
        const auto path = folder / (std::string("picture.") + format);
        writeBytes(path, encoded(source, format));
        const PictureRead read = readPicture(path);
        ASSERT_TRUE(read.picture) << format << ": " << read.failure;
        EXPECT_EQ(read.picture->size(), QSize(64, 32)) << format;
        EXPECT_TRUE(near(at(*read.picture, 8, 16), qRgb(255, 0, 0))) << format;
        EXPECT_TRUE(near(at(*read.picture, 56, 16), qRgb(0, 0, 255))) << format;
    }
    writeBytes(folder / "animated.gif", twoFrameGIF());
    const PictureRead gif = readPicture(folder / "animated.gif");
    ASSERT_TRUE(gif.picture) << gif.failure;
    EXPECT_EQ(at(*gif.picture, 4, 4), qRgb(255, 0, 0) & 0xFFFFFF); // the first frame
}

TEST(PictureFile, OrientationTagTurnsThePictureUpright) {
    const testing::TempFolder folder;
    writeBytes(folder / "turned.jpg", jpegWithOrientation(halves(80, 40), 6));
    const PictureRead read = readPicture(folder / "turned.jpg");
    ASSERT_TRUE(read.picture) << read.failure;
    ASSERT_EQ(read.picture->size(), QSize(40, 80));
    // Turned clockwise, the red left half is now on top.
    EXPECT_TRUE(near(at(*read.picture, 20, 10), qRgb(255, 0, 0)));
    EXPECT_TRUE(near(at(*read.picture, 20, 70), qRgb(0, 0, 255)));
}

TEST(PictureFile, LargePicturesAreScaledDownKeepingTheirShape) {
    const testing::TempFolder folder;
    writeBytes(folder / "wide.png", encoded(halves(5000, 1000), "png"));
    const PictureRead wide = readPicture(folder / "wide.png");
    ASSERT_TRUE(wide.picture) << wide.failure;
    EXPECT_EQ(wide.picture->size(), QSize(3840, 768));

    // The limit applies to the upright picture: 5000 by 2000 stored, turned,
    // is 2000 by 5000 and must fit 2160 high.
    writeBytes(folder / "tall.jpg", jpegWithOrientation(halves(5000, 2000), 6));
    const PictureRead tall = readPicture(folder / "tall.jpg");
    ASSERT_TRUE(tall.picture) << tall.failure;
    EXPECT_EQ(tall.picture->size(), QSize(864, 2160));
    EXPECT_TRUE(near(at(*tall.picture, 432, 100), qRgb(255, 0, 0)));

}

TEST(PictureFile, UnreadableFilesGiveOneSentenceAndNoStill) {
    const testing::TempFolder folder;
    const PictureRead missing = readPicture(folder / "gone.png");
    EXPECT_FALSE(missing.picture);
    EXPECT_EQ(missing.failure, "The picture \u201Cgone.png\u201D can't be found; it may have been moved or deleted.");

    writeBytes(folder / "notes.png", QByteArray("these are not pixels"));
    const PictureRead garbage = readPicture(folder / "notes.png");
    EXPECT_FALSE(garbage.picture);
    EXPECT_EQ(garbage.failure,
              "\u201Cnotes.png\u201D isn't a picture that can be opened; use PNG, JPEG, WebP, TIFF, GIF or BMP.");

    QtImageLoader loader;
    EXPECT_FALSE(loader.load((folder / "notes.png").string()));
}

} // namespace
} // namespace velarion
