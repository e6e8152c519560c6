// Inspection of generated media of each kind, posters and thumbnails, and a
// waveform against a tone of known level.

#include "GeneratedSound.h"
#include "RealTimeScheduler.h"
#include "TempFolder.h"

#include "Platform/Import/MediaInspection.h"

#include <QImage>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace velarion::testing {
namespace {

namespace fs = std::filesystem;

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
