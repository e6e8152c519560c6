#pragma once
// BackdropLoops: the six built-in moving backgrounds. Each is a soft field of
// three coloured glows drifting over a base colour, drawn with QPainter and
// encoded once to an H.264 QuickTime file that every show shares.
//
// Contract.
// - Stateless operations. `palette`, `caption`, `folder`, `url`, `isReady`
//   and `frame` are cheap and safe from any thread.
// - `make` is long work (seconds): call it on a worker thread, never on the
//   main loop. It draws each frame with QPainter on a QImage (raster, no
//   window system needed) and pushes it through a GStreamer encoder. Several
//   `make` calls may run at once, for different loops or the same one: each
//   writes its own partial file and the last one to finish wins the rename.
// - Files: a loop is written to "<uuid>.partial.mov" in the folder and
//   renamed to its final name only after the encoder has finished the file,
//   so a file with the final name is always whole. A failure or a cancel
//   removes the partial file and leaves no file with the final name.
// - `progress` is called on the calling thread with the fraction done, 0 to
//   1; `stop` is polled between frames and while waiting for the encoder.

#include "LiveModel/TimerMode.h"

#include <QImage>

#include <array>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <variant>

namespace velarion::BackdropLoops {

// Red, green and blue, each 0 to 1.
using Rgb = std::array<float, 3>;

struct Palette {
    Rgb base{};
    std::array<Rgb, 3> glows{};
    friend bool operator==(const Palette&, const Palette&) = default;
};

Palette palette(BuiltInBackdrop backdrop);

// The words under which the operator sees the loop, e.g. "Warm amber · 10 s loop".
std::string_view caption(BuiltInBackdrop backdrop);

// "Velarion/Looks" under $XDG_DATA_HOME, or ~/.local/share when that is unset
// or not an absolute path.
std::filesystem::path folder();

// The loop's file in `in`: its case name and "-v1.mov", e.g. "drift-v1.mov".
std::filesystem::path url(BuiltInBackdrop backdrop, const std::filesystem::path& in);

// Whether the loop's file exists in `in` as a non-empty regular file.
bool isReady(BuiltInBackdrop backdrop, const std::filesystem::path& in);

// Frame `frameIndex` of a loop of `frameCount` frames, opaque RGB32. Every
// glow turns a whole number of times over the loop, so frame `frameCount`
// would equal frame 0: the last frame flows into the first.
QImage frame(BuiltInBackdrop backdrop, int width, int height, int frameIndex, int frameCount);

struct MakeOptions {
    std::function<void(double fraction)> progress;
    std::stop_token stop;
};

struct Cancelled {
    friend bool operator==(const Cancelled&, const Cancelled&) = default;
};
struct Failed {
    std::string message; // one sentence for the operator
    friend bool operator==(const Failed&, const Failed&) = default;
};
// The finished file, or why there is none.
using MakeResult = std::variant<std::filesystem::path, Cancelled, Failed>;

// Renders the loop into `in` unless its file is already there, in which case
// it returns the file at once. The application asks for 1280 by 720,
// 10 seconds at 30 frames a second. Width and height must be even.
MakeResult make(BuiltInBackdrop backdrop, const std::filesystem::path& in, int width, int height,
                double seconds, int fps, const MakeOptions& options = {});

} // namespace velarion::BackdropLoops
