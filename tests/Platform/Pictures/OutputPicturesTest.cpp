#include "GoldenPicture.h"

#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/OutputPictures.h"
#include "Platform/Pictures/SlideMaker.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <map>

namespace velarion {
namespace {

using testing::matchesGolden;

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
    TimerState timer;
    timer.name = "Speaker timer";
    timer.valueSeconds = 95.2;
    timer.isWarning = true;

    OutputPictures::StageInputs slides;
    slides.confidence.slideNumber = 3;
    slides.confidence.slideCount = 12;
    slides.confidence.sectionName = "Keynote";
    slides.confidence.currentSlide = "current.png";
    slides.confidence.nextSlide = "next.png";
    slides.confidence.notes = "Thank the sponsors before the second half. Mention the survey link in the app.";
    slides.confidence.stageMessage = "Wrap up in two minutes";
    slides.timer = timer;
    slides.wallSeconds = eveningSeconds;
    EXPECT_TRUE(matchesGolden(OutputPictures::stage(slides, newYork, picture), "stage-slides"));

    OutputPictures::StageInputs timing;
    timing.confidence.sectionName = "Panel";
    timer.valueSeconds = -61.5;
    timer.isWarning = false;
    timer.isOverrun = true;
    timing.timer = timer;
    timing.wallSeconds = eveningSeconds;
    timing.confidence.stageMessage = "Last question";
    EXPECT_TRUE(matchesGolden(OutputPictures::stage(timing, newYork, picture), "stage-timer"));

    OutputPictures::StageInputs standby;
    standby.nextCueName = "Walk-on music";
    standby.wallSeconds = eveningSeconds;
    standby.confidence.stageMessage = "Doors open";
    EXPECT_TRUE(matchesGolden(OutputPictures::stage(standby, newYork, picture), "stage-standby"));
}

TEST(OutputPictures, WallClockIsLocalTwelveHourTimeWithSeconds) {
    EXPECT_EQ(OutputPictures::wallClockText(eveningSeconds + 0.9, newYork), "7:05:09 PM");
    EXPECT_EQ(OutputPictures::wallClockText(0, FixedOffsetCalendar(0)), "12:00:00 AM");
    EXPECT_EQ(OutputPictures::wallClockText(12 * 3600 + 59, FixedOffsetCalendar(0)), "12:00:59 PM");
    EXPECT_EQ(OutputPictures::wallClockText(-1, FixedOffsetCalendar(0)), "11:59:59 PM");
}

TEST(OutputPictures, StageKeepsRecentPagesDecodedAndSmall) {
    const testing::TempFolder folder;
    const auto path = (folder / "page.png").string();
    ASSERT_TRUE(slidePages().at("current.png").save(QString::fromStdString(path)));
    OutputPictures::StageSlidePictures pictures;
    const auto first = pictures(path);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->height(), 416);
    EXPECT_NEAR(first->width(), 740, 1);
    std::filesystem::remove(path);
    EXPECT_TRUE(pictures(path)); // from memory
    EXPECT_FALSE(pictures((folder / "missing.png").string()));
}

TEST(OutputPictures, IdentificationAndPatternsMatchTheirGoldens) {
    EXPECT_TRUE(matchesGolden(OutputPictures::identify("Left projector", ScreenRole::audience),
                              "identify-audience"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::colorBars), "pattern-color-bars"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::grid), "pattern-grid"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::white), "pattern-white"));
    EXPECT_TRUE(matchesGolden(OutputPictures::pattern(OutputTestPattern::black), "pattern-black"));
    // Each role has its own colour.
    std::set<QRgb> colours;
    for (ScreenRole role : {ScreenRole::audience, ScreenRole::stage, ScreenRole::stream, ScreenRole::lobby})
        colours.insert(OutputPictures::identify("X", role).pixel(4, 4));
    EXPECT_EQ(colours.size(), 4u);
}

} // namespace
} // namespace velarion
