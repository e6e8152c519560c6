// Trim marks, poster positions, waveform bars, PowerPoint notes and the
// preview player: import and inspection without real media.

#include "FakePlayers.h"
#include "VirtualScheduler.h"

#include "LiveEngine/MediaPreviewPlayer.h"
#include "LiveEngine/MediaTrim.h"
#include "LiveEngine/PowerPointNotes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

namespace velarion::testing {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(MediaTrim, MarksKeepTheShortestTrimAndAnEndMarkMeansToTheEnd) {
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(5, 5.05, std::nullopt), 4.95);
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(-3, std::nullopt, 10), 0);
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(nan, std::nullopt, std::nullopt), 0);
    EXPECT_DOUBLE_EQ(mediaTrim::inPoint(20, std::nullopt, 10), 9.9);
    EXPECT_EQ(mediaTrim::outPoint(10 - 0.0005, 0, 10), std::nullopt);
    EXPECT_EQ(mediaTrim::outPoint(std::nullopt, 0, 10), std::nullopt);
    EXPECT_DOUBLE_EQ(*mediaTrim::outPoint(2, 3, std::nullopt), 3.1);
    EXPECT_DOUBLE_EQ(*mediaTrim::outPoint(4, 0, 10), 4);
}

TEST(MediaTrim, APosterPastTheEndIsTheLastFrameAndANegativeOneTheFirst) {
    EXPECT_DOUBLE_EQ(posterPosition(100, 10), 10 - 1.0 / 30);
    EXPECT_DOUBLE_EQ(posterPosition(-1, 10), 0);
    EXPECT_DOUBLE_EQ(posterPosition(nan, std::nullopt), 0);
    EXPECT_DOUBLE_EQ(posterPosition(3, std::nullopt), 3);
    EXPECT_DOUBLE_EQ(posterPosition(3, 0.01), 0);
}

TEST(MediaTrim, ShortSoundsGetOneSampleABarAndTheLastBarTakesTheRest) {
    WaveformBars bars(500, 0.01); // 80 samples
    std::vector<std::int16_t> samples(600, 0);
    samples[3] = -16384;
    samples[550] = 32767;
    bars.add(samples);
    EXPECT_FLOAT_EQ(bars.bars()[3], 16384.0F / 32767.0F);
    EXPECT_FLOAT_EQ(bars.bars()[498], 0.0F);
    EXPECT_FLOAT_EQ(bars.bars()[499], 1.0F);
}

TEST(PowerPointNotes, NotesFollowShownSlidesWithoutFieldsOrEntities) {
    const std::map<std::string, std::string> parts = {
        {"ppt/presentation.xml", R"(<p:sldIdLst><p:sldId id="256" r:id="rId2"/><p:sldId id="257" r:id="rId3"/>)"
                                 R"(<p:sldId id="258" r:id="rId4"/></p:sldIdLst>)"},
        {"ppt/_rels/presentation.xml.rels",
         R"(<Relationship Id="rId2" Type="x" Target="slides/slide1.xml"/><Relationship Id="rId3" Type="x" )"
         R"(Target="slides/slide2.xml"/><Relationship Id="rId4" Type="x" Target="slides/slide3.xml"/>)"},
        {"ppt/slides/slide1.xml", "<p:sld>"},
        {"ppt/slides/slide2.xml", R"(<p:sld show="0">)"},
        {"ppt/slides/slide3.xml", "<p:sld>"},
        {"ppt/slides/_rels/slide1.xml.rels", R"(<Relationship Target="../notesSlides/notesSlide1.xml"/>)"},
        {"ppt/slides/_rels/slide2.xml.rels", R"(<Relationship Target="../notesSlides/notesSlide2.xml"/>)"},
        {"ppt/slides/_rels/slide3.xml.rels", R"(<Relationship Target="../notesSlides/notesSlide3.xml"/>)"},
        {"ppt/notesSlides/notesSlide1.xml",
         R"(<a:p><a:r><a:t>Thank &amp; </a:t></a:r><a:r><a:t>welcome</a:t></a:r></a:p><a:p></a:p>)"
         R"(<a:p><a:t>&lt;pause&gt;</a:t></a:p>)"},
        {"ppt/notesSlides/notesSlide2.xml", "<a:p><a:t>Hidden</a:t></a:p>"},
        {"ppt/notesSlides/notesSlide3.xml", R"(<a:p><a:fld id="x" type="slidenum"><a:t>3</a:t></a:fld></a:p>)"},
    };
    const auto read = [&](const std::string& name) -> std::optional<std::string> {
        const auto found = parts.find(name);
        return found == parts.end() ? std::nullopt : std::optional<std::string>(found->second);
    };
    EXPECT_EQ(powerPointNotes::notes(read), (std::vector<std::string>{"Thank & welcome\n<pause>", ""}));
    EXPECT_EQ(powerPointNotes::notes([](const std::string&) { return std::nullopt; }), std::nullopt);
}

TEST(PreviewSeekQueue, TwentySeeksDuringOneRunThatSeekAndTheLastOnly) {
    PreviewSeekQueue queue;
    EXPECT_EQ(queue.request({1, false}), (PreviewSeekQueue::Request{1, false}));
    for (int wish = 2; wish <= 21; ++wish) EXPECT_EQ(queue.request({double(wish), wish == 21}), std::nullopt);
    EXPECT_EQ(queue.finished(), (PreviewSeekQueue::Request{21, true}));
    EXPECT_TRUE(queue.isSeeking);
    EXPECT_EQ(queue.finished(), std::nullopt);
    EXPECT_FALSE(queue.isSeeking);
}

TEST(MediaPreviewPlayerTest, AMissingFileSaysSoAndAStaleOpenIsDropped) {
    VirtualScheduler scheduler;
    FakeMediaPlayers players{scheduler};
    MediaPreviewPlayer preview(players, scheduler, nullptr);
    players.missingPaths.insert("/show/Media/Gone.mov");
    preview.load("/show/Media/Gone.mov");
    EXPECT_EQ(preview.error(), MediaPreviewPlayer::missingFile);

    players.soundDurations = {{"/show/Media/A.wav", 12}, {"/show/Media/B.wav", 30}};
    preview.load("/show/Media/A.wav", 12);
    preview.load("/show/Media/B.wav");
    scheduler.runDue();
    EXPECT_TRUE(players.sound("/show/Media/A.wav") == nullptr || players.sound("/show/Media/A.wav")->isStopped());
    EXPECT_EQ(preview.duration(), 30);
    EXPECT_FALSE(preview.soundEnabled());
    EXPECT_EQ(players.sound("/show/Media/B.wav")->volume(), 0); // silent until a device is chosen
}

} // namespace
} // namespace velarion::testing
