// Decks from a PDF drawn by Qt, from a PowerPoint file LibreOffice wrote
// from a flat ODP with notes and a hidden slide, without LibreOffice, and
// from a PDF that isn't one.

#include "TempFolder.h"

#include "GeneratedSound.h"
#include "LiveEngine/MediaImporter.h"
#include "Platform/Import/DeckImporter.h"
#include "Platform/Import/LibreOfficeExporter.h"
#include "Platform/Import/MediaInspection.h"
#include "RealTimeScheduler.h"

#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace velarion::testing {
namespace {

namespace fs = std::filesystem;

// A landscape page, then a portrait one.
void writePDF(const fs::path& path) {
    QPdfWriter writer(QString::fromStdString(path.string()));
    writer.setPageSize(QPageSize(QSizeF(160, 90), QPageSize::Millimeter));
    QPainter painter(&writer);
    painter.fillRect(QRect(0, 0, 200, 200), Qt::red);
    painter.drawText(QPoint(300, 300), "One");
    writer.setPageSize(QPageSize(QSizeF(90, 160), QPageSize::Millimeter));
    writer.newPage();
    painter.drawText(QPoint(300, 300), "Two");
}

constexpr const char* flatDeck = R"(<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"
 xmlns:presentation="urn:oasis:names:tc:opendocument:xmlns:presentation:1.0"
 xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"
 office:version="1.3" office:mimetype="application/vnd.oasis.opendocument.presentation">
 <office:automatic-styles>
  <style:style style:name="shown" style:family="drawing-page"/>
  <style:style style:name="hidden" style:family="drawing-page">
   <style:drawing-page-properties presentation:visibility="hidden"/>
  </style:style>
 </office:automatic-styles>
 <office:body><office:presentation>%PAGES%</office:presentation></office:body>
</office:document>)";

std::string page(const std::string& title, const std::string& style, const std::string& note) {
    return "<draw:page draw:name=\"" + title + "\" draw:style-name=\"" + style +
           "\"><draw:frame svg:x=\"2cm\" svg:y=\"2cm\" svg:width=\"20cm\" svg:height=\"3cm\"><draw:text-box>"
           "<text:p>" + title + "</text:p></draw:text-box></draw:frame><presentation:notes><draw:frame "
           "presentation:class=\"notes\" svg:x=\"2cm\" svg:y=\"14cm\" svg:width=\"17cm\" svg:height=\"10cm\">"
           "<draw:text-box><text:p>" + note + "</text:p></draw:text-box></draw:frame></presentation:notes></draw:page>";
}

std::vector<std::string> filesUnder(const fs::path& folder) {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(folder, error)) {
        if (entry.is_regular_file()) found.push_back(fs::relative(entry.path(), folder).string());
    }
    return found;
}

TEST(DeckImport, APDFBecomesPagesEveryOne1920Wide) {
    TempFolder temp{"velarion-deck"};
    const ShowPackage package(temp / "Show.velarion");
    writePDF(temp / "Talk.pdf");
    DeckImporter decks(nullptr);
    const std::atomic<bool> cancelled{false};
    const MediaItem item = decks.importDeck(temp / "Talk.pdf", package, cancelled);

    EXPECT_EQ(item.kind, MediaKind::deck);
    EXPECT_EQ(item.name, "Talk");
    EXPECT_EQ(item.fileName, "Decks/Talk.pdf");
    ASSERT_TRUE(item.deck);
    ASSERT_EQ(item.deck->pages.size(), 2u);
    EXPECT_TRUE(item.deck->pages[0].starts_with("Decks/Talk ")) << item.deck->pages[0];
    EXPECT_TRUE(item.deck->pages[1].ends_with("/page-002.png"));
    EXPECT_EQ(item.deck->notes, (std::vector<std::string>{"", ""}));
    EXPECT_EQ(item.deck->source, "PDF");
    const QImage landscape(QString::fromStdString(package.mediaURL(item.deck->pages[0]).string()));
    const QImage portrait(QString::fromStdString(package.mediaURL(item.deck->pages[1]).string()));
    // The writer rounds page sizes to whole points.
    EXPECT_EQ(landscape.width(), 1920);
    EXPECT_NEAR(landscape.height(), 1080, 3);
    EXPECT_EQ(portrait.width(), 1920);
    EXPECT_NEAR(portrait.height(), 3413, 6);
    EXPECT_EQ(landscape.pixelColor(1900, 1000), QColor(Qt::white));
}

