#pragma once
// Reading recordings of a sink's monitor: levels over time, a pitch's
// presence, and gaps. Recordings are interleaved stereo at 44100 Hz.

#include <cstddef>
#include <vector>

namespace velarion::testing {

constexpr int recordedRate = 44100;

// Root mean square of one channel over [from, to) frames.
double rms(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t toFrame, int channel = 0);
double decibels(double amplitude);
// RMS of one channel in windows of `windowFrames`.
std::vector<double> envelope(const std::vector<float>& stereo, std::size_t windowFrames, int channel = 0);
// The amplitude of one pitch over [from, from + count) frames (Goertzel).
double pitchAmplitude(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t frameCount,
                      double hertz, int channel = 0);
// The first frame louder than `threshold`, or the frame count.
std::size_t firstSoundFrame(const std::vector<float>& stereo, float threshold);
// The longest run of frames quieter than `threshold` within [from, to).
std::size_t longestQuietRun(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t toFrame,
                            float threshold);

} // namespace velarion::testing
