#pragma once
// NDISoundMix: the sound network feeds send. Video surfaces' audio taps
// write their (already levelled) stereo sound in; a 20 ms timer on the main
// thread takes one mixed block out and hands it to every sender.
//
// Contract.
// - `write` runs on a player's streaming thread and only copies under the
//   lock; `mix`, `remove` and `clear` on the main thread. The lock is never
//   held across a call out.
// - Sound is resampled to `rateHz` (linear, continuous across blocks). Mono
//   goes to both sides; channels past the second are left out.
// - A source starts once it holds half a block, so a late tap doesn't chop
//   the mix. Each source keeps at most `maximumSeconds`; older sound goes.

#include "LiveEngine/ports/NetworkFeeds.h"
#include "LiveEngine/ports/VideoAudioSink.h"
#include "ShowStage/SceneID.h"

#include <deque>
#include <map>
#include <mutex>
#include <optional>

namespace velarion {

class NDISoundMix {
public:
    static constexpr int rateHz = 48000;
    static constexpr int blockFrames = 1920; // 40 ms, so a late timer catches up
    static constexpr double maximumSeconds = 0.25;

    void write(const SceneID& surfaceID, const VideoAudioBlock& block);
    // What all started sources hold, summed, up to one block; none when no
    // source has anything.
    std::optional<NDIAudioFrame> mix();
    void remove(const SceneID& surfaceID);
    void clear();

private:
    struct Source {
        std::deque<float> left;
        std::deque<float> right;
        bool started = false;
        double position = 0; // resampling phase, in input frames
        float lastLeft = 0, lastRight = 0;
    };

    std::mutex lock_;
    std::map<SceneID, Source> sources_;
};

} // namespace velarion