TEST(DeckImport, BadDecksFailWithTheirSentenceAndLeaveNothing) {
    TempFolder temp{"velarion-deck"};
    const ShowPackage package(temp / "Show.velarion");
    std::ofstream(temp / "Broken.pdf") << "%PDF-1.4 this is not really a PDF";
    std::ofstream(temp / "Talk.pptx") << "zip";
    std::ofstream(temp / "Keynote.key") << "zip";
    LibreOfficeExporter missing(fs::path("/nonexistent/soffice"));
    DeckImporter decks(&missing);
    const std::atomic<bool> cancelled{false};
    const ImportResult result = mediaImporter::importFiles(
        {temp / "Broken.pdf", temp / "Talk.pptx", temp / "Keynote.key"}, package, {nullptr, &decks}, cancelled);

    const std::string notInstalled = "LibreOffice is not installed. Install it to import this presentation, or "
                                     "export the deck as a PDF from its presentation app and import that PDF.";
    EXPECT_EQ(result.failures, (std::vector<ImportFailure>{{"Broken.pdf", "The presentation couldn't be read as pages."},
                                                           {"Talk.pptx", notInstalled},
                                                           {"Keynote.key", notInstalled}}));
    EXPECT_EQ(filesUnder(package.mediaFolder()), std::vector<std::string>{});
}

// One LibreOffice run writes the PowerPoint file, another exports it.
TEST(DeckImport, APowerPointDeckLeavesItsHiddenSlideOutOfPagesAndNotes) {
    TempFolder temp{"velarion-deck"};
    std::string deck = flatDeck;
    deck.replace(deck.find("%PAGES%"), 7,
                 page("Welcome", "shown", "Say hello") + page("Backup", "hidden", "Only if asked") +
                     page("Thanks", "shown", "Bow &amp; leave"));
    std::ofstream(temp / "Gala.fodp") << deck;
    const std::string command = "soffice -env:UserInstallation=file://" + (temp / "profile").string() +
                                " --headless --norestore --convert-to pptx --outdir '" + temp.path().string() +
                                "' '" + (temp / "Gala.fodp").string() + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    ASSERT_TRUE(fs::exists(temp / "Gala.pptx"));

    const ShowPackage package(temp / "Show.velarion");
    LibreOfficeExporter exporter;
    DeckImporter decks(&exporter);
    const std::atomic<bool> cancelled{false};
    const MediaItem item = decks.importDeck(temp / "Gala.pptx", package, cancelled);

    ASSERT_TRUE(item.deck);
    EXPECT_EQ(item.deck->pages.size(), 2u);
    EXPECT_EQ(item.deck->notes, (std::vector<std::string>{"Say hello", "Bow & leave"}));
    EXPECT_EQ(item.deck->source, "PowerPoint");
    EXPECT_TRUE(fs::exists(package.mediaURL("Decks/Gala.pptx")));
}

// Inspection of generated media of each kind, posters and thumbnails, and a
// waveform against a tone of known level.

