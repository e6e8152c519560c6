// Import and inspection on the real parts:
//
// - Import/hundredFiles: 100 files of 1 MB each into a package through the
//   application model (copy thread, progress, the items added on the main
//   loop). Counters: MB/s, and the longest main-loop turn in ms (aim ≤ 16).
// - Import/cpHundredFiles: the same files with `cp`, for the copy rate.
// - Import/waveformFiveMinutesStereo: 500 peaks of a 5-minute 44.1 kHz
//   stereo WAV, details and decode, no cache (aim ≤ 300 ms).
// - Import/pdfPageAt1920: one PDF page drawn 1920 pixels wide and encoded.
// - Import/pptxTwentySlides: a 20-slide PowerPoint deck to pages through
//   LibreOffice headless and poppler.

#include "BenchAppDoubles.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "GeneratedSound.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/AppModel.h"
#include "Live/ThreadShowWriter.h"
#include "Platform/Import/DeckImporter.h"
#include "Platform/Import/LibreOfficeExporter.h"
#include "Platform/Import/MediaInspection.h"

#include <QGuiApplication>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace velarion::bench {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::vector<fs::path> makeFiles(const fs::path& folder, int count, std::size_t bytes) {
    fs::create_directories(folder);
    std::vector<fs::path> files;
    const std::string content(bytes, 'v');
    for (int index = 0; index < count; ++index) {
        files.push_back(folder / ("Clip " + std::to_string(index) + ".mp4"));
        std::ofstream(files.back(), std::ios::binary) << content;
    }
    return files;
}

struct BenchApp : BenchAppDoubles {
    BenchApp() : BenchAppDoubles("velarion-import-bench") {}
    std::unique_ptr<AppModel> model = std::make_unique<AppModel>(ports());
};

double processCpuSeconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void hundredFiles(benchmark::State& state) {
    BenchApp app;
    const std::vector<fs::path> files = makeFiles(app.home / "in", 100, 1 << 20);
    double longest = 0;
    for (auto _ : state) {
        app.model->newShow(ShowTemplate::blank, "Import");
        app.model->importFiles(files, true);
        while (app.model->isImporting()) {
            const auto start = Clock::now();
            app.scheduler.runDue();
            longest = std::max(longest, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        if (app.model->show()->library.size() != 100) state.SkipWithError("not every file came in");
    }
    state.counters["MB/s"] = benchmark::Counter(100.0 * static_cast<double>(state.iterations()),
                                                benchmark::Counter::kIsRate);
    state.counters["longestMainLoopMs"] = longest;
}

void cpHundredFiles(benchmark::State& state) {
    testing::TempFolder temp{"velarion-cp-bench"};
    makeFiles(temp / "in", 100, 1 << 20);
    int run = 0;
    for (auto _ : state) {
        const std::string command =
            "cp -r '" + (temp / "in").string() + "' '" + (temp / ("out" + std::to_string(run++))).string() + "'";
        if (std::system(command.c_str()) != 0) state.SkipWithError("cp failed");
    }
    state.counters["MB/s"] = benchmark::Counter(100.0 * static_cast<double>(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

void waveformFiveMinutesStereo(benchmark::State& state) {
    testing::TempFolder temp{"velarion-waveform-bench"};
    testing::writeSineWav(temp / "Song.wav", testing::Sine{441, 0.5, 300, 2, 44100});
    testing::VirtualScheduler scheduler;
    int run = 0;
    double cpuSeconds = 0;
    for (auto _ : state) {
        // A fresh cache each time: the decode is what is measured.
        MediaInspection inspection(scheduler, temp / ("cache" + std::to_string(run++)));
        const double before = processCpuSeconds();
        benchmark::DoNotOptimize(inspection.waveform(temp / "Song.wav", 500));
        cpuSeconds += processCpuSeconds() - before;
    }
    // All threads' work, GStreamer's included: what an idle machine would wait.
    state.counters["processCpuMs"] = 1000 * cpuSeconds / static_cast<double>(state.iterations());
}

std::string pdfBytes(const fs::path& path) {
    {
        QPdfWriter writer(QString::fromStdString(path.string()));
        writer.setPageSize(QPageSize(QSizeF(254, 142.875), QPageSize::Millimeter));
        QPainter painter(&writer);
        painter.setFont(QFont("Roboto", 48));
        for (int line = 0; line < 12; ++line) painter.drawText(QPoint(400, 400 + line * 400), "Welcome to the gala evening");
        painter.fillRect(QRect(3000, 3000, 1500, 1000), Qt::darkCyan);
    }
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void pdfPageAt1920(benchmark::State& state) {
    testing::TempFolder temp{"velarion-pdf-bench"};
    const std::string pdf = pdfBytes(temp / "Talk.pdf");
    for (auto _ : state) {
        if (!DeckImporter::pngData(pdf, 0)) state.SkipWithError("no page");
    }
}

void pptxTwentySlides(benchmark::State& state) {
    testing::TempFolder temp{"velarion-pptx-bench"};
    std::string pages;
    for (int slide = 1; slide <= 20; ++slide) {
        pages += "<draw:page draw:name=\"S" + std::to_string(slide) +
                 "\"><draw:frame svg:x=\"2cm\" svg:y=\"2cm\" svg:width=\"20cm\" svg:height=\"3cm\"><draw:text-box>"
                 "<text:p>Slide " + std::to_string(slide) + "</text:p></draw:text-box></draw:frame></draw:page>";
    }
    std::ofstream(temp / "Deck.fodp")
        << "<?xml version=\"1.0\"?><office:document xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\" "
           "xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" "
           "xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\" "
           "xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\" office:version=\"1.3\" "
           "office:mimetype=\"application/vnd.oasis.opendocument.presentation\"><office:body><office:presentation>"
        << pages << "</office:presentation></office:body></office:document>";
    const std::string command = "soffice -env:UserInstallation=file://" + (temp / "profile").string() +
                                " --headless --convert-to pptx --outdir '" + temp.path().string() + "' '" +
                                (temp / "Deck.fodp").string() + "' >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) return state.SkipWithError("LibreOffice couldn't write the deck");
    LibreOfficeExporter exporter;
    DeckImporter decks(&exporter);
    const std::atomic<bool> cancelled{false};
    int run = 0;
    for (auto _ : state) {
        const ShowPackage package(temp / ("Show" + std::to_string(run++) + ".velarion"));
        if (decks.importDeck(temp / "Deck.pptx", package, cancelled).deck->pages.size() != 20) {
            state.SkipWithError("not 20 pages");
        }
    }
}

BENCHMARK(hundredFiles)->Name("Import/hundredFiles")->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(cpHundredFiles)->Name("Import/cpHundredFiles")->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();
BENCHMARK(waveformFiveMinutesStereo)->Name("Import/waveformFiveMinutesStereo")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(pdfPageAt1920)->Name("Import/pdfPageAt1920")->Unit(benchmark::kMillisecond);
BENCHMARK(pptxTwentySlides)->Name("Import/pptxTwentySlides")->Unit(benchmark::kSecond)->Iterations(1);

} // namespace
} // namespace velarion::bench

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
