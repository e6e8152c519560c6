#include "LiveEngine/TestTone.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velarion {

namespace {

void put16(std::vector<std::uint8_t>& out, std::uint16_t value) {
    out.push_back(static_cast<std::uint8_t>(value & 0xff));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}

void put32(std::vector<std::uint8_t>& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void putTag(std::vector<std::uint8_t>& out, const char* tag) { out.insert(out.end(), tag, tag + 4); }

} // namespace

std::vector<std::uint8_t> testToneWav() {
    constexpr std::uint32_t dataBytes = TestTone::sampleCount * 2;
    std::vector<std::uint8_t> wav;
    wav.reserve(44 + dataBytes);
    putTag(wav, "RIFF");
    put32(wav, 36 + dataBytes);
    putTag(wav, "WAVE");
    putTag(wav, "fmt ");
    put32(wav, 16);
    put16(wav, 1); // PCM
    put16(wav, 1); // mono
    put32(wav, TestTone::sampleRate);
    put32(wav, TestTone::sampleRate * 2); // bytes a second
    put16(wav, 2);                        // bytes a frame
    put16(wav, 16);
    putTag(wav, "data");
    put32(wav, dataBytes);
    for (int i = 0; i < TestTone::sampleCount; ++i) {
        const int fromEdge = std::min(i, TestTone::sampleCount - 1 - i);
        const double envelope = std::min(1.0, static_cast<double>(fromEdge) / TestTone::fadeSamples);
        const double value = TestTone::amplitude * envelope *
                             std::sin(2 * std::numbers::pi * TestTone::frequencyHertz * i / TestTone::sampleRate);
        put16(wav, static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(value * 32767))));
    }
    return wav;
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