// One second of 320×180 at 30 fps, with or without a tone.
void writeVideo(const fs::path& path, bool withSound) {
    std::string command = "gst-launch-1.0 -q videotestsrc num-buffers=30 ! "
                          "video/x-raw,width=320,height=180,framerate=30/1 ! vp8enc deadline=1 ! webmmux name=m ! "
                          "filesink location='" + path.string() + "'";
    if (withSound) command += " audiotestsrc num-buffers=43 ! audioconvert ! opusenc ! m.";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

QImage fromPNG(const std::optional<std::string>& png) {
    if (!png) return {};
    return QImage::fromData(reinterpret_cast<const uchar*>(png->data()), static_cast<int>(png->size()), "PNG");
}

class Inspection : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = new TempFolder("velarion-inspection");
        writeVideo(*folder / "Clip.webm", true);
        writeVideo(*folder / "Silent.webm", false);
        QImage picture(1280, 720, QImage::Format_RGB32);
        picture.fill(Qt::blue);
        picture.save(QString::fromStdString((*folder / "Wide.png").string()));
        writeSineWav(*folder / "Tone.wav", Sine{441, 0.5, 2, 2, 44100});
        std::ofstream(*folder / "Broken.mp4") << "not a movie at all";
    }
    static void TearDownTestSuite() { delete folder; }
    static TempFolder* folder;

    RealTimeScheduler scheduler;
    TempFolder cache{"velarion-inspection-cache"};
    MediaInspection inspection{scheduler, cache.path()};
};
TempFolder* Inspection::folder = nullptr;

TEST_F(Inspection, EachKindTellsItsLengthSizeRateAndSound) {
    struct Row {
        std::string file;
        double seconds;
        std::optional<int> width, height;
        std::optional<float> rate;
        bool sound;
    };
    const std::vector<Row> table = {
        {"Clip.webm", 1.0, 320, 180, 30.0F, true},
        {"Silent.webm", 1.0, 320, 180, 30.0F, false},
        {"Wide.png", 0, 1280, 720, std::nullopt, false},
        {"Tone.wav", 2.0, std::nullopt, std::nullopt, std::nullopt, true},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.file);
        const MediaDetails details = inspection.details(*folder / row.file);
        EXPECT_NEAR(details.duration, row.seconds, 0.05);
        EXPECT_EQ(details.width, row.width);
        EXPECT_EQ(details.height, row.height);
        EXPECT_EQ(details.framesPerSecond, row.rate);
        EXPECT_EQ(details.hasAudio, row.sound);
        EXPECT_EQ(details.fileBytes, static_cast<std::int64_t>(fs::file_size(*folder / row.file)));
    }
    EXPECT_THROW(inspection.details(*folder / "Broken.mp4"), std::runtime_error);
    EXPECT_EQ(inspection.durationSeconds(*folder / "Broken.mp4"), std::nullopt);
}

TEST_F(Inspection, PostersComeFromInsideTheVideoAndThumbnailsFitThePreview) {
    EXPECT_EQ(fromPNG(inspection.posterPNG(*folder / "Clip.webm", 100)).size(), QSize(320, 180));
    EXPECT_EQ(fromPNG(inspection.posterPNG(*folder / "Clip.webm", -1)).size(), QSize(320, 180));
    const QImage thumbnail = fromPNG(inspection.posterPNG(*folder / "Wide.png", 0));
    EXPECT_EQ(thumbnail.size(), QSize(640, 360));
    EXPECT_EQ(thumbnail.pixelColor(10, 10), QColor(Qt::blue));
    EXPECT_EQ(inspection.posterPNG(*folder / "Tone.wav", 0), std::nullopt);
}

TEST_F(Inspection, AWaveformReadsTheToneLevelOnceAndThenFromTheCache) {
    const std::vector<float> peaks = inspection.waveform(*folder / "Tone.wav", 100);
    ASSERT_EQ(peaks.size(), 100u);
    for (const float peak : peaks) EXPECT_NEAR(peak, 0.5, 0.03);
    EXPECT_EQ(inspection.waveform(*folder / "Silent.webm", 10), std::vector<float>(10, 0.0F));

    // A second inspection, as after a restart, reads the peaks from disk.
    MediaInspection later{scheduler, cache.path()};
    std::optional<std::vector<float>> cached;
    later.requestWaveform(*folder / "Tone.wav", 100, [&](std::optional<std::vector<float>> found) { cached = found; });
    for (int turn = 0; turn < 200 && !cached; ++turn) scheduler.runFor(0.01);
    EXPECT_EQ(cached, peaks);
    EXPECT_FALSE(fs::is_empty(cache / "Waveforms"));
}

} // namespace
} // namespace velarion::testing
