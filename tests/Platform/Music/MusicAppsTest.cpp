// The music apps for real: MprisRemote over a private session bus against
// the stand-in player, which plays a tone per song into a private sound
// server whose monitor is recorded; and oEmbed from a local HTTP server.

#include "ChildProcess.h"
#include "GeneratedSound.h"
#include "LiveMusicShow.h"
#include "PrivateSessionBus.h"
#include "PrivateSoundServer.h"
#include "ScopedEnvironment.h"
#include "SoundAnalysis.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Live/SpotifyMetadata.h"
#include "LiveEngine/ProviderPreviewSession.h"
#include "LiveEngine/ports/StreamTasks.h"
#include "Platform/Music/MprisRemote.h"
#include "Platform/Music/MusicLibrary.h"
#include "Platform/Music/QtWebRequests.h"

#include <QEventLoop>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <thread>

#include <taglib/fileref.h>
#include <taglib/tag.h>

namespace velarion::testing {
namespace {

// The strength of one tone over a whole recording, 0 to about 0.5.
double toneLevel(const std::vector<float>& stereo, double hertz) {
    return pitchAmplitude(stereo, 0, stereo.size() / 2, hertz);
}

// Confirmations that give up after a second.
StreamRemote quick(StreamRemote remote) {
    remote.songConfirmSeconds = 1;
    remote.positionConfirmSeconds = 1;
    return remote;
}

class MusicApps : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string whyNot;
        sound = PrivateSoundServer::start(whyNot).release();
        if (sound != nullptr) bus = PrivateSessionBus::start(whyNot).release();
        if (bus == nullptr) skipReason = whyNot;
    }
    static void TearDownTestSuite() {
        delete bus;
        delete sound;
    }
    void SetUp() override {
        if (bus == nullptr) GTEST_SKIP() << skipReason;
    }

