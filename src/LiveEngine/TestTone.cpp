#include "LiveEngine/TestTone.h"

#include "LiveEngine/WavImage.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velarion {

std::vector<std::uint8_t> testToneWav() {
    std::vector<std::int16_t> samples(TestTone::sampleCount);
    for (int i = 0; i < TestTone::sampleCount; ++i) {
        const int fromEdge = std::min(i, TestTone::sampleCount - 1 - i);
        const double envelope = std::min(1.0, static_cast<double>(fromEdge) / TestTone::fadeSamples);
        const double value = TestTone::amplitude * envelope *
                             std::sin(2 * std::numbers::pi * TestTone::frequencyHertz * i / TestTone::sampleRate);
        samples[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(std::lround(value * 32767));
    }
    return wavImage(TestTone::sampleRate, 1, samples);
}

TestTone::TestTone(MediaPlayers& players, const AudioDevices& devices)
    : players_(players), devices_(devices) {}

TestTone::~TestTone() { stop(); }

bool TestTone::play(const std::optional<std::string>& deviceUID) {
    stop();
    const bool systemOutput = !deviceUID || *deviceUID == "system";
    if (!systemOutput && !devices_.isPresent(*deviceUID)) return false;
    std::shared_ptr<SoundFilePlayer> player = players_.openSoundData(testToneWav());
    if (!player) return false;
    if (!systemOutput && !player->setDevice(deviceUID)) return false;
    player->setVolume(1);
    player->play();
    playing_ = std::move(player);
    return true;
}

void TestTone::stop() {
    if (playing_) playing_->stop();
    playing_.reset();
}

} // namespace velarion
