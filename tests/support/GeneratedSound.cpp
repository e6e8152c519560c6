#include "GeneratedSound.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <numbers>
#include <vector>

namespace velarion::testing {

namespace {

void put(std::ofstream& out, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.put(static_cast<char>((value >> (8 * i)) & 0xff));
}

} // namespace

void writeSineWav(const std::filesystem::path& path, const Sine& sine) {
    const auto frames = static_cast<std::uint32_t>(std::lround(sine.seconds * sine.sampleRate));
    const std::uint32_t dataBytes = frames * static_cast<std::uint32_t>(sine.channels) * 2;
    std::ofstream out(path, std::ios::binary);
    out << "RIFF";
    put(out, 36 + dataBytes, 4);
    out << "WAVEfmt ";
    put(out, 16, 4);
    put(out, 1, 2);
    put(out, static_cast<std::uint32_t>(sine.channels), 2);
    put(out, static_cast<std::uint32_t>(sine.sampleRate), 4);
    put(out, static_cast<std::uint32_t>(sine.sampleRate * sine.channels * 2), 4);
    put(out, static_cast<std::uint32_t>(sine.channels * 2), 2);
    put(out, 16, 2);
    out << "data";
    put(out, dataBytes, 4);
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
        const double value = sine.amplitude * std::sin(2 * std::numbers::pi * sine.hertz * frame / sine.sampleRate);
        const auto sample = static_cast<std::int16_t>(std::lround(value * 32767));
        for (int channel = 0; channel < sine.channels; ++channel) put(out, static_cast<std::uint16_t>(sample), 2);
    }
}

} // namespace velarion::testing
