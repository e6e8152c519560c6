#include "GoldenPicture.h"

#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/QtTextCards.h"

#include <QPainter>

#include <gtest/gtest.h>

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

} // namespace
} // namespace velarion
