#include "GeneratedSound.h"

#include "LiveEngine/WavImage.h"

#include <cmath>
#include <fstream>
#include <numbers>

namespace velarion::testing {

void writeSineWav(const std::filesystem::path& path, const Sine& sine) {
    const auto frames = static_cast<std::size_t>(std::lround(sine.seconds * sine.sampleRate));
    std::vector<std::int16_t> samples;
    samples.reserve(frames * static_cast<std::size_t>(sine.channels));
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double value = sine.amplitude * std::sin(2 * std::numbers::pi * sine.hertz * frame / sine.sampleRate);
        samples.insert(samples.end(), static_cast<std::size_t>(sine.channels),
                       static_cast<std::int16_t>(std::lround(value * 32767)));
    }
    const auto wav = wavImage(sine.sampleRate, sine.channels, samples);
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(wav.data()),
                                                 static_cast<std::streamsize>(wav.size()));
}

} // namespace velarion::testing
