#include "LiveEngine/MediaTrim.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace velarion {

namespace mediaTrim {

double inPoint(double value, std::optional<double> outPoint, std::optional<double> duration) {
    const double limit = outPoint ? *outPoint : duration ? *duration : std::numeric_limits<double>::infinity();
    const double start = (!std::isfinite(value) || value < 0) ? 0 : value;
    return std::min(std::max(limit - shortestSeconds, 0.0), start);
}

std::optional<double> outPoint(std::optional<double> value, double inPoint, std::optional<double> duration) {
    if (!value || !std::isfinite(*value)) return std::nullopt;
    double result = std::max(*value, inPoint + shortestSeconds);
    if (duration) {
        result = std::min(result, *duration);
        if (std::abs(result - *duration) <= 0.001) return std::nullopt;
    }
    return result;
}

} // namespace mediaTrim

double posterPosition(double requested, std::optional<double> duration) {
    const double position = (std::isfinite(requested) && requested >= 0) ? requested : 0;
    if (!duration || !std::isfinite(*duration) || *duration <= 0) return position;
    return std::max(0.0, std::min(position, *duration - 1.0 / 30.0));
}

WaveformBars::WaveformBars(int count, double durationSeconds) : bars_(static_cast<std::size_t>(std::max(count, 0)), 0.0F) {
    const double samples = std::isfinite(durationSeconds) ? std::floor(durationSeconds * sampleRate) : 0;
    if (count > 0 && samples >= 1) samplesPerBar_ = std::max<std::int64_t>(1, static_cast<std::int64_t>(samples) / count);
}

void WaveformBars::add(std::span<const std::int16_t> samples) {
    if (bars_.empty()) return;
    const auto last = static_cast<std::int64_t>(bars_.size()) - 1;
    for (const std::int16_t sample : samples) {
        const std::size_t bar = static_cast<std::size_t>(std::min(index_++ / samplesPerBar_, last));
        const float value = std::min(1.0F, static_cast<float>(std::abs(static_cast<int>(sample))) / 32767.0F);
        if (value > bars_[bar]) bars_[bar] = value;
    }
}

} // namespace velarion
