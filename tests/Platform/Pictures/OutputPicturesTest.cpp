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
