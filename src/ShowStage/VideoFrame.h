#pragma once
// VideoFrame: one decoded picture kept as the decoder made it, in Y'CbCr
// planes, shared by every renderer that shows it.
//
// Why planes: converting 1080p60 to BGRA on the CPU costs a good part of a
// core for every video on air. Kept as planes, an OpenGL back end uploads
// 1.5 bytes a pixel and converts in its shader (with `yuvToRgbMatrix`), and
// only a CPU reader (feeds, previews, poster frames, snapshots) pays for a
// conversion: once per frame, whoever asks first, with the same matrix and
// the same chroma sampling the shader has, so the two agree within rounding.
//
// Contract.
// - Immutable after construction but for the BGRA it caches; every member
//   may be called from any thread, and `bgra` converts at most once.
// - The planes point into `storage`, which the frame keeps alive (a decoder's
//   buffer, or bytes the frame owns), so a holder may read them at leisure.

#include "ShowStage/StillImage.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>

namespace velarion {

// i420: Y, Cb, Cr, chroma halved both ways. nv12: Y, then Cb and Cr
// interleaved in one half-sized plane.
enum class VideoPlaneLayout { i420, nv12 };
enum class VideoColorMatrix { bt601, bt709, bt2020 };

struct VideoColorimetry {
    VideoColorMatrix matrix = VideoColorMatrix::bt709;
    bool fullRange = false; // else luma 16-235 and chroma 16-240

    friend bool operator==(const VideoColorimetry&, const VideoColorimetry&) = default;
};

// Three rows of (y, cb, cr, 1) → red, green, blue, all as 0-1 texel values:
// red = m[0]*y + m[1]*cb + m[2]*cr + m[3], and so on.
std::array<float, 12> yuvToRgbMatrix(VideoColorimetry colorimetry);

struct VideoPlane {
    const std::uint8_t* data = nullptr;
    int strideBytes = 0;
    int width = 0; // in samples: an nv12 chroma sample is two bytes
    int height = 0;
};

class VideoFrame {
public:
    // Null when the sizes don't fit the layout or a plane has no data.
    static std::shared_ptr<const VideoFrame> make(VideoPlaneLayout layout, int width, int height,
                                                  std::array<VideoPlane, 3> planes, VideoColorimetry colorimetry,
                                                  std::shared_ptr<const void> storage);

    VideoPlaneLayout layout() const { return layout_; }
    int width() const { return width_; }
    int height() const { return height_; }
    int planeCount() const { return layout_ == VideoPlaneLayout::i420 ? 3 : 2; }
    const VideoPlane& plane(int index) const { return planes_[static_cast<std::size_t>(index)]; }
    VideoColorimetry colorimetry() const { return colorimetry_; }

    // The picture as BGRA (opaque, so premultiplied), converted on the first
    // call and kept for the frame's life.
    std::shared_ptr<const StillPixels> bgra() const;

    VideoFrame(VideoPlaneLayout layout, int width, int height, std::array<VideoPlane, 3> planes,
               VideoColorimetry colorimetry, std::shared_ptr<const void> storage);

private:
    VideoPlaneLayout layout_;
    int width_;
    int height_;
    std::array<VideoPlane, 3> planes_;
    VideoColorimetry colorimetry_;
    std::shared_ptr<const void> storage_;
    mutable std::once_flag converted_;
    mutable std::shared_ptr<const StillPixels> bgra_;
};

// The conversion `bgra` makes, into a picture of the frame's size.
void convertToBGRA(const VideoFrame& frame, StillPixels& target);

} // namespace velarion
