// The GStreamer player on a private sound server: where the sound goes, how
// fades and loops sound, and what the meter reads.

#include "SoundServerFixture.h"

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

} // namespace
} // namespace velarion::testing
