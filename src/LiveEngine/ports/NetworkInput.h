#pragma once
// NetworkInput: a live NDI source played by a video cue. It is a video
// surface (the renderers show it by id, the engine levels it and routes its
// sound to the cue's device) that never ends by itself, plus the receiver's
// state for the log, the console and the Ready check.
//
// Contract: as VideoSurface (main thread, callbacks on the main loop), and:
// - `prepare` answers with the picture size known so far; `seek` and loops
//   do nothing; `pause` silences and stops taking sound, `play` resumes.
// - `receiverStatus` is a snapshot, any thread.
// - Destruction closes the receiver and its sound off the main thread.

#include "LiveEngine/ports/VideoSurface.h"

#include <cstdint>
#include <string>

namespace velarion {

enum class NDIConnectionPhase { connecting, connected, disconnected, stopped, failed };

struct NDIReceiverStatus {
    NDIConnectionPhase phase = NDIConnectionPhase::connecting;
    std::uint64_t videoFrames = 0;
    std::uint64_t audioFrames = 0;
    std::int64_t droppedVideoFrames = 0;
    std::uint64_t droppedAudioFrames = 0;
    int width = 0;
    int height = 0;
    double framesPerSecond = 0;
    int audioChannels = 0;
    int audioSampleRate = 0;
    std::string message = "connecting";
    friend bool operator==(const NDIReceiverStatus&, const NDIReceiverStatus&) = default;
};

class NetworkInput : public VideoSurface {
public:
    virtual NDIReceiverStatus receiverStatus() const = 0;
};

} // namespace velarion