    // A stand-in player; answers once it owns its name.
    static std::unique_ptr<ChildProcess> standIn(const std::vector<std::string>& arguments) {
        auto player = std::make_unique<ChildProcess>(VELARION_MPRIS_STANDIN, arguments);
        EXPECT_EQ(player->readLine(10), "ready");
        return player;
    }
    static std::unique_ptr<ChildProcess> spotify(std::vector<std::string> more = {}) {
        std::vector<std::string> arguments = {"--name", "spotify", "--identity", "Spotify", "--app-name", "Spotify",
                                              "--ignores-volume"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return standIn(arguments);
    }

    static inline PrivateSoundServer* sound = nullptr;
    static inline PrivateSessionBus* bus = nullptr;
    static inline std::string skipReason;
};

TEST_F(MusicApps, AWrongSongOrPositionIsNeverHeardAndTheRightOneOnlyOnceConfirmed) {
    MprisRemote mpris;
    StreamQueue queue;
    const StreamRemote remote = quick(queue.serial(mpris.remote()));
    auto recording = sound->record("Speakers");
    const struct {
        std::vector<std::string> misbehaviour;
        double startAt;
        std::string error;
    } cases[] = {
        {{"--plays-instead", "spotify:track:f880"}, 0,
         "Spotify did not confirm the selected song. Its volume remains at zero."},
        {{"--seek-off", "3"}, 30,
         "Spotify did not confirm the start position at 30.00 seconds. Its volume remains at zero."},
    };
    for (const auto& c : cases) {
        auto player = spotify(c.misbehaviour);
        const auto error = remote.startTrack(StreamApp::spotify, "spotify:track:f660", c.startAt, 80, 0, {}, {});
        EXPECT_EQ(error ? error->message : "", c.error);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }
    auto player = spotify();
    EXPECT_FALSE(remote.startTrack(StreamApp::spotify, "spotify:track:f440", 12, 80, 0, {}, {}));
    const StreamStatusReply reply = remote.status(StreamApp::spotify);
    ASSERT_TRUE(reply.status);
    EXPECT_EQ(reply.status->reference, "spotify:track:f440");
    EXPECT_NEAR(reply.status->position, 12, 1.5);
    EXPECT_EQ(reply.status->duration, 215);
    EXPECT_EQ(reply.status->volume, 80);
    std::this_thread::sleep_for(std::chrono::milliseconds(2500)); // the monitor's delay
    const std::vector<float> heard = recording->stop();
    EXPECT_GT(toneLevel(heard, 440), 0.02) << "the confirmed song is heard";
    EXPECT_LT(toneLevel(heard, 880), 0.002) << "the wrong song is not";
    EXPECT_LT(toneLevel(heard, 660), 0.002) << "nor the right song at the wrong position";
}

TEST_F(MusicApps, TheMusicPlayerFadesAlongAStraightLineUnderItsOwnName) {
    MprisRemote mpris("rhythmbox");
    StreamQueue queue;
    const StreamRemote remote = queue.serial(mpris.remote());
    EXPECT_EQ(remote.requireRunning(StreamApp::music)->message, "Music player isn't running");
    auto player = standIn({"--name", "rhythmbox", "--identity", "Rhythmbox", "--app-name", "Rhythmbox"});
    auto other = standIn({"--name", "vlc", "--identity", "VLC", "--app-name", "VLC"});
    ASSERT_TRUE(remote.isAppRunning(StreamApp::music));
    EXPECT_EQ(mpris.lastOtherPlayers(),
              (std::vector<std::string>{"org.mpris.MediaPlayer2.rhythmbox", "org.mpris.MediaPlayer2.vlc"}));
    EXPECT_EQ(remote.displayName(StreamApp::music), "Rhythmbox");
    ASSERT_FALSE(remote.ramp(StreamApp::music, 0, 100, 0.5, {}));
    for (int step = 1; step <= 10; ++step) EXPECT_EQ(player->readLine(5), "volume " + std::to_string(step * 10));
}

TEST_F(MusicApps, AnAppThatHangsFailsWithinItsBoundAndTheQueueGoesOn) {
    MprisRemote mpris("vlc", 0.5);
    StreamQueue queue;
    const StreamRemote remote = queue.serial(mpris.remote());
    auto hanging = spotify({"--hang"});
    auto player = standIn({"--name", "vlc", "--identity", "VLC", "--app-name", "VLC"});
    std::optional<StreamError> hung;
    std::thread waiting([&] { hung = remote.command(StreamApp::spotify, streamCommand::Pause{}); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(remote.status(StreamApp::music).error) << "answered after the hung call's bound";
    waiting.join();
    ASSERT_TRUE(hung);
    EXPECT_EQ(hung->message, "Spotify didn't answer within 0.5 seconds");
}

TEST_F(MusicApps, NothingStartsAnAppThatIsNotRunning) {
    // Installed as a service the bus could start on demand.
    const auto launched = bus->servicesFolder() / "launched";
    std::ofstream(bus->servicesFolder() / "spotify.service")
        << "[D-BUS Service]\nName=org.mpris.MediaPlayer2.spotify\nExec=/usr/bin/touch " << launched.string() << "\n";
    MprisRemote mpris;
    EXPECT_EQ(mpris.send(StreamApp::spotify, streamCommand::Pause{}).error.value_or(StreamError{}).message, "Spotify isn't running");
    EXPECT_EQ(quick(mpris.remote()).startTrack(StreamApp::spotify, "spotify:track:f440", 0, 80, 0, {}, {}),
              StreamError{"Spotify isn't running"});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(std::filesystem::exists(launched));
    std::filesystem::remove(bus->servicesFolder() / "spotify.service");
}

TEST_F(MusicApps, AnAppThatQuitsMidSongEndsItsCueWithItsWordsAndTheShowGoesOn) {
    auto player = spotify();
    auto rhythmbox = standIn({"--name", "rhythmbox", "--identity", "Rhythmbox", "--app-name", "Rhythmbox"});
    LiveMusicShow live("rhythmbox");
    live.remote = quick(live.remote);
    live.song("Walk-in", StreamApp::spotify, "spotify:track:f440");
    live.song("Reading", StreamApp::music, "file:///music/Bible Reading.ogg");
    live.start();
    live.engine->perform(command::Go{});
    ASSERT_TRUE(live.runUntil([&] { return live.confirmed("Walk-in"); }, 5));
    player.reset(); // quits mid-song
    EXPECT_TRUE(live.runUntil([&] { return live.runOf("Walk-in") == nullptr; }, 5));
    EXPECT_TRUE(live.logged("Walk-in stopped — Spotify isn't running"));
    live.engine->perform(command::Go{});
    EXPECT_TRUE(live.runUntil([&] { return live.confirmed("Reading"); }, 5));
}

TEST_F(MusicApps, APreviewGivesWayToALiveStartWhichStaysSilentUntilConfirmed) {
    // The live song never confirms: the app plays another in its place.
    auto player = spotify({"--plays-instead", "spotify:track:f440=spotify:track:f880"});
    LiveMusicShow live;
    live.remote = quick(live.remote);
    live.song("Walk-in", StreamApp::spotify, "spotify:track:f440");
    live.start();
    ProviderPreviewSession preview(live.remote, live.tasks, live.scheduler);
    live.engine->onProviderWillStart = [&](StreamApp app) { preview.cancelForLive(app); };
    auto recording = sound->record("Speakers");
    StreamTrackCue audition;
    audition.reference = "spotify:track:f660";
    audition.level = 80;
    audition.fadeIn = 2;
    preview.start(Uuid::random(), StreamApp::spotify, audition, [&](StreamApp) { return live.runOf("Walk-in"); });
    const auto heardLevel = [&] {
        const StreamStatusReply reply = live.remote.status(StreamApp::spotify);
        return reply.status && reply.status->reference == audition.reference ? reply.status->volume : 0;
    };
    ASSERT_TRUE(live.runUntil([&] { return heardLevel() >= 30; }, 5)) << "the preview fades in";
    live.engine->perform(command::Go{});
    const std::string tookOver = "Live playback has taken control of Spotify.";
    EXPECT_EQ(preview.note(), tookOver);
    EXPECT_TRUE(live.runUntil([&] { return live.runOf("Walk-in") == nullptr; }, 5));
    EXPECT_TRUE(live.logged("Walk-in didn't play — Spotify did not confirm the selected song. "
                            "Its volume remains at zero."));
    live.scheduler.runFor(2.5); // the monitor's delay, and time for any stray step of the preview
    EXPECT_EQ(preview.note(), tookOver);
    const std::vector<float> heard = recording->stop();
    EXPECT_LT(toneLevel(heard, 880) * 20, toneLevel(heard, 660)) << "the preview was heard, the unconfirmed song never";
}

TEST(MusicLibrary, SongsAreFoundByTagsAndNamesAndARescanRereadsOnlyWhatChanged) {
    TempFolder folder("velarion-library");
    const auto write = [&](const std::filesystem::path& relative, std::array<const char*, 3> tags) {
        std::filesystem::create_directories((folder / relative).parent_path());
        writeSineWav(folder / relative, Sine{441, 0.5, 0.01});
        TagLib::FileRef file((folder / relative).c_str());
        file.tag()->setTitle(TagLib::String(tags[0], TagLib::String::UTF8));
        file.tag()->setArtist(TagLib::String(tags[1], TagLib::String::UTF8));
        file.tag()->setAlbum(TagLib::String(tags[2], TagLib::String::UTF8));
        ASSERT_TRUE(file.save());
    };
    write("a1.wav", {"Amazing Grace", "Choir of St Mary", "Hymns Vol 2"});
    write("Band/Live Album/03 intro.wav", {"", "", ""});
    VirtualScheduler clock;
    MusicLibrary library(clock, folder.path());
    const auto titles = [&](const std::string& query) {
        std::vector<std::string> names;
        bool done = false;
        library.searchMusicLibrary(query, [&](std::vector<StreamTrackResult> songs) {
            for (const StreamTrackResult& song : songs) names.push_back(song.title + " / " + song.artist);
            done = true;
        });
        for (int i = 0; i < 1000 && !done; ++i, clock.runDue()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return names;
    };
    using Titles = std::vector<std::string>;
    const Titles grace = {"Amazing Grace / Choir of St Mary"};
    const std::pair<std::string, Titles> cases[] = {
        {"grace", grace}, {"ST MARY", grace}, {"hymns vol", grace}, {"a1.wav", grace},
        {"live album intro", {"03 intro / Band"}}, {"grace band", {}}, {"  ", {}}};
    for (const auto& [query, found] : cases) EXPECT_EQ(titles(query), found) << query;
    EXPECT_EQ(library.tagReads(), 2u);

    write("a1.wav", {"Be Thou My Vision", "Choir of St Mary", "Hymns Vol 2"});
    std::filesystem::last_write_time(folder / "a1.wav", std::filesystem::file_time_type::clock::now() +
                                                              std::chrono::seconds(5));
    std::filesystem::remove_all(folder / "Band");
    EXPECT_EQ(titles("vision"), Titles{}) << "the listing is fresh for a while";
    clock.advance(MusicLibrary::rescanSeconds + 1);
    EXPECT_EQ(titles("vision"), Titles{"Be Thou My Vision / Choir of St Mary"});
    EXPECT_EQ(titles("intro"), Titles{});
    EXPECT_EQ(library.tagReads(), 3u);
}

TEST_F(MusicApps, OEmbedNamesComeFromALocalServer) {
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QByteArray asked;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        QTcpSocket* client = server.nextPendingConnection();
        QObject::connect(client, &QTcpSocket::readyRead, [&, client] {
            asked += client->readAll();
            if (!asked.contains("\r\n\r\n")) return;
            const QByteArray body = R"({"title":"Stand-in Song","type":"rich"})";
            client->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                          QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
            client->disconnectFromHost();
        });
    });
    const std::string base = "http://127.0.0.1:" + std::to_string(server.serverPort());
    const ScopedEnvironment override("VELARION_SPOTIFY_OEMBED_BASE", base + "/");
    QtWebRequests web(5);
    std::vector<WebAnswer> answers;
    web.get(*spotifyMetadata::oEmbedAddress(spotifyMetadata::baseAddress(), "spotify:track:abc"),
            [&](WebAnswer answer) { answers.push_back(answer); });
    QTcpServer gone; // a port nobody listens on any more
    ASSERT_TRUE(gone.listen(QHostAddress::LocalHost));
    const std::string nobody = "http://127.0.0.1:" + std::to_string(gone.serverPort()) + "/oembed";
    gone.close();
    web.get(nobody, [&](WebAnswer answer) { answers.push_back(answer); });
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (answers.size() == 2) loop.quit();
    });
    poll.start(10);
    QTimer::singleShot(8000, &loop, &QEventLoop::quit);
    loop.exec();
    ASSERT_EQ(answers.size(), 2u);
    std::sort(answers.begin(), answers.end(), [](const auto& a, const auto& b) { return a.status > b.status; });
    EXPECT_TRUE(asked.startsWith("GET /oembed?url=https%3A%2F%2Fopen.spotify.com%2Ftrack%2Fabc "));
    EXPECT_EQ(spotifyMetadata::parseTitle(answers[0].body), "Stand-in Song");
    EXPECT_FALSE(answers[1].error.empty()) << "no server: a reason, no title";
}

} // namespace
} // namespace velarion::testing
