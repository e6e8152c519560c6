// The engine with real players on a private sound server, in real time:
// playlist songs overlap for their crossfade, and
// a device pulled out mid-song is heard on the system output and logged, and
// a sound server that crashes mid-song ends the cue with a sentence, and a
// video's sound plays on the House output at its level until a song takes over,
// dips the song under it, and moves to the system output when House is pulled out.

#include "FakePictures.h"
#include "GeneratedVideo.h"
#include "FakePlayers.h"
#include "RealTimeScheduler.h"
#include "RecordingOutputManager.h"
#include "ShowBuilder.h"
#include "SoundServerFixture.h"

#include "LiveEngine/LiveEngine.h"
#include "Platform/Sound/GstAudioDevices.h"
#include "Platform/Video/GstVideoSurface.h"

#include <algorithm>

namespace velarion::testing {
namespace {

class EngineSound : public SoundServerFixture {
protected:
    EngineSound() {
        show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
        show.audio.houseDeviceID = "House";
        show.audio.headphonesDeviceID = "Headphones";
        std::filesystem::create_directories(package / "Media");
    }
    ~EngineSound() override {
        if (engine) engine->shutdown();
    }

    Uuid song(const std::string& file, const Sine& tone) {
        writeSineWav(package / "Media" / file, tone);
        return ShowBuilder(show).addItem(file, MediaKind::audio, tone.seconds);
    }
    void add(const std::string& name, CueKind kind) {
        ShowBuilder(show).add(name, std::move(kind));
    }
    void start() {
        engine = std::make_unique<LiveEngine>(show, ShowPackage(package),
                                              EnginePorts{scheduler, outputs, realPlayers, images, cards, slides,
                                                          &devices},
                                              false);
        devices.setOnChange([this] { engine->audioDevicesChanged(); });
        scheduler.runFor(0.05);
    }
    bool logged(const std::string& text) const {
        return std::any_of(engine->history().begin(), engine->history().end(),
                           [&](const HistoryEntry& entry) { return entry.text == text; });
    }

