#pragma once
// Sound files made by tests: a sine of a set pitch and level, written as a
// 16-bit WAV, so no recording from outside enters the repository.

#include <filesystem>

namespace velarion::testing {

struct Sine {
    double hertz = 441; // a whole number of cycles in every 1/100 s
    double amplitude = 0.5;
    double seconds = 1;
    int channels = 2;
    int sampleRate = 44100;
};

void writeSineWav(const std::filesystem::path& path, const Sine& sine);

} // namespace velarion::testing
