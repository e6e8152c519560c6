// The pictures drawn while a show runs or is edited: a made slide's page
// encoded to PNG (the operator waits for it after an edit; budget 40 ms), a
// text card (a timer card is drawn once a second; budget 10 ms), and the
// Stage Display picture (redrawn at most once a second; budget 15 ms).

#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/OutputPictures.h"
#include "Platform/Pictures/QtTextCards.h"
#include "Platform/Pictures/SlideMaker.h"

#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>

#include <benchmark/benchmark.h>

#include <cstdlib>

namespace velarion::bench {

namespace {

MadeSlide titleSlide() {
    MadeSlide slide = slideTemplate::makeSlide(SlideTemplate::title, "Annual Conference 2025",
                                               "Welcome, everyone");
    slide.color = 0x14213D;
    return slide;
}

MadeSlide lyricSlide() {
    MadeSlide slide = slideTemplate::makeSlide(SlideTemplate::statement, "",
                                               "Amazing grace, how sweet the sound\n"
                                               "That saved a wretch like me");
    slide.isClear = true;
    return slide;
}

// A photograph made here: gradients, so that it compresses like one.
QImage photograph() {
    QImage photo(1920, 1080, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&photo);
    QLinearGradient sky(0, 0, 1920, 1080);
    sky.setColorAt(0, QColor(250, 190, 90));
    sky.setColorAt(1, QColor(40, 50, 120));
    painter.fillRect(photo.rect(), sky);
    QRadialGradient sun(1300, 300, 400);
    sun.setColorAt(0, QColor(255, 250, 220));
    sun.setColorAt(1, QColor(255, 250, 220, 0));
    painter.fillRect(photo.rect(), sun);
    return photo;
}

void slidePageToPNG(benchmark::State& state, const MadeSlide& slide,
                    const std::optional<QImage>& background = std::nullopt) {
    std::size_t bytes = 0;
    for (auto _ : state) {
        const QByteArray png = encodePNG(SlideMaker::render(slide, background));
        bytes = static_cast<std::size_t>(png.size());
        benchmark::DoNotOptimize(png.constData());
    }
    state.counters["png_bytes"] = static_cast<double>(bytes);
}

void BM_SlidePageToPNG_Title(benchmark::State& state) {
    slidePageToPNG(state, titleSlide());
}
BENCHMARK(BM_SlidePageToPNG_Title)->Unit(benchmark::kMillisecond);

// A clear slide draws its text over a blurred shadow.
void BM_SlidePageToPNG_ClearLyric(benchmark::State& state) {
    slidePageToPNG(state, lyricSlide());
}
BENCHMARK(BM_SlidePageToPNG_ClearLyric)->Unit(benchmark::kMillisecond);

// Over a photograph, which is dimmed and compresses worst.
void BM_SlidePageToPNG_Photo(benchmark::State& state) {
    MadeSlide slide = titleSlide();
    slide.imageID = Uuid::random();
    slidePageToPNG(state, slide, photograph());
}
BENCHMARK(BM_SlidePageToPNG_Photo)->Unit(benchmark::kMillisecond);

void BM_TextCard_Countdown(benchmark::State& state) {
    QtTextCards cards;
    int second = 0;
    for (auto _ : state) {
        auto still = cards.countdown("Keynote", "12:" + std::to_string(10 + second++ % 50));
        benchmark::DoNotOptimize(still);
    }
}
BENCHMARK(BM_TextCard_Countdown)->Unit(benchmark::kMillisecond);

void BM_TextCard_LowerThird(benchmark::State& state) {
    QtTextCards cards;
    for (auto _ : state) {
        auto still = cards.lowerThird("Dr. Amelia Okafor", "Director of Research, Northfield Institute");
        benchmark::DoNotOptimize(still);
    }
}
BENCHMARK(BM_TextCard_LowerThird)->Unit(benchmark::kMillisecond);

// The slides layout, the busiest: two pages (already decoded, as the stage's
// page memory holds them), notes, the timer and a stage message; made a
// scene picture as the output manager does.
void BM_StagePicture_Slides(benchmark::State& state) {
    const QImage current = SlideMaker::render(titleSlide(), std::nullopt)
                               .scaled(740, 416, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    const QImage next = current;
    const OutputPictures::SlidePicture pages = [&](const std::string& path) -> std::optional<QImage> {
        return path == "current" ? current : next;
    };
    OutputPictures::StageInputs inputs;
    inputs.confidence.slideNumber = 3;
    inputs.confidence.slideCount = 12;
    inputs.confidence.sectionName = "Keynote";
    inputs.confidence.currentSlide = "current";
    inputs.confidence.nextSlide = "next";
    inputs.confidence.notes = "Thank the sponsors before the second half. Mention the survey link.";
    inputs.confidence.stageMessage = "Wrap up in two minutes";
    inputs.timer = TimerState{};
    inputs.timer->valueSeconds = 95;
    const FixedOffsetCalendar calendar(0);
    double wallSeconds = 1741997109;
    for (auto _ : state) {
        inputs.wallSeconds = wallSeconds++;
        auto still = toStill(OutputPictures::stage(inputs, calendar, pages));
        benchmark::DoNotOptimize(still);
    }
}
BENCHMARK(BM_StagePicture_Slides)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace velarion::bench

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