    std::filesystem::path package = folder / "Show.velarion";
    RealTimeScheduler scheduler;
    RecordingOutputManager outputs;
    GstAudioDevices devices{scheduler};
    GstMediaPlayers realPlayers{&devices,
                                [this](const SceneID& id, const std::filesystem::path& path) {
                                    return GstVideoSurface::make(scheduler, &devices, id, path,
                                                                 {.sinkProvidesClock = false});
                                },
                                GstSoundOptions{.sinkProvidesClock = false}};
    FakeImageLoader images;
    FakeTextCards cards;
    FakeSlidePictures slides;
    Show show;
    std::unique_ptr<LiveEngine> engine;
};

TEST_F(EngineSound, ASoundServerCrashMidSongEndsTheCueWithASentence) {
    add("Prelude", AudioCue{song("dropped.wav", {.seconds = 4})});
    start();
    engine->perform(command::Go{});
    scheduler.runFor(0.6);
    ASSERT_TRUE(server()->crashAndRestart());
    scheduler.runFor(0.5);
    const auto failed = std::find_if(engine->history().begin(), engine->history().end(), [](const HistoryEntry& entry) {
        return entry.text.rfind("Prelude didn't play — its sound broke off: ", 0) == 0;
    });
    EXPECT_NE(failed, engine->history().end());
    EXPECT_TRUE(engine->state().running.empty());
}

TEST_F(EngineSound, AVideosSoundPlaysAtItsLevelUntilASongTakesOver) {
    ASSERT_TRUE(writeCodedVideo(package / "Media" / "clip.mkv", {.frames = 40}));
    add("Clip", VideoCue{.mediaID = ShowBuilder(show).addItem("clip.mkv", MediaKind::video, 4.0), .level = 0.5});
    add("Song", AudioCue{.mediaID = song("song.wav", {.hertz = 735, .seconds = 4}), .role = SoundRole::music});
    start();
    auto house = server()->record("House");
    engine->perform(command::Go{});
    scheduler.runFor(1.2);
    ASSERT_EQ(engine->state().running.size(), 1u) << "the video cue is running";
    engine->perform(command::Go{});
    scheduler.runFor(1.8);
    const auto heard = house->stop();

    EXPECT_TRUE(logged("Clip sound faded for Song"));
    const std::size_t window = recordedRate / 10;
    double loudestClip = 0;
    for (std::size_t from = 0; from + window < heard.size() / 2; from += window)
        loudestClip = std::max(loudestClip, pitchAmplitude(heard, from, window, 441));
    EXPECT_NEAR(loudestClip, 0.25, 0.02) << "a 0.5 sine at level 0.5";
    const std::size_t frames = heard.size() / 2;
    ASSERT_GT(frames, static_cast<std::size_t>(recordedRate / 2));
    EXPECT_LT(pitchAmplitude(heard, frames - window * 3, window * 3, 441), 0.005) << "faded for the song";
    EXPECT_GT(pitchAmplitude(heard, frames - window * 3, window * 3, 735), 0.2);
}

TEST_F(EngineSound, AVideoThatDipsPlaysOverTheSongAndTalkOverLeavesItsSoundAlone) {
    ASSERT_TRUE(writeCodedVideo(package / "Media" / "clip.mkv", {.frames = 40}));
    add("Song", AudioCue{.mediaID = song("song.wav", {.hertz = 735, .seconds = 5}), .role = SoundRole::music});
    add("Clip", VideoCue{.mediaID = ShowBuilder(show).addItem("clip.mkv", MediaKind::video, 4.0), .level = 0.5,
                         .musicRule = VideoMusicRule::dip});
    start();
    auto house = server()->record("House");
    engine->perform(command::Go{});
    scheduler.runFor(0.6);
    engine->perform(command::Go{});
    scheduler.runFor(2.4); // the video's start and the dip's one-second fade, on a busy machine
    engine->perform(command::SetTalkOver{true});
    scheduler.runFor(0.8);
    const auto heard = house->stop();
    ASSERT_EQ(engine->state().running.size(), 2u);

    const std::size_t window = recordedRate / 5, frames = heard.size() / 2;
    ASSERT_GT(frames, window * 12);
    // Before talk-over and under it: the song (a 0.5 sine) dipped to a
    // quarter, the clip at its 0.5.
    for (const std::size_t from : {frames - window * 6, frames - window}) {
        EXPECT_NEAR(pitchAmplitude(heard, from, window, 735), 0.125, 0.015) << from;
        EXPECT_NEAR(pitchAmplitude(heard, from, window, 441), 0.25, 0.02) << from;
    }
}

TEST_F(EngineSound, AVideoWhoseDevicePullsOutGoesOnOnTheSystemOutputAndSaysSo) {
    ASSERT_TRUE(writeCodedVideo(package / "Media" / "clip.mkv", {.frames = 40}));
    add("Clip", VideoCue{.mediaID = ShowBuilder(show).addItem("clip.mkv", MediaKind::video, 4.0), .level = 0.5});
    add("Next", AudioCue{.mediaID = song("next.wav", {.hertz = 735, .seconds = 2})});
    start();
    engine->perform(command::Go{});
    scheduler.runFor(0.6);
    auto speakers = server()->record("Speakers");
    ASSERT_TRUE(server()->removeSink("House"));
    scheduler.runFor(1.2);
    const auto heard = speakers->stop();
    EXPECT_TRUE(logged("Clip moved to the system output — its sound device is gone"));
    ASSERT_EQ(engine->state().running.size(), 1u) << "the video plays on";
    const std::size_t window = recordedRate / 5;
    ASSERT_GT(heard.size() / 2, window * 2);
    EXPECT_NEAR(pitchAmplitude(heard, heard.size() / 2 - window, window, 441), 0.25, 0.03) << "heard on the default";
    engine->perform(command::Go{});
    scheduler.runFor(0.3);
    EXPECT_EQ(engine->state().running.size(), 2u) << "the show goes on";
    ASSERT_TRUE(server()->addSink("House"));
}

TEST_F(EngineSound, AVideosStandbyPictureIsItsFrameAtATenthOfASecondFittedWithin960By540) {
    ASSERT_TRUE(writeCodedVideo(package / "Media" / "wide.mkv",
                                {.frames = 5, .width = 1920, .height = 240, .soundAmplitude = 0}));
    add("Wide", VideoCue{.mediaID = ShowBuilder(show).addItem("wide.mkv", MediaKind::video, 0.5)});
    start();
    std::optional<StillImage> picture;
    bool answered = false;
    engine->standbyImage(show.sections[0].cues.back().id, [&](std::optional<StillImage> frame) {
        answered = true;
        picture = std::move(frame);
    });
    for (int wait = 0; wait < 500 && !answered; ++wait) scheduler.runFor(0.01);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width(), 960);
    EXPECT_EQ(picture->height(), 120);
    EXPECT_EQ(frameCode(*picture->pixels()), 1);
}

} // namespace
} // namespace velarion::testing
