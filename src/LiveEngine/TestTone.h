#pragma once
// TestTone: the short sine the Sound settings play on a bus's device, so the
// operator can hear which output that is before doors.
//
// Contract.
// - Main thread only, like the players it makes.
// - `play` plays on the named device; none, or "system", is the system
//   output. A named device that is not present plays nothing and answers
//   false. A new tone stops the one still sounding.
// - The ports must outlive the object; destruction stops the tone.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/MediaPlayers.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velarion {

// Mono, 16-bit, 44100 Hz, 0.8 s of 440 Hz at amplitude 0.18 with a linear
// fade over 2000 samples at either end: a canonical WAV image.
std::vector<std::uint8_t> testToneWav();

class TestTone {
public:
    static constexpr int sampleRate = 44100;
    static constexpr int sampleCount = 35280;
    static constexpr int fadeSamples = 2000;
    static constexpr double frequencyHertz = 440;
    static constexpr double amplitude = 0.18;

    TestTone(MediaPlayers& players, const AudioDevices& devices);
    ~TestTone();
    TestTone(const TestTone&) = delete;
    TestTone& operator=(const TestTone&) = delete;

    bool play(const std::optional<std::string>& deviceUID);
    void stop();

private:
    MediaPlayers& players_;
    const AudioDevices& devices_;
    std::shared_ptr<SoundFilePlayer> playing_;
};

} // namespace velarion
