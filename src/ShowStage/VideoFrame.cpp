#include "ShowStage/VideoFrame.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velarion {

std::array<float, 12> yuvToRgbMatrix(VideoColorimetry colorimetry) {
    double kr = 0.2126, kb = 0.0722;
    if (colorimetry.matrix == VideoColorMatrix::bt601) kr = 0.299, kb = 0.114;
    if (colorimetry.matrix == VideoColorMatrix::bt2020) kr = 0.2627, kb = 0.0593;
    const double kg = 1 - kr - kb;
    const double lumaScale = colorimetry.fullRange ? 1.0 : 255.0 / 219.0;
    const double lumaOffset = colorimetry.fullRange ? 0.0 : 16.0 / 255.0;
    const double chromaScale = colorimetry.fullRange ? 1.0 : 255.0 / 224.0;
    const double chromaOffset = 128.0 / 255.0;
    const double crToRed = 2 * (1 - kr) * chromaScale;
    const double cbToGreen = 2 * kb * (1 - kb) / kg * chromaScale;
    const double crToGreen = 2 * kr * (1 - kr) / kg * chromaScale;
    const double cbToBlue = 2 * (1 - kb) * chromaScale;
    const double luma = -lumaScale * lumaOffset;
    const double rows[12] = {
        lumaScale, 0,          crToRed,    luma - crToRed * chromaOffset,
        lumaScale, -cbToGreen, -crToGreen, luma + (cbToGreen + crToGreen) * chromaOffset,
        lumaScale, cbToBlue,   0,          luma - cbToBlue * chromaOffset,
    };
    std::array<float, 12> matrix{};
    for (std::size_t i = 0; i < matrix.size(); ++i) matrix[i] = static_cast<float>(rows[i]);
    return matrix;
}

std::shared_ptr<const VideoFrame> VideoFrame::make(VideoPlaneLayout layout, int width, int height,
                                                   std::array<VideoPlane, 3> planes, VideoColorimetry colorimetry,
                                                   std::shared_ptr<const void> storage) {
    if (width <= 0 || height <= 0) return nullptr;
    const int chromaWidth = (width + 1) / 2;
    const int chromaHeight = (height + 1) / 2;
    const int count = layout == VideoPlaneLayout::i420 ? 3 : 2;
    const int bytesPerChroma = layout == VideoPlaneLayout::i420 ? 1 : 2;
    for (int i = 0; i < count; ++i) {
        const VideoPlane& plane = planes[static_cast<std::size_t>(i)];
        const int expectedWidth = i == 0 ? width : chromaWidth;
        const int expectedHeight = i == 0 ? height : chromaHeight;
        if (plane.data == nullptr || plane.width < expectedWidth || plane.height < expectedHeight ||
            plane.strideBytes < plane.width * (i == 0 ? 1 : bytesPerChroma))
            return nullptr;
    }
    return std::make_shared<const VideoFrame>(layout, width, height, planes, colorimetry, std::move(storage));
}

VideoFrame::VideoFrame(VideoPlaneLayout layout, int width, int height, std::array<VideoPlane, 3> planes,
                       VideoColorimetry colorimetry, std::shared_ptr<const void> storage)
    : layout_(layout), width_(width), height_(height), planes_(planes), colorimetry_(colorimetry),
      storage_(std::move(storage)) {}

std::shared_ptr<const StillPixels> VideoFrame::bgra() const {
    std::call_once(converted_, [this] {
        auto pixels = std::make_shared<StillPixels>();
        convertToBGRA(*this, *pixels);
        bgra_ = std::move(pixels);
    });
    return bgra_;
}

namespace {

// Where a bilinear sampler of the half-sized chroma plane reads for each
// luma position (texel centres, edges clamped), as OpenGL does: the two
// neighbours and the second one's weight in sixteenths.
struct ChromaTap {
    int first = 0;
    int second = 0;
    int weight = 0;
};

std::vector<ChromaTap> chromaTaps(int lumaCount, int chromaCount) {
    std::vector<ChromaTap> taps(static_cast<std::size_t>(lumaCount));
    for (int i = 0; i < lumaCount; ++i) {
        const double position = (i + 0.5) * chromaCount / lumaCount - 0.5;
        const double floor = std::floor(position);
        const int first = static_cast<int>(floor);
        ChromaTap& tap = taps[static_cast<std::size_t>(i)];
        tap.first = std::clamp(first, 0, chromaCount - 1);
        tap.second = std::clamp(first + 1, 0, chromaCount - 1);
        tap.weight = static_cast<int>(std::lround((position - floor) * 16));
        if (tap.weight == 16) tap.first = tap.second, tap.weight = 0;
    }
    return taps;
}

} // namespace

