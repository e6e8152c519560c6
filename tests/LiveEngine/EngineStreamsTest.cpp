// Music apps in the engine: the silent start, its failures, hand-offs
// between music, stop on time, the status poll and simulation.

#include "EngineFixture.h"
#include "FakeStreamApp.h"
#include "LiveEngine/ProviderPreviewSession.h"
#include "LiveEngine/StreamRemote.h"
#include "LiveEngine/ports/StreamTasks.h"
#include "VirtualScheduler.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace velarion::testing {
namespace {

class Streams : public EngineFixture {
protected:
    Streams() {
        musicApp.app = StreamApp::music;
        StreamRemote remote;
        remote.send = [this](StreamApp app, const StreamCommand& command) { return fake(app).answer(command); };
        remote.isAppRunning = [this](StreamApp app) { return fake(app).running; };
        remote.sleep = [this](double seconds, const StreamCancel& cancel) {
            spotifyApp.clock += seconds;
            musicApp.clock += seconds;
            return !cancel.isCancelled();
        };
        remote.now = [this] { return spotifyApp.clock; };
        ports = std::make_unique<EngineStreams>(EngineStreams{remote, tasks});
        streams = ports.get();
    }
    ~Streams() override {
        if (engine) engine->shutdown(); // while the apps it pauses still exist
    }
    FakeStreamApp& fake(StreamApp app) { return app == StreamApp::spotify ? spotifyApp : musicApp; }
    Cue& track(const std::string& name, StreamApp app, int level = 70) {
        StreamTrackCue song;
        song.reference = app == StreamApp::spotify ? "spotify:track:" + name : "file:///music/" + name + ".ogg";
        song.title = name;
        song.level = level;
        if (app == StreamApp::spotify) return add(name, SpotifyTrack{song});
        return add(name, MusicTrack{song});
    }
    static StreamTrackCue& settings(Cue& cue) { return const_cast<StreamTrackCue&>(*streamTrackOf(cue.kind)); }

