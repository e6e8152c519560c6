// A live source received from another process: its picture, its sound at the
// system's level, and its going and coming back with another picture size.
#include "NDITestSupport.h"

#include "PrivateSoundServer.h"

#include "Platform/NDI/NDIAudioPlayback.h"
#include "Platform/NDI/NDIDiscovery.h"
#include "Platform/NDI/NDIReceiver.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace velarion::testing {
namespace {

NDIReceiverStatus waitFor(const NDIReceiver& receiver, NDIConnectionPhase phase, int width = 0) {
    NDIReceiverStatus status = receiver.status();
    for (int i = 0; i < 200 && !(status.phase == phase && (width == 0 || status.width == width)); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
        status = receiver.status();
    }
    return status;
}

TEST(NDIInput, AReceiverFollowsItsSourceAwayAndBackWithANewPictureSize) {
    const std::string name = "Camera " + std::to_string(getpid());
    auto sender = startSenderProcess(name, 32, 18, 200);
    const auto announced = sender->readLine();
    ASSERT_TRUE(announced && announced->rfind("sending ", 0) == 0) << sender->transcript();
    const std::string source = announced->substr(8);

    NDIDiscovery discovery;
    const std::vector<NDISource> found = discovery.sources(2);
    EXPECT_TRUE(std::any_of(found.begin(), found.end(),
                            [&](const NDISource& listed) { return listed.name == source && listed.url; }));
    EXPECT_EQ(NDIDiscovery::waitMilliseconds(9), 5000u);
    EXPECT_EQ(NDIDiscovery::waitMilliseconds(-1), 0u);

    NDIReceiver receiver(NDISource{source, std::nullopt});
    NDIReceiverStatus status = waitFor(receiver, NDIConnectionPhase::connected);
    ASSERT_EQ(status.phase, NDIConnectionPhase::connected);
    EXPECT_EQ(status.message, NDIReceiver::videoAndAudioWords);
    EXPECT_EQ(status.width, 32);
    EXPECT_EQ(status.height, 18);
    const auto video = receiver.latestVideo();
    ASSERT_TRUE(video);
    EXPECT_EQ(video->pixelBuffer->bgra[0], 200);
    EXPECT_EQ(video->pixelBuffer->bgra[3], 255);
    std::vector<NDIAudioFrame> sound;
    for (int i = 0; i < 100 && sound.empty(); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        sound = receiver.takeAudio();
    }
    ASSERT_FALSE(sound.empty());
    EXPECT_FLOAT_EQ(sound[0].samples[0], 0.5f * NDIReceiver::levelScale);

    sender.reset(); // killed: the source vanishes without a goodbye
    status = waitFor(receiver, NDIConnectionPhase::disconnected);
    EXPECT_EQ(status.phase, NDIConnectionPhase::disconnected);
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    EXPECT_EQ(receiver.status().message, NDIReceiver::unavailableWords);

    sender = startSenderProcess(name, 64, 36, 90);
    status = waitFor(receiver, NDIConnectionPhase::connected, 64);
    EXPECT_EQ(status.phase, NDIConnectionPhase::connected);
    EXPECT_EQ(status.height, 36);
    EXPECT_EQ(receiver.latestVideo()->pixelBuffer->bgra[0], 90);
}

TEST(NDIInput, ASourceThatNeverAppearsIsUnavailableAfterThreeSeconds) {
    NDIReceiver receiver(NDISource{"NOWHERE (Nothing)", std::nullopt});
    EXPECT_EQ(receiver.status().message, "connecting");
    std::this_thread::sleep_for(std::chrono::milliseconds(3400));
    EXPECT_EQ(receiver.status().phase, NDIConnectionPhase::disconnected);
    EXPECT_EQ(receiver.status().message, NDIReceiver::unavailableWords);
    EXPECT_THROW(NDIReceiver(NDISource{}), NDIError);
}

double rmsOf(const std::vector<float>& stereo, int channel) {
    double sum = 0;
    for (std::size_t i = static_cast<std::size_t>(channel); i < stereo.size(); i += 2) sum += stereo[i] * stereo[i];
    return stereo.empty() ? 0 : std::sqrt(sum / static_cast<double>(stereo.size() / 2));
}

TEST(NDIInput, SoundIsHeardOnTheChosenOutputAtTheCuesLevel) {
    std::string whyNot;
    const auto server = PrivateSoundServer::start(whyNot);
    if (!server) GTEST_SKIP() << "No sound server could start here: " << whyNot;
    NDIAudioPlayback playback(std::string("Headphones"), 0.5);
    auto house = server->record("House");
    auto headphones = server->record("Headphones");
    // A full-scale 440 Hz tone in 10 ms frames, as a receiver hands them on.
    NDIAudioFrame frame;
    frame.sampleRate = 48000, frame.channels = 2, frame.samplesPerChannel = 480;
    frame.samples.resize(960);
    for (int block = 0; block < 150; ++block) {
        for (int i = 0; i < 480; ++i)
            frame.samples[i] = frame.samples[480 + i] =
                static_cast<float>(std::sin(2 * M_PI * 440 * (block * 480 + i) / 48000.0));
        playback.append(frame);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(playback.lastError(), std::nullopt);
    const auto heard = headphones->stop();
    ASSERT_GT(heard.size(), 48000u);
    // The tone's level where it sounds: a late frame on a busy machine leaves
    // gaps and clicks, which neither this nor a 90th percentile notices.
    std::vector<float> sounding;
    for (const float sample : heard)
        if (std::abs(sample) > 0.01f) sounding.push_back(std::abs(sample));
    ASSERT_GT(sounding.size(), 24000u);
    auto at = sounding.begin() + static_cast<long>(sounding.size() * 9 / 10);
    std::nth_element(sounding.begin(), at, sounding.end());
    EXPECT_NEAR(*at, 0.5 * 0.9877, 0.03) << "half level";
    EXPECT_LT(rmsOf(house->stop(), 0), 0.001);
}

} // namespace
} // namespace velarion::testing
