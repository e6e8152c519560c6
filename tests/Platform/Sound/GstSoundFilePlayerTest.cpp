// The GStreamer player on a private sound server: where the sound goes, how
// fades and loops sound, what the meter reads, and how it fails.

#include "ChildProcess.h"
#include "LiveEngine/TestTone.h"
#include "Platform/Sound/GstAudioDevices.h"
#include "RealTimeScheduler.h"
#include "SoundServerFixture.h"

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velarion::testing {
namespace {

class SoundPlayer : public SoundServerFixture {};

TEST_F(SoundPlayer, PlaysOnTheChosenDeviceOnly) {
    auto player = players.openSound(sine("tone.wav", {.seconds = 1.5}));
    ASSERT_TRUE(player) << players.lastFailure();
    EXPECT_NEAR(player->durationSeconds(), 1.5, 0.01);
    // Moved after it was prepared on the system output, as the engine does.
    ASSERT_TRUE(player->setDevice("Headphones"));
    auto house = server()->record("House");
    auto headphones = server()->record("Headphones");
    wait(0.2);
    player->play();
    wait(1.0);
    EXPECT_TRUE(player->isPlaying());
    const auto heardOnHouse = house->stop();
    const auto heardOnHeadphones = headphones->stop();
    EXPECT_GT(decibels(rms(heardOnHeadphones, 0, heardOnHeadphones.size())), -20);
    EXPECT_LT(decibels(rms(heardOnHouse, 0, heardOnHouse.size())), -80);
    wait(0.7);
    EXPECT_FALSE(player->isPlaying()) << "a file that played out has ended";
}

// The level of each 10 ms of a recording, as a share of its loudest second.
std::vector<double> relativeEnvelope(const std::vector<float>& heard) {
    std::vector<double> levels = envelope(heard, recordedRate / 100);
    const std::size_t start = firstSoundFrame(heard, 0.01f) / (recordedRate / 100);
    const double steady = rms(heard, start * (recordedRate / 100) + recordedRate / 10,
                              start * (recordedRate / 100) + recordedRate / 2);
    for (double& level : levels) level /= steady;
    return levels;
}

TEST_F(SoundPlayer, AFadeFollowsAStraightLine) {
    auto player = players.openSound(sine("long.wav", {.seconds = 5}));
    ASSERT_TRUE(player) << players.lastFailure();
    ASSERT_TRUE(player->setDevice("House"));
    auto house = server()->record("House");
    player->play();
    wait(1.0);
    player->setVolume(0, 2.0);
    EXPECT_NEAR(player->volume(), 1.0, 0.05);
    wait(2.6);
    EXPECT_NEAR(player->volume(), 0.0, 1e-9);
    const auto levels = relativeEnvelope(house->stop());

    // The fade's windows, between 90 % and 10 %, lie on one straight line.
    std::vector<std::pair<double, double>> fading;
    for (std::size_t i = 0; i < levels.size(); ++i)
        if (levels[i] < 0.9 && levels[i] > 0.1) fading.emplace_back(i * 0.01, levels[i]);
    ASSERT_GT(fading.size(), 100u);
    double sumT = 0, sumL = 0, sumTT = 0, sumTL = 0;
    for (const auto& [t, level] : fading) {
        sumT += t;
        sumL += level;
        sumTT += t * t;
        sumTL += t * level;
    }
    const double n = static_cast<double>(fading.size());
    const double slope = (n * sumTL - sumT * sumL) / (n * sumTT - sumT * sumT);
    const double intercept = (sumL - slope * sumT) / n;
    EXPECT_NEAR(slope, -0.5, 0.025) << "from full to silence in 2 s, within 5 %";
    for (const auto& [t, level] : fading) EXPECT_NEAR(level, intercept + slope * t, 0.05) << "at " << t << " s";
    EXPECT_LT(levels.back(), 0.001) << "silent after the fade";
}

TEST_F(SoundPlayer, ALoopJoinsWithoutAGap) {
    // 441 Hz fits a whole number of cycles into the file: a true loop.
    auto player = players.openSound(sine("loop.wav", {.seconds = 0.5}));
    ASSERT_TRUE(player) << players.lastFailure();
    ASSERT_TRUE(player->setDevice("House"));
    player->setLoopCount(-1);
    player->setCurrentSeconds(0);
    auto house = server()->record("House");
    player->play();
    wait(2.2);
    EXPECT_TRUE(player->isPlaying());
    const auto heard = house->stop();
    const std::size_t start = firstSoundFrame(heard, 0.01f);
    const std::size_t end = heard.size() / 2 - recordedRate / 10;
    ASSERT_GT(end, start + recordedRate * 3 / 2) << "at least three seams were heard";
    // Quiet only where the sine crosses zero; a buffer is 10 ms.
    EXPECT_LT(longestQuietRun(heard, start, end, 0.005f), recordedRate / 1000u);
    const auto levels = envelope(heard, recordedRate / 100);
    const double steady = rms(heard, start, end);
    for (std::size_t i = start / (recordedRate / 100) + 1; i < end / (recordedRate / 100); ++i)
        EXPECT_NEAR(levels[i] / steady, 1.0, 0.05) << "at " << i * 10 << " ms";
}

TEST_F(SoundPlayer, TheMeterReadsWhatIsHeard) {
    auto player = players.openSound(sine("meter.wav", {.amplitude = 0.25, .seconds = 3}));
    ASSERT_TRUE(player) << players.lastFailure();
    ASSERT_TRUE(player->setDevice("House"));
    auto house = server()->record("House");
    player->play();
    wait(1.5);
    player->updateMeters();
    const double metered = player->averagePowerDecibels(0);
    const auto heard = house->stop();
    const std::size_t start = firstSoundFrame(heard, 0.01f);
    const double recorded = decibels(rms(heard, start + recordedRate / 5, heard.size() / 2 - recordedRate / 10));
    EXPECT_NEAR(metered, recorded, 2.0);
    EXPECT_NEAR(recorded, decibels(0.25 / std::sqrt(2.0)), 1.0) << "the recording itself is right";
    player->stop();
    EXPECT_EQ(player->averagePowerDecibels(0), -160) << "a stopped player meters silence";
}

TEST_F(SoundPlayer, AFileThatNeverDeliversTimesOut) {
    const auto stalled = folder / "stalled.wav";
    ASSERT_EQ(mkfifo(stalled.c_str(), 0600), 0);
    // Held open for writing and never written: the player's reads wait.
    const int writer = ::open(stalled.c_str(), O_RDWR);
    ASSERT_GE(writer, 0);
    GstMediaPlayers quick{nullptr, {}, GstSoundOptions{.sinkProvidesClock = false, .prepareTimeoutSeconds = 0.5}};
    EXPECT_FALSE(quick.openSound(stalled));
    EXPECT_EQ(quick.lastFailure(), "it took too long to open");
    ::close(writer); // the read ends, so the pipeline can be taken down
}

TEST_F(SoundPlayer, APlayerLetGoMidFadeIsHeardToSilenceAndTakenDown) {
    auto player = players.openSound(sine("fading.wav", {.seconds = 4}));
    ASSERT_TRUE(player) << players.lastFailure();
    ASSERT_TRUE(player->setDevice("House"));
    auto house = server()->record("House");
    player->play();
    wait(0.5);
    player->setVolume(0, 1.0);
    wait(0.2);
    player.reset(); // as the engine lets go of a cue fading out
    wait(1.5);
    const auto levels = relativeEnvelope(house->stop());
    const std::size_t start = std::find_if(levels.begin(), levels.end(), [](double l) { return l > 0.5; }) -
                              levels.begin();
    ASSERT_LT(start + 150, levels.size());
    // Let go at 0.7 s into a fade from 0.5 s to 1.5 s: at 1.0 s it is still
    // heard at about half, and after 1.6 s nothing is.
    EXPECT_GT(levels[start + 100], 0.3) << "the fade was heard on after the player went";
    for (std::size_t i = start + 160; i < levels.size(); ++i) EXPECT_LT(levels[i], 0.01) << "at " << i * 10 << " ms";
}

TEST_F(SoundPlayer, AProgramQuitsWhileSoundPlays) {
    ChildProcess program(VELARION_QUIT_WHILE_PLAYING, {sine("quit.wav", {.seconds = 3}).string()});
    EXPECT_EQ(program.readLine(10), "playing");
    // A hang in teardown is caught by the test's time limit.
    EXPECT_EQ(program.wait(), 0) << program.transcript();
}

// The output list on a private sound server, and the test tone played
// through real players.
class SoundOutputs : public SoundServerFixture {
protected:
    static std::vector<std::string> ids(const std::vector<AudioDevice>& outputs) {
        std::vector<std::string> names;
        for (const AudioDevice& output : outputs) names.push_back(output.id);
        std::sort(names.begin(), names.end());
        return names;
    }
    RealTimeScheduler scheduler;
};

TEST_F(SoundOutputs, ListsTheServersOutputsAndNoticesOneGoing) {
    GstAudioDevices devices(scheduler);
    EXPECT_EQ(ids(devices.outputs()), (std::vector<std::string>{"Headphones", "House", "Speakers"}));
    EXPECT_EQ(devices.name("House"), "House-desk") << "the description, not the id";
    const auto outputs = devices.outputs();
    const auto defaults = std::count_if(outputs.begin(), outputs.end(), [](const AudioDevice& output) {
        return output.isDefault;
    });
    EXPECT_EQ(defaults, 1);
    EXPECT_TRUE(std::find_if(outputs.begin(), outputs.end(), [](const AudioDevice& output) {
                    return output.id == "Speakers";
                })->isDefault);

    int changes = 0;
    devices.setOnChange([&] { ++changes; });
    ASSERT_TRUE(server()->removeSink("Headphones"));
    for (int i = 0; i < 40 && changes == 0; ++i) scheduler.runFor(0.05);
    EXPECT_GE(changes, 1) << "the change reaches the main loop";
    EXPECT_FALSE(devices.isPresent("Headphones"));
    EXPECT_TRUE(devices.isPresent("House"));
    ASSERT_TRUE(server()->addSink("Headphones"));
    for (int i = 0; i < 40 && !devices.isPresent("Headphones"); ++i) scheduler.runFor(0.05);
    EXPECT_TRUE(devices.isPresent("Headphones")) << "and one coming back";
}

} // namespace
} // namespace velarion::testing
