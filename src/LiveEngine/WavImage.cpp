#include "LiveEngine/WavImage.h"

namespace velarion {

namespace {

void put(std::vector<std::uint8_t>& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void putTag(std::vector<std::uint8_t>& out, const char* tag) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<std::uint8_t>(tag[i]));
}

} // namespace

std::vector<std::uint8_t> wavImage(int sampleRate, int channels, const std::vector<std::int16_t>& samples) {
    const auto dataBytes = static_cast<std::uint32_t>(samples.size() * 2);
    const auto frameBytes = static_cast<std::uint32_t>(channels * 2);
    std::vector<std::uint8_t> wav;
    wav.reserve(44 + dataBytes);
    putTag(wav, "RIFF");
    put(wav, 36 + dataBytes, 4);
    putTag(wav, "WAVE");
    putTag(wav, "fmt ");
    put(wav, 16, 4);
    put(wav, 1, 2); // PCM
    put(wav, static_cast<std::uint32_t>(channels), 2);
    put(wav, static_cast<std::uint32_t>(sampleRate), 4);
    put(wav, static_cast<std::uint32_t>(sampleRate) * frameBytes, 4);
    put(wav, frameBytes, 2);
    put(wav, 16, 2);
    putTag(wav, "data");
    put(wav, dataBytes, 4);
    for (const std::int16_t sample : samples) put(wav, static_cast<std::uint16_t>(sample), 2);
    return wav;
}

} // namespace velarion
