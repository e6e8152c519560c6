#include "GoldenPicture.h"

#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/QtSlidePictures.h"
#include "Platform/Pictures/SlideMaker.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

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

} // namespace
} // namespace velarion
