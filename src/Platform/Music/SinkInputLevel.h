#pragma once
// SinkInputLevel: the level of an application's stream in the sound server
// (PulseAudio, or PipeWire's Pulse server), for apps that ignore MPRIS
// volume (Spotify).
//
// Contract.
// - Blocking; called on the music apps' serial worker, never the main
//   thread. Each call runs `pactl` once, bounded by `timeoutSeconds`.
// - pactl rather than libpulse: one short command per change needs no
//   threaded main loop or context kept alive beside Qt's, and works the
//   same against PipeWire's Pulse server.
// - An app without a stream yet (Spotify opens it only when it first
//   plays) keeps the level asked for; each later call applies it to the
//   stream as soon as it exists. The server's stream-restore also opens
//   the stream at the last level set, which a fade leaves at zero.

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace velarion {

class SinkInputLevel {
public:
    SinkInputLevel(std::string applicationName, double timeoutSeconds);

    // Sets the stream's level in whole percent; false with `error` set
    // when pactl could not be run.
    bool set(int percent, std::string& error);
    // The stream's level; none when the app has no stream. Applies a level
    // still waiting for its stream.
    std::optional<int> level();
    // Right after the app was told to play: a level still waiting for its
    // stream is applied the moment the stream appears, within `seconds`.
    void applyWhenStreamAppears(double seconds);

private:
    struct Stream {
        int index = -1;
        int percent = 0;
    };
    std::optional<Stream> find(std::string& error);
    bool run(const std::vector<std::string>& arguments, std::string& output, std::string& error);
    // Sets the waiting level on a stream; the lock is held.
    bool applyWanted(int index, std::string& error);
    std::string applicationName_;
    double timeoutSeconds_;
    std::mutex lock_;
    std::optional<int> wanted_;
    int lastIndex_ = -1; // the app's stream when last found
};

} // namespace velarion