    FakeStreamApp spotifyApp;
    FakeStreamApp musicApp;
    InlineStreamTasks tasks;
    std::unique_ptr<EngineStreams> ports;
};

TEST_F(Streams, GoStartsTheSongSilentlyAndRaisesItOnlyOnceConfirmed) {
    track("Walk-in", StreamApp::spotify, 70);
    std::vector<StreamApp> givenWay;
    start();
    engine->onProviderWillStart = [&](StreamApp app) { givenWay.push_back(app); };
    go();
    scheduler.runDue();
    EXPECT_EQ(givenWay, std::vector<StreamApp>{StreamApp::spotify});
    EXPECT_EQ(spotifyApp.volumes, (std::vector<int>{0, 70}));
    EXPECT_EQ(spotifyApp.heard, std::vector<std::string>{"spotify:track:Walk-in@0.0"});
    EXPECT_TRUE(runOf("Walk-in")->streamConfirmed);
}

TEST_F(Streams, AFailedStartEndsTheCueWithTheAppsWordsAndStaysSilent) {
    const struct {
        std::function<void(FakeStreamApp&)> setUp;
        std::string line;
    } cases[] = {
        {[](FakeStreamApp& app) { app.playsInstead = "spotify:track:advert"; },
         "Opener didn't play — Spotify did not confirm the selected song. Its volume remains at zero."},
        {[](FakeStreamApp& app) { app.running = false; }, "Opener didn't play — Spotify isn't running"},
    };
    for (const auto& c : cases) {
        spotifyApp = {};
        c.setUp(spotifyApp);
        show = {};
        show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
        track("Opener", StreamApp::spotify);
        start();
        go();
        scheduler.runDue();
        EXPECT_TRUE(logged(c.line)) << c.line;
        EXPECT_EQ(runOf("Opener"), nullptr);
        EXPECT_TRUE(spotifyApp.heard.empty());
        engine->shutdown();
    }
}

TEST_F(Streams, MusicGivesWayToMusicAcrossTheApps) {
    track("First", StreamApp::music, 60);
    settings(track("Second", StreamApp::spotify, 80)).fadeIn = 2;
    start();
    go();
    scheduler.runDue();
    EXPECT_EQ(musicApp.volume, 60);
    goLater();
    scheduler.runDue();
    // The player fades out over the new song's fade-in along a straight line, then pauses.
    ASSERT_EQ(musicApp.volumes.size(), 2u + 40u);
    EXPECT_EQ(musicApp.volumes[2 + 19], 30);
    EXPECT_EQ(musicApp.volume, 0);
    EXPECT_FALSE(musicApp.playing);
    EXPECT_EQ(spotifyApp.volume, 80);
    EXPECT_EQ(runningNames(), std::vector<std::string>{"Second"});
}

TEST_F(Streams, ATrackStopsOnTimeWithItsFadeAndIsPolledEveryHalfSecond) {
    Cue& cue = track("Intro", StreamApp::spotify, 50);
    settings(cue).playFor = 10;
    settings(cue).fadeOut = 2;
    start();
    go();
    scheduler.advance(1.0);
    const velarion::Run* run = runOf("Intro");
    ASSERT_NE(run, nullptr);
    ASSERT_TRUE(run->streamStatus);
    EXPECT_EQ(run->streamStatus->volume, 50);
    EXPECT_EQ(engine->state().music->source, NowPlayingMusic::Source::spotify);

    const int before = spotifyApp.commands;
    scheduler.advance(5.0); // ten polls
    EXPECT_EQ(spotifyApp.commands - before, 10);
    scheduler.advance(3.0);
    EXPECT_EQ(runOf("Intro"), nullptr);
    EXPECT_EQ(spotifyApp.volume, 0);
    EXPECT_FALSE(spotifyApp.playing);
}

TEST_F(Streams, SpotifyRunningOnIntoAnotherSongIsPaused) {
    track("Anthem", StreamApp::spotify);
    start();
    go();
    scheduler.advance(1.0);
    spotifyApp.reference = "spotify:track:next-in-queue";
    scheduler.advance(2.0);
    EXPECT_TRUE(spotifyApp.playing); // not before four seconds
    scheduler.advance(2.0);
    EXPECT_FALSE(spotifyApp.playing);
}

TEST_F(Streams, WithoutMusicAppsACueCountsItsOwnClock) {
    streams = nullptr;
    settings(track("Bed", StreamApp::spotify)).playFor = 5;
    start();
    go();
    scheduler.runDue();
    EXPECT_EQ(engine->state().running.at(0).detail, "Simulated — music apps are off");
    EXPECT_TRUE(engine->state().music->isSimulated);
    scheduler.advance(5.1);
    EXPECT_TRUE(runningNames().empty());
    EXPECT_EQ(spotifyApp.commands, 0);
}

// The remote alone, against a fake app: the careful start, ramps, and the
// texts and links it reads.
constexpr double infinity = std::numeric_limits<double>::infinity();
const std::string song = "spotify:track:4uLU6hMCjMI75M1A2tKUQC";

struct StartCase {
    std::string name;
    std::string playsInstead;
    double seekLandsOffBy = 0;
    double showsSongAfterSeconds = 0;
    bool running = true;
    double startAt = 0;
    double fadeIn = 0;
    std::string error; // empty: confirmed
};

TEST(StreamRemoteTest, TheCarefulStartIsSilentUntilSongAndPositionAreConfirmed) {
    const std::vector<StartCase> cases = {
        {"plain start", "", 0, 0, true, 0, 0, ""},
        {"song shows late but in time", "", 0, 3, true, 0, 0, ""},
        {"position within 1.4 s", "", 1.4, 0, true, 30, 0, ""},
        {"fade in", "", 0, 0, true, 0, 1, ""},
        {"wrong song", "spotify:track:other", 0, 0, true, 0, 0,
         "Spotify did not confirm the selected song. Its volume remains at zero."},
        {"song never shows", "", 0, 60, true, 0, 0,
         "Spotify did not confirm the selected song. Its volume remains at zero."},
        {"position 1.6 s off", "", 1.6, 0, true, 30, 0,
         "Spotify did not confirm the start position at 30.00 seconds. Its volume remains at zero."},
        {"not running", "", 0, 0, false, 0, 0, "Spotify isn't running"},
        {"endless start", "", 0, 0, true, infinity, 0, "Spotify needs a finite start position"},
        {"endless fade", "", 0, 0, true, 0, NAN, "Spotify needs a finite fade duration"},
    };
    for (const StartCase& c : cases) {
        SCOPED_TRACE(c.name);
        FakeStreamApp app;
        app.playsInstead = c.playsInstead;
        app.seekLandsOffBy = c.seekLandsOffBy;
        app.showsSongAfterSeconds = c.showsSongAfterSeconds;
        app.running = c.running;
        const auto error = app.remote().startTrack(StreamApp::spotify, song, c.startAt, 80, c.fadeIn, {}, {});
        EXPECT_EQ(error ? error->message : "", c.error);
        if (!c.error.empty()) {
            EXPECT_TRUE(app.heard.empty()) << app.heard.front();
            if (c.running && app.commands > 0) {
                EXPECT_EQ(app.volume, 0);
            }
            if (!c.running) {
                EXPECT_EQ(app.commands, 0); // nothing launched or sent
            }
            continue;
        }
        EXPECT_EQ(app.volume, 80);
        ASSERT_FALSE(app.heard.empty());
        for (const std::string& moment : app.heard) EXPECT_EQ(moment.substr(0, song.size()), song);
        EXPECT_EQ(app.volumes.front(), 0);
    }
}

TEST(StreamRemoteTest, AStartThatStopsBeingLiveLeavesTheLevelAtZero) {
    FakeStreamApp app;
    int asked = 0;
    const auto error = app.remote().startTrack(StreamApp::spotify, song, 10, 80, 0, [&] { return ++asked < 3; }, {});
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->cancelled);
    EXPECT_EQ(app.reference, song); // it was told to play, and then given up
    EXPECT_EQ(app.volume, 0);
    EXPECT_TRUE(app.heard.empty());
}

