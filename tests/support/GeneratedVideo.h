#pragma once
// Video files made by tests and benchmarks with gst-launch-1.0, whose
// pictures tell their own frame number: eight blocks across, each white for
// a set bit (the lowest on the left), black for a clear one, big enough to
// survive H.264 in 4:2:0, as cameras and editors write it. Nothing recorded
// enters the repository.

#include "ShowStage/StillImage.h"

#include <filesystem>
#include <string>

namespace velarion::testing {

struct CodedVideo {
    int frames = 20;
    int framesPerSecond = 10;
    int width = 128; // a multiple of 16: eight blocks across
    int height = 16;
    // A stereo sine of 441 Hz at this amplitude, as 16-bit PCM; 0: none.
    double soundAmplitude = 0.5;
    // "mkv" (H.264 and PCM) or "mp4" (H.264 and AAC).
    std::string container = "mkv";
};

// Writes the file; false (with gst-launch's complaint on stderr) on failure.
bool writeCodedVideo(const std::filesystem::path& path, const CodedVideo& video);

// The frame number a picture shows, or -1 for a picture with no code.
int frameCode(const StillPixels& picture);

} // namespace velarion::testing
