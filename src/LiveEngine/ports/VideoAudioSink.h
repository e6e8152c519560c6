#pragma once
// VideoAudioSink: where a video surface's audio tap hands its decoded sound,
// after the surface's level and before its device (network feeds mix it).
//
// Contract.
// - Called on the player's streaming thread, never the main loop. It must
//   copy what it needs and return at once: no blocking, no waiting on the
//   main loop, no call back into the surface.
// - `channels` holds one pointer per channel, each to `frameCount` 32-bit
//   float samples; the pointers are valid only during the call.
// - The surface takes its lock only to copy the sink and gain; a sink is
//   never called after `setAudioSink` with another sink (or none) returns.
// - A surface whose decoded sound is not float delivers nothing and still
//   plays.

#include <cstddef>
#include <functional>
#include <span>

namespace velarion {

struct VideoAudioBlock {
    std::span<const float* const> channels;
    std::size_t frameCount = 0;
    double sampleRateHz = 0;
};

using VideoAudioSink = std::function<void(const VideoAudioBlock&)>;

} // namespace velarion
