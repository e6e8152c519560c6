#include "SoundAnalysis.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velarion::testing {

namespace {

std::size_t frameCount(const std::vector<float>& stereo) { return stereo.size() / 2; }

} // namespace

double rms(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t toFrame, int channel) {
    toFrame = std::min(toFrame, frameCount(stereo));
    if (fromFrame >= toFrame) return 0;
    double sum = 0;
    for (std::size_t frame = fromFrame; frame < toFrame; ++frame) {
        const double value = stereo[frame * 2 + static_cast<std::size_t>(channel)];
        sum += value * value;
    }
    return std::sqrt(sum / static_cast<double>(toFrame - fromFrame));
}

double decibels(double amplitude) { return 20 * std::log10(std::max(amplitude, 1e-9)); }

std::vector<double> envelope(const std::vector<float>& stereo, std::size_t windowFrames, int channel) {
    std::vector<double> levels;
    for (std::size_t from = 0; from + windowFrames <= frameCount(stereo); from += windowFrames)
        levels.push_back(rms(stereo, from, from + windowFrames, channel));
    return levels;
}

double pitchAmplitude(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t count, double hertz,
                      int channel) {
    count = std::min(count, frameCount(stereo) - std::min(fromFrame, frameCount(stereo)));
    if (count == 0) return 0;
    const double omega = 2 * std::numbers::pi * hertz / recordedRate;
    const double coefficient = 2 * std::cos(omega);
    double previous = 0, beforePrevious = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double current = stereo[(fromFrame + i) * 2 + static_cast<std::size_t>(channel)] +
                               coefficient * previous - beforePrevious;
        beforePrevious = previous;
        previous = current;
    }
    const double power = previous * previous + beforePrevious * beforePrevious - coefficient * previous * beforePrevious;
    return 2 * std::sqrt(std::max(power, 0.0)) / static_cast<double>(count);
}

std::size_t firstSoundFrame(const std::vector<float>& stereo, float threshold) {
    for (std::size_t frame = 0; frame < frameCount(stereo); ++frame)
        if (std::abs(stereo[frame * 2]) > threshold || std::abs(stereo[frame * 2 + 1]) > threshold) return frame;
    return frameCount(stereo);
}

std::size_t longestQuietRun(const std::vector<float>& stereo, std::size_t fromFrame, std::size_t toFrame,
                            float threshold) {
    std::size_t longest = 0, run = 0;
    for (std::size_t frame = fromFrame; frame < std::min(toFrame, frameCount(stereo)); ++frame) {
        const bool quiet = std::abs(stereo[frame * 2]) < threshold && std::abs(stereo[frame * 2 + 1]) < threshold;
        run = quiet ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

} // namespace velarion::testing
