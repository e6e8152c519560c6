// The GStreamer video surface on generated files whose pictures tell their
// frame number, with its sound on the private sound server.

#include "GeneratedSound.h"
#include "GeneratedVideo.h"
#include "RealTimeScheduler.h"
#include "SoundServerFixture.h"

#include "FakePictures.h"
#include "FakePlayers.h"
#include "LiveEngine/LiveEngine.h"
#include "Platform/Gst/GstHandles.h"
#include "Platform/Sound/GstAudioDevices.h"
#include "Platform/Video/GstVideoSurface.h"
#include "RecordingOutputManager.h"
#include "ShowBuilder.h"

#include <gst/gst.h>

#include <algorithm>
#include <cmath>
#include <fstream>

namespace velarion::testing {
namespace {

class VideoSurfaceTest : public SoundServerFixture {
protected:
    static void SetUpTestSuite() {
        SoundServerFixture::SetUpTestSuite();
        media() = std::make_unique<TempFolder>("velarion-video");
        ASSERT_TRUE(writeCodedVideo(coded(), {}));
        writeSineWav(*media() / "sound.wav", {});
        const auto whole = *media() / "whole.mp4";
        ASSERT_TRUE(writeCodedVideo(whole, {.soundAmplitude = 0, .container = "mp4"}));
        std::filesystem::copy_file(whole, *media() / "truncated.mp4");
        std::filesystem::resize_file(*media() / "truncated.mp4", std::filesystem::file_size(whole) / 2);
        std::ofstream(*media() / "notes.txt") << "Not a video, only words.\n";
    }
    static void TearDownTestSuite() { media().reset(); }
    static std::unique_ptr<TempFolder>& media() {
        static std::unique_ptr<TempFolder> folder;
        return folder;
    }
    static std::filesystem::path coded() { return *media() / "coded.mkv"; }

    std::shared_ptr<GstVideoSurface> surface(const std::filesystem::path& path) {
        return GstVideoSurface::make(scheduler, nullptr, Uuid::random(), path, {.sinkProvidesClock = false});
    }
    VideoPreparation prepare(GstVideoSurface& video, double timeoutSeconds = 5) {
        std::optional<VideoPreparation> answer;
        video.prepare(timeoutSeconds, [&](VideoPreparation result) { answer = std::move(result); });
        EXPECT_FALSE(answer) << "the answer comes on the main loop";
        until([&] { return answer.has_value(); }, timeoutSeconds + 1);
        return answer.value_or(VideoSurfaceError{VideoSurfaceError::Case::notReadyInTime, {}});
    }
    bool until(const std::function<bool()>& condition, double seconds = 5) {
        for (double waited = 0; waited < seconds; waited += 0.005) {
            if (condition()) return true;
            scheduler.runFor(0.005);
        }
        return condition();
    }
    int shownCode(const GstVideoSurface& video) {
        const auto frame = video.latestFrame();
        return frame ? frameCode(*frame) : -1;
    }
    // Each new frame's code while the main loop runs for `seconds`.
    std::vector<int> watchFrames(const GstVideoSurface& video, double seconds) {
        std::vector<int> codes;
        std::shared_ptr<const StillPixels> last;
        for (double waited = 0; waited < seconds; waited += 0.005) {
            // Holding the last frame keeps its buffer out of the pool, so a
            // new address is a new frame.
            if (auto frame = video.latestFrame(); frame && frame != last) {
                codes.push_back(frameCode(*frame));
                last = frame;
            }
            scheduler.runFor(0.005);
        }
        return codes;
    }

