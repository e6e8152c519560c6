#pragma once
// A canonical 16-bit PCM WAV image in memory: the test tone plays one, and
// tools and tests that make sound write one to a file.
//
// Thread: a pure function; any thread.

#include <cstdint>
#include <vector>

namespace velarion {

// `samples` interleaved, `channels` to a frame.
std::vector<std::uint8_t> wavImage(int sampleRate, int channels, const std::vector<std::int16_t>& samples);

} // namespace velarion