void convertToBGRA(const VideoFrame& frame, StillPixels& target) {
    const int width = frame.width();
    const int height = frame.height();
    target.width = width;
    target.height = height;
    target.bgra.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    const VideoPlane& luma = frame.plane(0);
    const bool interleaved = frame.layout() == VideoPlaneLayout::nv12;
    const VideoPlane& cbPlane = frame.plane(1);
    const VideoPlane& crPlane = interleaved ? frame.plane(1) : frame.plane(2);
    const int chromaStep = interleaved ? 2 : 1;
    const int crOffset = interleaved ? 1 : 0;
    const int chromaWidth = (width + 1) / 2;
    const auto columns = width % 2 == 0 ? std::vector<ChromaTap>{} : chromaTaps(width, chromaWidth);
    const auto rows = chromaTaps(height, (height + 1) / 2);

    // Coefficients in 1/1024ths against values in 1/256ths of a level.
    constexpr int shift = 18;
    const auto m = yuvToRgbMatrix(frame.colorimetry());
    int k[12];
    for (int i = 0; i < 12; ++i) {
        const double scale = (i % 4 == 3) ? 255.0 * (1 << shift) : 1024.0;
        k[i] = static_cast<int>(std::lround(m[static_cast<std::size_t>(i)] * scale));
        if (i % 4 == 3) k[i] += 1 << (shift - 1); // rounds the shift
    }
    const auto level = [](int value) { return static_cast<std::uint8_t>(std::clamp(value >> shift, 0, 255)); };

    // Per row, each chroma site's share of red, green and blue (offsets
    // included); per pixel, a table lookup for luma and a blend of two sites.
    std::array<int, 256> lumaTerm{};
    for (int value = 0; value < 256; ++value) lumaTerm[static_cast<std::size_t>(value)] = k[0] * value * 256;
    std::vector<int> redSite(static_cast<std::size_t>(chromaWidth));
    std::vector<int> greenSite(redSite.size()), blueSite(redSite.size());
    const bool halves = width % 2 == 0;
    for (int y = 0; y < height; ++y) {
        const ChromaTap& row = rows[static_cast<std::size_t>(y)];
        const std::uint8_t* cbA = cbPlane.data + static_cast<std::ptrdiff_t>(row.first) * cbPlane.strideBytes;
        const std::uint8_t* cbB = cbPlane.data + static_cast<std::ptrdiff_t>(row.second) * cbPlane.strideBytes;
        const std::uint8_t* crA = crPlane.data + static_cast<std::ptrdiff_t>(row.first) * crPlane.strideBytes;
        const std::uint8_t* crB = crPlane.data + static_cast<std::ptrdiff_t>(row.second) * crPlane.strideBytes;
        for (int x = 0; x < chromaWidth; ++x) {
            const int at = x * chromaStep;
            // In sixteenths of a level; the column blend makes them 1/256ths.
            const int cb = cbA[at] * (16 - row.weight) + cbB[at] * row.weight;
            const int cr = crA[at + crOffset] * (16 - row.weight) + crB[at + crOffset] * row.weight;
            redSite[static_cast<std::size_t>(x)] = k[1] * cb + k[2] * cr;
            greenSite[static_cast<std::size_t>(x)] = k[5] * cb + k[6] * cr;
            blueSite[static_cast<std::size_t>(x)] = k[9] * cb + k[10] * cr;
        }
        const std::uint8_t* lumaRow = luma.data + static_cast<std::ptrdiff_t>(y) * luma.strideBytes;
        std::uint8_t* out = target.bgra.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * 4;
        const auto put = [&](int x, std::size_t a, std::size_t b, int weight) {
            const int l = lumaTerm[lumaRow[x]];
            std::uint8_t* p = out + static_cast<std::ptrdiff_t>(x) * 4;
            p[0] = level(l + blueSite[a] * (16 - weight) + blueSite[b] * weight + k[11]);
            p[1] = level(l + greenSite[a] * (16 - weight) + greenSite[b] * weight + k[7]);
            p[2] = level(l + redSite[a] * (16 - weight) + redSite[b] * weight + k[3]);
            p[3] = 255;
        };
        if (halves) {
            // Each site lies between its two pixels: a quarter of the
            // neighbour's share on the outside of each.
            const auto last = static_cast<std::size_t>(chromaWidth - 1);
            for (std::size_t site = 0; site <= last; ++site) {
                const int x = static_cast<int>(site) * 2;
                put(x, site == 0 ? 0 : site - 1, site, 12);
                put(x + 1, site, site == last ? last : site + 1, 4);
            }
            continue;
        }
        for (int x = 0; x < width; ++x) {
            const ChromaTap& column = columns[static_cast<std::size_t>(x)];
            put(x, static_cast<std::size_t>(column.first), static_cast<std::size_t>(column.second), column.weight);
        }
    }
}

} // namespace velarion
