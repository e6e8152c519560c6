#include "LiveEngine/NDISoundMix.h"

#include <algorithm>
#include <cmath>

namespace velarion {

void NDISoundMix::write(const SceneID& surfaceID, const VideoAudioBlock& block) {
    if (block.channels.empty() || block.frameCount == 0 || !(block.sampleRateHz > 0)) return;
    const float* left = block.channels[0];
    const float* right = block.channels.size() > 1 ? block.channels[1] : block.channels[0];
    std::lock_guard guard(lock_);
    Source& source = sources_[surfaceID];
    if (block.sampleRateHz == rateHz) {
        source.left.insert(source.left.end(), left, left + block.frameCount);
        source.right.insert(source.right.end(), right, right + block.frameCount);
    } else {
        // Linear interpolation between the last sample of the previous block
        // and this one's, so blocks join without a click.
        const double step = block.sampleRateHz / rateHz;
        const auto count = static_cast<double>(block.frameCount);
        double at = source.position;
        for (; at < count - 1e-9; at += step) {
            const double before = at - 1; // index -1 is the previous block's last
            const auto whole = static_cast<long>(std::floor(before));
            const double fraction = before - static_cast<double>(whole);
            auto sample = [&](const float* channel, float last, long index) {
                return index < 0 ? last : channel[index];
            };
            const long nextIndex = std::min<long>(whole + 1, static_cast<long>(block.frameCount) - 1);
            const float l = static_cast<float>(sample(left, source.lastLeft, whole) * (1 - fraction) +
                                               sample(left, source.lastLeft, nextIndex) * fraction);
            const float r = static_cast<float>(sample(right, source.lastRight, whole) * (1 - fraction) +
                                               sample(right, source.lastRight, nextIndex) * fraction);
            source.left.push_back(l);
            source.right.push_back(r);
        }
        source.position = at - count;
        source.lastLeft = left[block.frameCount - 1];
        source.lastRight = right[block.frameCount - 1];
    }
    const auto limit = static_cast<std::size_t>(maximumSeconds * rateHz);
    while (source.left.size() > limit) source.left.pop_front(), source.right.pop_front();
    if (source.left.size() >= blockFrames / 2) source.started = true;
}

std::optional<NDIAudioFrame> NDISoundMix::mix() {
    std::lock_guard guard(lock_);
    std::size_t frames = 0;
    for (const auto& [id, source] : sources_)
        if (source.started) frames = std::max(frames, std::min<std::size_t>(source.left.size(), blockFrames));
    if (frames == 0) return std::nullopt;
    NDIAudioFrame frame;
    frame.sampleRate = rateHz;
    frame.channels = 2;
    frame.samplesPerChannel = static_cast<int>(frames);
    frame.samples.assign(frames * 2, 0.0f);
    for (auto& [id, source] : sources_) {
        if (!source.started) continue;
        const std::size_t taken = std::min(frames, source.left.size());
        for (std::size_t i = 0; i < taken; ++i) {
            frame.samples[i] += source.left[i];
            frame.samples[frames + i] += source.right[i];
        }
        source.left.erase(source.left.begin(), source.left.begin() + static_cast<long>(taken));
        source.right.erase(source.right.begin(), source.right.begin() + static_cast<long>(taken));
    }
    return frame;
}

void NDISoundMix::remove(const SceneID& surfaceID) {
    std::lock_guard guard(lock_);
    sources_.erase(surfaceID);
}

void NDISoundMix::clear() {
    std::lock_guard guard(lock_);
    sources_.clear();
}

} // namespace velarion
