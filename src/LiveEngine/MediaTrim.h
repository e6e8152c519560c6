#pragma once
// The arithmetic of media marks and pictures: where In and Out marks may
// sit, where a poster frame is taken, and how decoded samples become the
// bars of a waveform.
//
// Thread: pure functions and a plain accumulator; any thread.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace velarion {

namespace mediaTrim {

// The shortest trim that may remain.
constexpr double shortestSeconds = 0.1;

// Clamps an In mark below the Out mark (or the duration), keeping the
// shortest trim; a negative or non-finite value counts as 0.
double inPoint(double value, std::optional<double> outPoint, std::optional<double> duration);
// Clamps an Out mark above the In mark and within the duration. None means
// "to the end": no value, a non-finite one, or one within 1 ms of the end.
std::optional<double> outPoint(std::optional<double> value, double inPoint, std::optional<double> duration);

} // namespace mediaTrim

// The time a poster frame is taken: `requested` when finite and not
// negative, else 0, held one 30 fps frame before a known end.
double posterPosition(double requested, std::optional<double> duration);

// Peaks of a sound decoded as mono 16-bit samples at `sampleRate`: `count`
// bars, each the largest absolute sample that falls in it, 0 to 1.
class WaveformBars {
public:
    static constexpr int sampleRate = 8000;
    WaveformBars(int count, double durationSeconds);
    void add(std::span<const std::int16_t> samples);
    const std::vector<float>& bars() const { return bars_; }

private:
    std::vector<float> bars_;
    std::int64_t samplesPerBar_ = 1;
    std::int64_t index_ = 0;
};

} // namespace velarion
