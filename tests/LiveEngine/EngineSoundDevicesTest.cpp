// Sound that moves: devices edited, lost and found again, playlists edited
// while they play, crossfading video loops, effects beside music, and the
// test tone.

#include "EngineFixture.h"
#include "FakeAudioDevices.h"

#include "LiveEngine/TestTone.h"

namespace velarion::testing {
namespace {

class MovingSound : public EngineFixture {
protected:
    Cue& sound(const std::string& name, double seconds) {
        const Uuid item = addItem(name + ".wav", MediaKind::audio, seconds);
        players.soundDurations[path(name + ".wav")] = seconds;
        return add(name, AudioCue{item});
    }
    static std::filesystem::path path(const std::string& file) { return "/shows/Test.velarion/Media/" + file; }
    std::shared_ptr<FakeSoundFilePlayer> player(const std::string& name) const {
        return players.sound(path(name + ".wav"));
    }
    void edit(const std::function<void(Cue&)>& change, const std::string& name) {
        for (std::size_t s = 0; s < show.sections.size(); ++s) {
            auto& cues = show.sections.edit(s).cues;
            for (std::size_t c = 0; c < cues.size(); ++c)
                if (cues[c].name == name) change(cues.edit(c));
        }
        engine->apply(show, {cueNamed(name).id});
    }
    static AudioDevice output(const std::string& id) { return AudioDevice{id, id + " speakers", false}; }
};

TEST_F(MovingSound, EffectsNeverDisplaceMusicAndLevelEditsKeepTheDip) {
    sound("Song", 200);
    sound("Bell", 3);
    start();
    go();
    goLater();
    scheduler.advance(1.2);
    ASSERT_TRUE(runOf("Song")) << "a three-second effect leaves the music alone";
    EXPECT_DOUBLE_EQ(player("Song")->volume(), 1);

    perform(command::SetTalkOver{true});
    scheduler.advance(1.0);
    edit([](Cue& cue) { std::get<AudioCue>(cue.kind).level = 0.8; }, "Song");
    EXPECT_NEAR(player("Song")->volume(), 0.2, 1e-9) << "a quarter of the new level";
}

TEST_F(MovingSound, DevicesFollowEditsAndALostDeviceIsLoggedAndRegained) {
    FakeAudioDevices outputs({output("House"), output("Stage")});
    devices = &outputs;
    show.audio.houseDeviceID = "House";
    sound("Song", 200);
    start();
    outputs.setOnChange([this] { engine->audioDevicesChanged(); });
    go();
    scheduler.runDue(); // the file opened off the main loop
    EXPECT_EQ(player("Song")->device(), "House");

    show.audio.houseDeviceID = "Stage";
    engine->apply(show, {});
    EXPECT_EQ(player("Song")->device(), "Stage") << "the show's house device moved";

    outputs.change({output("House")});
    EXPECT_TRUE(logged("Song moved to the system output — its sound device is gone"));
    outputs.change({output("House")});
    const auto log = logTexts();
    EXPECT_EQ(std::count_if(log.begin(), log.end(),
                            [](const std::string& text) { return text.find("is gone") != std::string::npos; }),
              1)
        << "logged once, not at every change of the list";

    const auto kept = players.sound(path("Song.wav"));
    ASSERT_TRUE(kept) << "the run keeps its player through the loss";
    outputs.change({output("House"), output("Stage")});
    EXPECT_TRUE(logged("Song is back on Stage speakers"));
    EXPECT_EQ(kept->device(), "Stage");
}

TEST_F(MovingSound, APlaylistEditedWhilePlayingKeepsItsSong) {
    std::vector<Uuid> songs;
    for (const char* name : {"A", "B", "C", "D"}) {
        songs.push_back(addItem(std::string(name) + ".wav", MediaKind::audio, 60));
        players.soundDurations[path(std::string(name) + ".wav")] = 60;
    }
    add("Walk-in", PlaylistCue{{songs[0], songs[1], songs[2]}, false, false, 0, 0, 1, AudioBus::house});
    start();
    go();
    scheduler.advance(61);
    ASSERT_EQ(engine->state().music->title, "B.wav");

    edit([&](Cue& cue) { std::get<PlaylistCue>(cue.kind).mediaIDs = {songs[3], songs[1], songs[0]}; }, "Walk-in");
    EXPECT_EQ(engine->state().music->title, "B.wav") << "the song playing goes on";
    scheduler.advance(60.5);
    EXPECT_EQ(engine->state().music->title, "A.wav") << "then the song after it in the new order";

    edit([&](Cue& cue) {
        auto& playlist = std::get<PlaylistCue>(cue.kind);
        playlist.mediaIDs = {songs[2], songs[3]};
        playlist.shuffle = true;
    }, "Walk-in");
    EXPECT_EQ(runOf("Walk-in")->playlistOrder.front(), songs[0]) << "a removed song that plays stays first";
    EXPECT_EQ(runOf("Walk-in")->playlistOrder.size(), 3u);
}

TEST_F(MovingSound, CrossfadingVideoLoopsSwapSurfacesUnderADissolve) {
    players.defaultVideoBehaviour.durationSeconds = 10;
    Cue& loop = video("Loop");
    std::get<VideoCue>(loop.kind).loops = true;
    std::get<VideoCue>(loop.kind).crossfadesLoop = true;
    std::get<VideoCue>(loop.kind).level = 0.8;
    start();
    go();
    scheduler.advance(0.1);
    const auto first = runOf("Loop")->video;
    scheduler.advance(8.0); // the seam is at 8 s, with 2 s of overlap
    const auto second = runOf("Loop")->video;
    ASSERT_NE(first, second);
    EXPECT_TRUE(second->isPlaying());
    EXPECT_EQ(engine->surfaces().size(), 2u) << "both play through the overlap";
    EXPECT_EQ(engine->audienceScene().layers.size(), 2u);
    scheduler.advance(1.0);
    EXPECT_NEAR(second->volume(), 0.4, 0.05);
    EXPECT_NEAR(first->volume(), 0.4, 0.05);
    scheduler.advance(1.1);
    EXPECT_EQ(engine->surfaces().size(), 1u);
    EXPECT_EQ(engine->audienceScene().layers.size(), 1u);
    EXPECT_NEAR(second->volume(), 0.8, 1e-9);
    scheduler.advance(33); // four more seams, the last over at 42 s
    ASSERT_TRUE(runOf("Loop")) << "it loops on, pass after pass";
    EXPECT_EQ(engine->surfaces().size(), 1u);

    engine->shutdown();
    engine.reset();
    players.defaultVideoBehaviour.durationSeconds = 0.5;
    start();
    goLater();
    scheduler.advance(1.0);
    EXPECT_FALSE(runOf("Loop")) << "too short to overlap: it plays once";
}

TEST(TestToneTest, IsTheDescribedToneAndPlaysOnlyOnAPresentDevice) {
    const auto wav = testToneWav();
    ASSERT_EQ(wav.size(), 44u + 35280u * 2);
    EXPECT_EQ(std::string(wav.begin(), wav.begin() + 4), "RIFF");
    const auto sample = [&](int i) {
        return static_cast<std::int16_t>(wav[44 + 2 * i] | wav[45 + 2 * i] << 8);
    };
    int peak = 0;
    for (int i = 0; i < 35280; ++i) peak = std::max(peak, std::abs(static_cast<int>(sample(i))));
    EXPECT_NEAR(peak, 0.18 * 32767, 2);
    EXPECT_EQ(sample(0), 0);
    EXPECT_LT(std::abs(sample(100)), 0.18 * 32767 * 100 / 2000 + 1) << "fades in over 2000 samples";

    VirtualScheduler scheduler;
    FakeMediaPlayers players(scheduler);
    FakeAudioDevices outputs({AudioDevice{"House", "House", true}});
    TestTone tone(players, outputs);
    EXPECT_FALSE(tone.play("Gone"));
    EXPECT_TRUE(players.soundData.empty()) << "nothing is even opened for a missing device";
    ASSERT_TRUE(tone.play("House"));
    const auto first = players.sound("");
    EXPECT_NEAR(first->durationSeconds(), 0.8, 1e-9);
    EXPECT_EQ(first->device(), "House");
    ASSERT_TRUE(tone.play(std::string("system")));
    EXPECT_TRUE(first->isStopped()) << "a new tone stops the one before";
    EXPECT_FALSE(players.sound("")->device());
}

} // namespace
} // namespace velarion::testing
