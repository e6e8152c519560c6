#pragma once
// The encoder behind the backdrop loops: frames drawn as QImages go through
// GStreamer (appsrc → videoconvert → x264enc → qtmux → filesink) into an
// H.264 QuickTime file without sound.
//
// Contract.
// - `encodeLoop` blocks until the file is finished, the encode fails or
//   `stop` is requested; call it on a worker thread. It draws frames on the
//   calling thread while the encoder works on GStreamer's own threads, and
//   waits for room in the source's queue between frames, so memory stays at a
//   few frames whatever the loop's length.
// - It reports `finished` only once end of stream has reached the file sink,
//   that is when the muxer has written the whole file. On any other outcome
//   the file may be partly written: removing it is the caller's business.
// - `drawFrame(i)` must give an RGB32 picture of the settings' size.
// - Every GStreamer object lives inside the call; nothing outlives it.

#include <QImage>

#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>

namespace velarion {

struct LoopEncoding {
    int width = 0;
    int height = 0;
    int fps = 30;
    int frameCount = 0;
    int bitrateKbps = 0;
};

// An average bit rate for soft moving gradients: generous enough that the
// glows don't band or smear, small enough to decode anywhere.
int loopBitrateKbps(int width, int height, int fps);

enum class EncodeEnd { finished, cancelled, failed };

struct EncodeResult {
    EncodeEnd end = EncodeEnd::failed;
    std::string error; // why it failed, in the encoder's words; empty otherwise
};

EncodeResult encodeLoop(const std::filesystem::path& file, const LoopEncoding& settings,
                        const std::function<QImage(int frameIndex)>& drawFrame,
                        const std::function<void(int framesPushed)>& pushed, std::stop_token stop);

} // namespace velarion
