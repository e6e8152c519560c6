// Sound: hand-offs, dips, talk-over, ends of files, loops and playlists.

#include "EngineFixture.h"
#include "FakeAudioDevices.h"
#include "LiveEngine/TestTone.h"

namespace velarion::testing {
namespace {

class Sound : public EngineFixture {
protected:
    Cue& song(const std::string& name, double seconds, Follow follow = Follow::manual) {
        const Uuid item = addItem(name + ".mp3", MediaKind::audio, seconds);
        players.soundDurations[path(name + ".mp3")] = seconds;
        return add(name, AudioCue{item}, follow);
    }
    static std::filesystem::path path(const std::string& file) {
        return "/shows/Test.velarion/Media/" + file;
    }
    std::shared_ptr<FakeSoundFilePlayer> player(const std::string& file) const {
        return players.sound(path(file));
    }
};

TEST_F(Sound, ANewSongTakesOverInASecondOrCutsWhenAskedTo) {
    song("First", 120);
    song("Second", 120);
    song("Third", 120).musicHandoff = MusicHandoff::cut;
    start();
    go();
    const auto first = player("First.mp3");
    goLater();
    const auto second = player("Second.mp3");
    EXPECT_DOUBLE_EQ(second->volume(), 1) << "the new song starts at its level at once";
    scheduler.advance(0.5);
    EXPECT_NEAR(first->volume(), 0.5, 1e-6);
    scheduler.advance(0.6);
    EXPECT_TRUE(first->isStopped());
    EXPECT_FALSE(runOf("First"));

    goLater();
    scheduler.advance(0.02);
    EXPECT_DOUBLE_EQ(second->volume(), 0) << "a cut";
    EXPECT_EQ(engine->state().music->title, "Third.mp3");
}

TEST_F(Sound, DipAndTalkOverHoldTheMusicDownUntilBothAreGone) {
    song("Music", 300);
    video("Clip");
    std::get<VideoCue>(show.sections.edit(0).cues.edit(1).kind).musicRule = VideoMusicRule::dip;
    players.defaultVideoBehaviour.durationSeconds = 3;
    start();
    go();
    const auto music = player("Music.mp3");
    goLater();
    scheduler.advance(0.1); // the video is ready and starts
    scheduler.advance(1.0);
    EXPECT_NEAR(music->volume(), 0.25, 1e-6);
    perform(command::SetTalkOver{true});
    perform(command::SetTalkOver{true});
    const auto log = logTexts();
    EXPECT_EQ(std::count(log.begin(), log.end(), "Talk over — music dipped"), 1);
    scheduler.advance(3); // the video has ended; the talk-over still dips
    EXPECT_FALSE(runOf("Clip"));
    EXPECT_NEAR(music->volume(), 0.25, 1e-6);
    perform(command::SetTalkOver{false});
    scheduler.advance(0.5);
    EXPECT_NEAR(music->volume(), 0.625, 1e-6);
    scheduler.advance(0.6);
    EXPECT_NEAR(music->volume(), 1, 1e-6);
    EXPECT_FALSE(engine->state().isTalkingOver);
}

TEST_F(Sound, AFileEndsAtItsOutPointAndFadesOnTheWay) {
    Cue& sting = song("Sting", 30);
    std::get<AudioCue>(sting.kind).outPoint = 4;
    std::get<AudioCue>(sting.kind).fadeOut = 1;
    graphic("After", std::nullopt, Follow::afterPrevious);
    start();
    go();
    const auto file = player("Sting.mp3");
    file->levelDecibels = -25;
    scheduler.advance(3.5);
    EXPECT_NEAR(engine->meterLevel(), 0.5, 1e-9);
    EXPECT_LT(file->volume(), 0.6) << "fading over the last second";
    scheduler.advance(0.6);
    EXPECT_FALSE(runOf("Sting"));
    EXPECT_TRUE(runOf("After"));
}

TEST_F(Sound, CrossfadingLoopsOverlapByTheirLength) {
    for (const auto& [seconds, overlap] : {std::pair{0.6, 0.0}, {1.0, 0.3}, {20.0, 2.0}}) {
        SCOPED_TRACE(seconds);
        show = Show{};
        show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
        Cue& loop = song("Loop", seconds);
        std::get<AudioCue>(loop.kind).loops = true;
        std::get<AudioCue>(loop.kind).crossfadesLoop = true;
        start();
        go();
        const std::size_t opened = players.sounds().size();
        scheduler.advance(seconds - overlap + 0.05);
        if (overlap == 0) {
            scheduler.advance(0.2);
            EXPECT_FALSE(runOf("Loop")) << "too short to overlap: it plays once";
        } else {
            EXPECT_EQ(players.sounds().size(), opened + 1);
            ASSERT_TRUE(runOf("Loop"));
            EXPECT_EQ(runOf("Loop")->audioTails.size(), 1u);
            scheduler.advance(overlap);
            EXPECT_TRUE(runOf("Loop")->audioTails.empty());
        }
        engine->shutdown();
        engine.reset();
    }
}

TEST_F(Sound, PlaylistsCrossfadeWithinAThirdAndNeverRepeatASongBackToBack) {
    const Uuid a = addItem("A.mp3", MediaKind::audio, 9);
    const Uuid b = addItem("B.mp3", MediaKind::audio, 9);
    players.soundDurations[path("A.mp3")] = 9;
    players.soundDurations[path("B.mp3")] = 9;
    PlaylistCue walkIn{{a, b}, true, true, 5, 0, 1, AudioBus::house};
    add("Walk-in", walkIn);
    start();
    go();
    scheduler.runDue(); // the first song opens off the main loop
    std::vector<std::string> played;
    for (int i = 0; i < 60; ++i) {
        ASSERT_TRUE(runOf("Walk-in"));
        ASSERT_TRUE(engine->state().music);
        const std::string title = engine->state().music->title;
        if (played.empty() || played.back() != title) played.push_back(title);
        scheduler.advance(0.5);
    }
    EXPECT_GT(played.size(), 3u);
    // Each song starts its crossfade 3 s before its end: 6 s apart.
    EXPECT_NEAR(60 * 0.5 / static_cast<double>(played.size()), 6, 1.5);
    perform(command::SkipTrack{});
    EXPECT_TRUE(logged("Skipped to the next song"));
}

TEST_F(Sound, PlaylistsSkipRemovedSongsOpenLaterOnesAheadAndEndAtOneThatCantOpen) {
    std::vector<Uuid> songs;
    for (const char* name : {"A", "B", "C"}) {
        songs.push_back(addItem(std::string(name) + ".mp3", MediaKind::audio, 4));
        players.soundDurations[path(std::string(name) + ".mp3")] = 4;
    }
    players.missingPaths.insert(path("C.mp3"));
    players.offLoopOpenSeconds = 1; // a slow disk
    songs.insert(songs.begin(), Uuid::random()); // gone from the library
    add("Walk-in", PlaylistCue{songs, false, false, 0, 0, 1, AudioBus::house});
    start();
    go();
    EXPECT_TRUE(logged("Walk-in: a song was removed from the library — skipped"));
    scheduler.advance(1);
    EXPECT_EQ(engine->state().music->title, "A.mp3");
    scheduler.advance(4.5);
    EXPECT_EQ(players.offLoopSoundRequests, (std::vector<std::filesystem::path>{path("A.mp3"), path("B.mp3")}));
    ASSERT_TRUE(runOf("Walk-in")) << "waiting for B, not ended";
    EXPECT_FALSE(runOf("Walk-in")->audio);
    scheduler.advance(0.6);
    EXPECT_EQ(engine->state().music->title, "B.mp3");
    EXPECT_TRUE(players.soundRequests.empty()) << "nothing opens on the main loop";
    scheduler.advance(5);
    EXPECT_TRUE(logged("Walk-in didn't play — the sound file is missing"));
    EXPECT_FALSE(runOf("Walk-in"));
}

// GO never waits for a file to open: the cue sounds once its player is in,
// paused if it was paused meanwhile, and not at all if it was stopped.
TEST_F(Sound, GoOpensTheFileOffTheMainLoop) {
    song("Walk", 60);
    song("Bed", 60).follow = Follow::withPrevious;
    song("Late", 60);
    players.offLoopOpenSeconds = 0.5; // a slow disk
    start();
    go();
    perform(command::Pause{runOf("Bed")->id});
    EXPECT_FALSE(player("Walk.mp3")) << "nothing opened on the main loop";
    scheduler.advance(0.5);
    EXPECT_TRUE(player("Walk.mp3")->isPlaying());
    EXPECT_FALSE(player("Bed.mp3")->isPlaying()) << "paused while it opened";
    EXPECT_TRUE(players.soundRequests.empty());

    goLater();
    perform(command::Stop{runOf("Late")->id});
    scheduler.advance(1);
    EXPECT_TRUE(!player("Late.mp3") || !player("Late.mp3")->isPlaying()) << "stopped while it opened";
    EXPECT_TRUE(player("Walk.mp3")->isPlaying());
}

TEST_F(Sound, APauseOrPanicJustBeforeAVideoLoopSeamStartsNoNewPass) {
    video("Loop");
    auto& loop = std::get<VideoCue>(show.sections.edit(0).cues.edit(0).kind);
    loop.loops = true;
    loop.crossfadesLoop = true;
    players.defaultVideoBehaviour.durationSeconds = 8;
    players.defaultVideoBehaviour.prepareSeconds = 0.5;
    for (const bool panics : {false, true}) {
        SCOPED_TRACE(panics ? "Panic" : "pause");
        start();
        go();
        // Playing from 0.5 s, it prepares its next pass from 6 s for the seam at 6.5 s.
        scheduler.advance(6.2);
        perform(panics ? EngineCommand{command::Panic{}} : EngineCommand{command::PauseAll{}});
        scheduler.advance(1);
        ASSERT_TRUE(runOf("Loop"));
        for (const auto& surface : players.surfaces())
            if (surface && surface != runOf("Loop")->video) {
                EXPECT_EQ(surface->playCount, 0);
            }
        engine->shutdown();
        engine.reset();
    }
}

// Sound that moves: devices edited, lost and found again, playlists edited
// while they play, crossfading video loops, effects beside music, and the
// test tone.
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