TEST(StreamRemoteTest, ARampIsAStraightLineOfTwentyStepsASecond) {
    FakeStreamApp app;
    ASSERT_FALSE(app.remote().ramp(StreamApp::spotify, 0, 100, 1.0, {}));
    std::vector<int> expected;
    for (int i = 1; i <= 20; ++i) expected.push_back(5 * i);
    EXPECT_EQ(app.volumes, expected);
    EXPECT_NEAR(app.clock, 1.0, 1e-9);

    FakeStreamApp cancelled;
    StreamCancel cancel;
    StreamRemote remote = cancelled.remote();
    remote.sleep = [&](double, const StreamCancel& token) {
        if (cancelled.volumes.size() == 4) token.cancel();
        return !token.isCancelled();
    };
    EXPECT_TRUE(remote.ramp(StreamApp::spotify, 100, 0, 2.0, cancel)->cancelled);
    EXPECT_EQ(cancelled.volume, 90); // left where it was
}

TEST(StreamRemoteTest, StatusTextsAreReadByTheirRules) {
    const struct {
        StreamApp app;
        std::string text;
        std::optional<StreamStatus> status;
    } cases[] = {
        {StreamApp::spotify, "playing\tSong\tArtist\t12.5\t215000\tspotify:track:x\t40",
         StreamStatus{"Song", "Artist", 12.5, 215, true, "spotify:track:x", 40}},
        {StreamApp::music, "paused\tSong\tArtist\t0\t215.0\tfile:///a.ogg\t100",
         StreamStatus{"Song", "Artist", 0, 215, false, "file:///a.ogg", 100}},
        {StreamApp::spotify, "stopped", std::nullopt},
        {StreamApp::spotify, "", std::nullopt},
        {StreamApp::spotify, "playing\tSong\tArtist\t12.5\t215000\tspotify:track:x", std::nullopt},
        {StreamApp::spotify, "playing\tSong\tArtist\tsoon\t215000\tspotify:track:x\t40", std::nullopt},
        {StreamApp::spotify, "playing\tSong\tArtist\t-1\t215000\tspotify:track:x\t40", std::nullopt},
        {StreamApp::spotify, "playing\tSong\tArtist\tinf\t215000\tspotify:track:x\t40", std::nullopt},
        {StreamApp::spotify, "playing\tSong\tArtist\t1\t215000\tspotify:track:x\tloud", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(StreamRemote::parseStatus(c.app, c.text), c.status) << c.text;
}

TEST(StreamRemoteTest, SpotifyLinksOfEveryFormBecomeURIs) {
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {"spotify:track:abc123", "spotify:track:abc123"},
        {"  spotify:album:XYZ \n", "spotify:album:XYZ"},
        {"https://open.spotify.com/track/4uLU6hMCjMI75M1A2tKUQC?si=1a2b", "spotify:track:4uLU6hMCjMI75M1A2tKUQC"},
        {"https://open.spotify.com/intl-de/track/ID9", "spotify:track:ID9"},
        {"https://open.spotify.com/playlist/37i9dQZF1DX#top", "spotify:playlist:37i9dQZF1DX"},
        {"http://OPEN.SPOTIFY.COM:443/album/a1", "spotify:album:a1"},
        {"https://spotify.com/track/a1", "spotify:track:a1"},
        {"https://open.spotify.com.example.net/track/a1", std::nullopt},
        {"https://notspotify.com/track/a1", std::nullopt},
        {"https://open.spotify.com/artist/a1", std::nullopt},
        {"https://open.spotify.com/track/", std::nullopt},
        {"open.spotify.com/track/a1", std::nullopt},
        {"spotify:artist:a1", std::nullopt},
    };
    for (const auto& [text, uri] : cases) EXPECT_EQ(StreamRemote::spotifyURI(text), uri) << text;
    EXPECT_TRUE(StreamRemote::isAlbum("spotify:album:a1"));
    EXPECT_FALSE(StreamRemote::isAlbum("spotify:playlist:a1"));
}

TEST(StreamRemoteTest, PositionsAndWindowsTakeBadNumbersAsZero) {
    EXPECT_EQ(StreamRemote::absolutePosition(5, 30), 35);
    EXPECT_EQ(StreamRemote::absolutePosition(-5, NAN), 0);
    EXPECT_EQ(StreamRemote::absolutePosition(infinity, 12), 12);

    EXPECT_EQ(ProviderPlaybackWindow::make(std::nullopt, 3, 0), std::nullopt);
    EXPECT_EQ(ProviderPlaybackWindow::make(10, 15, 0), (ProviderPlaybackWindow{10, 10}));
    EXPECT_EQ(ProviderPlaybackWindow::make(10, 2, 12), (ProviderPlaybackWindow{0, 0}));
    EXPECT_EQ(ProviderPlaybackWindow::make(10, NAN, 4), (ProviderPlaybackWindow{6, 0}));
}

TEST(ProviderPreviewSessionTest, AWindowShorterThanItsFadeFadesAtOnceFromTheLevelItStarted) {
    FakeStreamApp app;
    StreamRemote remote = app.remote();
    remote.sleep = [](double, const StreamCancel&) { return false; }; // no watch, and one step of the fade
    InlineStreamTasks tasks;
    VirtualScheduler scheduler;
    ProviderPreviewSession preview(remote, tasks, scheduler);
    StreamTrackCue track;
    track.reference = song;
    track.level = 60;
    track.playFor = 10;
    track.fadeOut = 15;
    preview.start(Uuid::random(), StreamApp::spotify, track, {});
    preview.start(Uuid::random(), StreamApp::music, track, {});
    EXPECT_EQ(preview.note(), "Stop the current provider test before testing another app.");
    scheduler.runDue();
    EXPECT_EQ(app.volumes, (std::vector<int>{0, 60, 60}));
    EXPECT_FALSE(app.playing);
}

} // namespace
} // namespace velarion::testing
