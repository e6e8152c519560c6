// A live source received from another process: its picture, its sound at the
// system's level, and its going and coming back with another picture size.
#include "NDITestSupport.h"

#include "Platform/NDI/NDIDiscovery.h"
#include "Platform/NDI/NDIReceiver.h"

#include <algorithm>

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

} // namespace
} // namespace velarion::testing