    RealTimeScheduler scheduler;
};

TEST_F(VideoSurfaceTest, FilesThatCannotPlayFailWithTheirWords) {
    struct Case {
        const char* file;
        VideoSurfaceError::Case error;
        const char* words;
    };
    const Case cases[] = {
        {"sound.wav", VideoSurfaceError::Case::noVideoTrack, "The file has no video picture"},
        {"truncated.mp4", VideoSurfaceError::Case::loadFailed, "This file contains no playable streams."},
        {"gone.mp4", VideoSurfaceError::Case::loadFailed, "The video file can't be opened"},
        {"notes.txt", VideoSurfaceError::Case::loadFailed, "The file isn't a video this computer can read"},
    };
    for (const Case& c : cases) {
        auto video = surface(*media() / c.file);
        const auto result = prepare(*video, 2);
        ASSERT_TRUE(std::holds_alternative<VideoSurfaceError>(result)) << c.file;
        // decodebin sometimes swallows the demuxer's error while it is still
        // plugging it in; the timeout then answers for the broken file.
        if (c.error == VideoSurfaceError::Case::loadFailed && std::string(c.file) == "truncated.mp4" &&
            std::get<VideoSurfaceError>(result).error == VideoSurfaceError::Case::notReadyInTime)
            continue;
        EXPECT_EQ(std::get<VideoSurfaceError>(result).error, c.error) << c.file;
        EXPECT_EQ(std::get<VideoSurfaceError>(result).text(), c.words) << c.file;
        EXPECT_FALSE(video->info()) << c.file;
    }
}

TEST_F(VideoSurfaceTest, AMissingDecoderIsNamed) {
    // Every H.264 decoder leaves the registry for this case; removing a
    // feature also makes decodebin read its list of factories again.
    velarion::gst::ensureInitialized();
    GstRegistry* registry = gst_registry_get();
    std::vector<GstPluginFeature*> hidden;
    // Video decoders only: the decoding bins call themselves decoders too.
    GList* decoders = gst_element_factory_list_get_elements(
        GST_ELEMENT_FACTORY_TYPE_DECODER | GST_ELEMENT_FACTORY_TYPE_MEDIA_VIDEO, GST_RANK_NONE);
    for (GList* item = decoders; item != nullptr; item = item->next) {
        auto* factory = GST_ELEMENT_FACTORY(item->data);
        auto caps = velarion::gst::GstMiniRef<GstCaps>::adopt(gst_caps_from_string("video/x-h264"));
        if (!gst_element_factory_can_sink_any_caps(factory, caps.get())) continue;
        hidden.push_back(GST_PLUGIN_FEATURE(gst_object_ref(factory)));
        gst_registry_remove_feature(registry, hidden.back());
    }
    gst_plugin_feature_list_free(decoders);
    ASSERT_FALSE(hidden.empty()) << "no H.264 decoder to hide";
    auto video = surface(coded());
    const auto result = prepare(*video);
    for (GstPluginFeature* feature : hidden) {
        gst_registry_add_feature(registry, feature); // takes the reference back
    }
    ASSERT_TRUE(std::holds_alternative<VideoSurfaceError>(result));
    const std::string words = std::get<VideoSurfaceError>(result).text();
    EXPECT_EQ(words.rfind("The video can't play: the GStreamer plugin for H.264", 0), 0u) << words;
    EXPECT_TRUE(words.ends_with("decoder isn't installed")) << words;
}

TEST_F(VideoSurfaceTest, PreparesWithItsFactsAndSeeksExactlyToTheAskedFrame) {
    auto video = surface(coded());
    const auto result = prepare(*video);
    ASSERT_TRUE(std::holds_alternative<VideoSurfaceInfo>(result)) << std::get<VideoSurfaceError>(result).text();
    auto info = std::get<VideoSurfaceInfo>(result);
    EXPECT_EQ(video->info(), info);
    EXPECT_NEAR(info.durationSeconds, 2.0, 0.05);
    info.durationSeconds = 2.0;
    EXPECT_EQ(info, (VideoSurfaceInfo{128, 16, 10, 2.0, true}));
    EXPECT_EQ(shownCode(*video), 0) << "the first frame is ready before it plays";
    for (const int frame : {13, 7, 19, 1}) {
        bool done = false;
        video->seek(frame / 10.0, [&] { done = true; });
        ASSERT_TRUE(until([&] { return done; })) << "seek to frame " << frame;
        EXPECT_EQ(shownCode(*video), frame);
        EXPECT_NEAR(video->currentSeconds(), frame / 10.0, 1e-6);
    }
}

TEST_F(VideoSurfaceTest, LoopsWithoutGapOrRepeatAndNeverEnds) {
    auto video = surface(coded());
    ASSERT_TRUE(std::holds_alternative<VideoSurfaceInfo>(prepare(*video)));
    int ends = 0;
    video->setOnEnd([&] { ++ends; });
    video->setLoops(true);
    bool sought = false;
    video->seek(1.5, [&] { sought = true; });
    ASSERT_TRUE(until([&] { return sought; }));
    video->play();
    const auto codes = watchFrames(*video, 1.2);
    ASSERT_GE(codes.size(), 8u);
    for (std::size_t i = 1; i < codes.size(); ++i)
        EXPECT_EQ(codes[i], (codes[i - 1] + 1) % 20) << "after frame " << codes[i - 1];
    EXPECT_NE(std::find(codes.begin(), codes.end(), 0), codes.end()) << "it went round";
    EXPECT_EQ(ends, 0);
    EXPECT_TRUE(video->isPlaying());
}

TEST_F(VideoSurfaceTest, AnEndHoldsTheLastFrameAndIsToldOnceEvenWithTheFileDeleted) {
    std::filesystem::copy_file(coded(), folder / "doomed.mkv");
    auto video = surface(folder / "doomed.mkv");
    ASSERT_TRUE(std::holds_alternative<VideoSurfaceInfo>(prepare(*video)));
    int ends = 0;
    video->setOnEnd([&] { ++ends; });
    video->seek(1.2);
    video->play();
    scheduler.runFor(0.2);
    std::filesystem::remove(folder / "doomed.mkv"); // the open file plays out
    ASSERT_TRUE(until([&] { return ends == 1; }));
    scheduler.runFor(0.2);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(shownCode(*video), 19);
    EXPECT_FALSE(video->isPlaying());
    EXPECT_DOUBLE_EQ(video->currentSeconds(), video->info()->durationSeconds);
    EXPECT_EQ(video->failure(), "");
}

TEST_F(VideoSurfaceTest, SoundPlaysOnTheDeviceAtTheLevelAndTheTapHearsIt) {
    auto video = surface(coded());
    ASSERT_TRUE(std::holds_alternative<VideoSurfaceInfo>(prepare(*video)));
    video->setAudioOutputDeviceUID("House");
    video->setVolume(1.2, false);
    EXPECT_EQ(video->volume(), 1.0) << "clamped";
    video->setVolume(0.5, false);
    std::mutex mutex;
    std::vector<float> tapped;
    double rate = 0;
    video->setAudioSink([&](const VideoAudioBlock& block) {
        std::lock_guard lock(mutex);
        rate = block.sampleRateHz;
        for (std::size_t i = 0; i < block.frameCount; ++i) {
            tapped.push_back(block.channels[0][i]);
            tapped.push_back(block.channels[1][i]);
        }
    });
    auto house = server()->record("House");
    auto headphones = server()->record("Headphones");
    video->play();
    scheduler.runFor(1.2);
    video->setVolume(0.5, true);
    scheduler.runFor(0.5);
    video->setAudioSink({});
    const auto heard = house->stop();
    const auto elsewhere = headphones->stop();

    // A sine of 0.5 at half level: RMS 0.25 / sqrt 2.
    const double expected = 0.25 / std::sqrt(2.0);
    const std::size_t start = firstSoundFrame(heard, 0.01f);
    ASSERT_LT(start + recordedRate / 2, heard.size() / 2);
    EXPECT_NEAR(rms(heard, start + recordedRate / 10, start + recordedRate / 2), expected, expected * 0.05);
    EXPECT_LT(decibels(rms(elsewhere, 0, elsewhere.size() / 2)), -80);

    std::lock_guard lock(mutex);
    EXPECT_EQ(rate, 44100);
    const std::size_t frames = tapped.size() / 2;
    ASSERT_GT(frames, static_cast<std::size_t>(recordedRate));
    EXPECT_NEAR(rms(tapped, recordedRate / 10, recordedRate / 2), expected, expected * 0.02);
    EXPECT_NEAR(pitchAmplitude(tapped, recordedRate / 10, recordedRate / 10, 441), 0.25, 0.01);
    EXPECT_LT(rms(tapped, frames - recordedRate / 10, frames), 1e-6) << "silent when muted";
}

// The engine with real players on a private sound server, in real time:
// playlist songs overlap for their crossfade, and
// a device pulled out mid-song is heard on the system output and logged, and
// a sound server that crashes mid-song ends the cue with a sentence, and a
// video's sound plays on the House output at its level until a song takes over,
// dips the song under it, and moves to the system output when House is pulled out.
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
