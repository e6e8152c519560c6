// Music apps in the engine: the silent start, its failures, hand-offs
// between music, stop on time, the status poll and simulation.

#include "EngineFixture.h"
#include "FakeStreamApp.h"

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

} // namespace
} // namespace velarion::testing
