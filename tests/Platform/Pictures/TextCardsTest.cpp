#include "GoldenPicture.h"

#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/OutputPictures.h"
#include "Platform/Pictures/QtTextCards.h"
#include "Platform/Pictures/SlideMaker.h"
#include "TempFolder.h"

#include <QPainter>

#include <gtest/gtest.h>
#include <map>

namespace velarion {
namespace {

using testing::inkBounds;
using testing::matchesGolden;

// A round logo, wider than tall, with a hole that must stay transparent.
QImage logo() {
    QImage picture = makeCanvas(400, 200);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(230, 180, 40));
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(QRectF(0, 0, 400, 200), 40, 40);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.drawEllipse(QPointF(200, 100), 60, 60);
    return picture;
}

TEST(TextCards, EachCardMatchesItsGolden) {
    EXPECT_TRUE(matchesGolden(QtTextCards::drawBanner("Please take your seats — we begin in five minutes"),
                              "card-banner"));
    EXPECT_TRUE(matchesGolden(QtTextCards::drawLowerThird("Dr. Amelia Okafor", "Director of Research, Northfield Institute"),
                              "card-lower-third"));
    EXPECT_TRUE(matchesGolden(QtTextCards::drawLowerThird("Welcome", ""), "card-lower-third-title-only"));
    EXPECT_TRUE(matchesGolden(QtTextCards::drawCountdown("Keynote", "12:34"), "card-countdown"));
    EXPECT_TRUE(matchesGolden(QtTextCards::drawCountdownFull("Doors open in", "\u22120:42", logo()),
                              "card-countdown-full"));
    EXPECT_TRUE(matchesGolden(QtTextCards::drawHolding("We'll be right back", "The session resumes shortly"),
                              "card-holding"));
}

TEST(TextCards, FullScreenTimeShrinksToFitAndCentresWithoutLabelOrLogo) {
    const QImage wide = QtTextCards::drawCountdownFull("", "1:23:45:00:00", QImage());
    const QRect ink = inkBounds(wide, qRgba(0, 0, 0, 0));
    ASSERT_FALSE(ink.isEmpty());
    EXPECT_GE(ink.left(), 96 - 2);
    EXPECT_LE(ink.right(), 1824 + 2);
    // It just fits: it spans nearly the whole width allowed.
    EXPECT_GT(ink.width(), 1728 * 0.95);
    // Centred on 540 from the bottom, which is the middle.
    EXPECT_NEAR(ink.center().x(), 960, 4);
    EXPECT_NEAR(ink.center().y(), 540, 12);

    // With a label, the figure's centre moves up to 470 from the bottom.
    const QImage labelled = QtTextCards::drawCountdownFull("", "5:00", QImage());
    const QImage withLabel = QtTextCards::drawCountdownFull("Starting in", "5:00", QImage());
    const QRect plain = inkBounds(labelled, qRgba(0, 0, 0, 0));
    const QRect figure = inkBounds(withLabel.copy(0, 1080 - 700, 1920, 700), qRgba(0, 0, 0, 0));
    EXPECT_NEAR(figure.center().y() + (1080 - 700) - plain.center().y(), 70, 2);
}

QImage decoded(const QByteArray& png) {
    return QImage::fromData(png, "png");
}

int worstDifference(const QImage& a, const QImage& b) {
    const QImage left = a.convertToFormat(QImage::Format_ARGB32), right = b.convertToFormat(QImage::Format_ARGB32);
    int worst = 0;
    for (int y = 0; y < left.height(); ++y)
        for (int x = 0; x < left.width(); ++x)
            worst = std::max(worst, testing::channelDifference(left.pixel(x, y), right.pixel(x, y)));
    return worst;
}

TEST(Canvas, PNGKeepsEveryPixelAndAlphaOnlyWhenNeeded) {
    // Tall enough to be deflated in bands on a machine with two cores.
    const QImage photo = testing::generatedPhoto(301, 600).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage opaque = decoded(encodePNG(photo));
    ASSERT_EQ(opaque.size(), photo.size());
    EXPECT_FALSE(opaque.hasAlphaChannel());
    EXPECT_EQ(worstDifference(opaque, photo), 0);

    QImage translucent = makeCanvas(64, 48);
    translucent.setPixel(3, 4, qPremultiply(qRgba(250, 120, 10, 77)));
    translucent.setPixel(63, 47, qPremultiply(qRgba(255, 255, 255, 255)));
    const QImage clear = decoded(encodePNG(translucent));
    ASSERT_EQ(clear.size(), translucent.size());
    EXPECT_TRUE(clear.hasAlphaChannel());
    // Straight alpha in the file: colours come back within premultiplied rounding.
    EXPECT_LE(worstDifference(clear, translucent), 2);
    EXPECT_EQ(qAlpha(clear.pixel(3, 4)), 77);
    EXPECT_EQ(qAlpha(clear.pixel(0, 0)), 0);
}

TEST(Canvas, StillsAndQtImagesShareOnePixelLayout) {
    QImage picture = makeCanvas(3, 2, QColor(10, 20, 30));
    picture.setPixel(2, 1, qPremultiply(qRgba(200, 100, 50, 128)));
    const auto still = toStill(picture);
    ASSERT_TRUE(still);
    EXPECT_EQ(std::vector<std::uint8_t>(still->bgra().begin(), still->bgra().begin() + 4),
              (std::vector<std::uint8_t>{30, 20, 10, 255}));
    QImage back = toQImage(*still);
    EXPECT_EQ(back.pixel(2, 1), picture.pixel(2, 1));
}

// 2025-03-14 19:05:09 in a zone five hours behind UTC.
constexpr double eveningSeconds = 1741997109;
const FixedOffsetCalendar newYork(-5 * 3600);

std::map<std::string, QImage> slidePages() {
    MadeSlide current = slideTemplate::makeSlide(SlideTemplate::title, "Our year", "Highlights");
    current.color = 0x14213D;
    MadeSlide next = slideTemplate::makeSlide(SlideTemplate::statement, "", "What comes next");
    next.color = 0xF4F1EA;
    return {{"current.png", SlideMaker::render(current, std::nullopt)},
            {"next.png", SlideMaker::render(next, std::nullopt)}};
}

TEST(OutputPictures, StageInEachLayoutMatchesItsGolden) {
    const auto pages = slidePages();
    const OutputPictures::SlidePicture picture = [&](const std::string& path) -> std::optional<QImage> {
        const auto page = pages.find(path);
        if (page == pages.end()) return std::nullopt;
        return page->second;
    };
    TimerState timer{.name = "Speaker timer", .valueSeconds = 95.2, .isWarning = true};
    const OutputPictures::StageInputs slides{
        .confidence = {.slideNumber = 3, .slideCount = 12, .sectionName = "Keynote",
                       .currentSlide = "current.png", .nextSlide = "next.png",
                       .notes = "Thank the sponsors before the second half. Mention the survey link in the app.",
                       .stageMessage = "Wrap up in two minutes"},
        .timer = timer,
        .wallSeconds = eveningSeconds};
    EXPECT_TRUE(matchesGolden(OutputPictures::stage(slides, newYork, picture), "stage-slides"));

    timer.valueSeconds = -61.5;
    timer.isWarning = false;
    timer.isOverrun = true;
    const OutputPictures::StageInputs timing{
        .confidence = {.sectionName = "Panel", .stageMessage = "Last question"}, .timer = timer,
        .wallSeconds = eveningSeconds};
    EXPECT_TRUE(matchesGolden(OutputPictures::stage(timing, newYork, picture), "stage-timer"));

    const OutputPictures::StageInputs standby{.confidence = {.stageMessage = "Doors open"},
                                              .nextCueName = "Walk-on music",
                                              .wallSeconds = eveningSeconds};
    EXPECT_TRUE(matchesGolden(OutputPictures::stage(standby, newYork, picture), "stage-standby"));
}

TEST(OutputPictures, IdentificationAndPatternsMatchTheirGoldens) {
    EXPECT_TRUE(matchesGolden(OutputPictures::identify("Left projector", ScreenRole::audience),
                              "identify-audience"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::colorBars), "pattern-color-bars"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::grid), "pattern-grid"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::white), "pattern-white"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::black), "pattern-black"));
}

} // namespace
} // namespace velarion
