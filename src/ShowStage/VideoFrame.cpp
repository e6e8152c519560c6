#include "ShowStage/VideoFrame.h"

#include <algorithm>
#include <cmath>
#include <cstring>
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

constexpr int conversionShift = 18;

// The row loops are built twice on x86-64, for AVX2 and the baseline, and
// the loader picks one for the processor.
#if defined(__x86_64__)
#define VELARION_ROW_LOOP __attribute__((target_clones("avx2", "default")))
#else
#define VELARION_ROW_LOOP
#endif

// A row of chroma sites: each one's share of red, green and blue (offsets
// aside) from two chroma rows, `weight` sixteenths of the second. The Cr
// rows already point at the first Cr sample; `step` is 2 when interleaved.
// Nothing overlaps: the planes are read, the three lists written.
struct ChromaRows {
    const std::uint8_t* cbA;
    const std::uint8_t* cbB;
    const std::uint8_t* crA;
    const std::uint8_t* crB;
};
template <std::size_t step> inline void siteLoop(const std::uint8_t* __restrict cbA, const std::uint8_t* __restrict cbB,
                                                 const std::uint8_t* __restrict crA, const std::uint8_t* __restrict crB,
                                                 int weight, const std::array<int, 6>& k, int* __restrict red,
                                                 int* __restrict green, int* __restrict blue, std::size_t count) {
    for (std::size_t x = 0; x < count; ++x) {
        // In sixteenths of a level; the column blend makes them 1/256ths.
        const int cb = cbA[x * step] * (16 - weight) + cbB[x * step] * weight;
        const int cr = crA[x * step] * (16 - weight) + crB[x * step] * weight;
        red[x] = k[0] * cb + k[1] * cr;
        green[x] = k[2] * cb + k[3] * cr;
        blue[x] = k[4] * cb + k[5] * cr;
    }
}
VELARION_ROW_LOOP void siteShares(ChromaRows rows, std::size_t step, int weight, std::array<int, 6> k,
                                  std::array<int*, 3> out, std::size_t count) {
    if (step == 2)
        siteLoop<2>(rows.cbA, rows.cbB, rows.crA, rows.crB, weight, k, out[0], out[1], out[2], count);
    else
        siteLoop<1>(rows.cbA, rows.cbB, rows.crA, rows.crB, weight, k, out[0], out[1], out[2], count);
}

// Each site lies between its two pixels (an even width): a quarter of the
// neighbour's share on the outside of each, the edges clamped.
VELARION_ROW_LOOP void spreadHalves(const int* site, int* pixel, std::size_t sites) {
    const std::size_t last = sites - 1;
    pixel[0] = site[0] * 16;
    for (std::size_t at = 1; at <= last; ++at) pixel[2 * at] = site[at - 1] * 4 + site[at] * 12;
    for (std::size_t at = 0; at < last; ++at) pixel[2 * at + 1] = site[at] * 12 + site[at + 1] * 4;
    pixel[2 * last + 1] = site[last] * 16;
}

// One row's pixels from luma and each pixel's share of red, green and blue
// (1/256ths of a level against coefficients in 1/1024ths). Chosen at run
// time: with AVX2 the loop runs eight pixels at a time.
VELARION_ROW_LOOP void packRow(const std::uint8_t* luma, int lumaScale, std::array<const int*, 3> share,
                               std::array<int, 3> offset, std::uint32_t* out, std::size_t count) {
    const int* red = share[0];
    const int* green = share[1];
    const int* blue = share[2];
    for (std::size_t x = 0; x < count; ++x) {
        const int l = lumaScale * luma[x];
        const auto b = static_cast<std::uint32_t>(std::clamp((l + blue[x] + offset[2]) >> conversionShift, 0, 255));
        const auto g = static_cast<std::uint32_t>(std::clamp((l + green[x] + offset[1]) >> conversionShift, 0, 255));
        const auto r = static_cast<std::uint32_t>(std::clamp((l + red[x] + offset[0]) >> conversionShift, 0, 255));
        out[x] = b | g << 8 | r << 16 | 0xFF000000u;
    }
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
    const std::size_t crOffset = interleaved ? 1 : 0;
    const int chromaWidth = (width + 1) / 2;
    const auto columns = width % 2 == 0 ? std::vector<ChromaTap>{} : chromaTaps(width, chromaWidth);
    const auto rows = chromaTaps(height, (height + 1) / 2);

    // Coefficients in 1/1024ths against values in 1/256ths of a level.
    constexpr int shift = conversionShift;
    const auto m = yuvToRgbMatrix(frame.colorimetry());
    int k[12];
    for (int i = 0; i < 12; ++i) {
        const double scale = (i % 4 == 3) ? 255.0 * (1 << shift) : 1024.0;
        k[i] = static_cast<int>(std::lround(m[static_cast<std::size_t>(i)] * scale));
        if (i % 4 == 3) k[i] += 1 << (shift - 1); // rounds the shift
    }

    // Per row, each chroma site's share of red, green and blue, then each
    // pixel's blend of its two sites, then luma added and whole pixels packed.
    static_assert(std::endian::native == std::endian::little, "pixels are packed as B, G, R, A bytes");
    const int lumaScale = k[0] * 256;
    const auto sites = static_cast<std::size_t>(chromaWidth);
    std::vector<int> redSite(sites), greenSite(sites), blueSite(sites);
    const auto pixels = static_cast<std::size_t>(width);
    std::vector<int> red(pixels), green(pixels), blue(pixels);
    std::vector<std::uint32_t> packed(pixels);
    const auto spread = [&](const std::vector<int>& site, std::vector<int>& pixel) {
        if (width % 2 == 0) return spreadHalves(site.data(), pixel.data(), sites);
        for (std::size_t x = 0; x < pixels; ++x) {
            const ChromaTap& column = columns[x];
            pixel[x] = site[static_cast<std::size_t>(column.first)] * (16 - column.weight) +
                       site[static_cast<std::size_t>(column.second)] * column.weight;
        }
    };
    for (int y = 0; y < height; ++y) {
        const ChromaTap& row = rows[static_cast<std::size_t>(y)];
        const auto line = [](const VideoPlane& plane, int index, std::size_t offset) {
            return plane.data + static_cast<std::ptrdiff_t>(index) * plane.strideBytes + offset;
        };
        siteShares({line(cbPlane, row.first, 0), line(cbPlane, row.second, 0), line(crPlane, row.first, crOffset),
                    line(crPlane, row.second, crOffset)},
                   static_cast<std::size_t>(chromaStep), row.weight, {k[1], k[2], k[5], k[6], k[9], k[10]},
                   {redSite.data(), greenSite.data(), blueSite.data()}, sites);
        spread(redSite, red);
        spread(greenSite, green);
        spread(blueSite, blue);
        const std::uint8_t* lumaRow = luma.data + static_cast<std::ptrdiff_t>(y) * luma.strideBytes;
        packRow(lumaRow, lumaScale, {red.data(), green.data(), blue.data()}, {k[3], k[7], k[11]}, packed.data(),
                pixels);
        std::memcpy(target.bgra.data() + static_cast<std::size_t>(y) * pixels * 4, packed.data(), pixels * 4);
    }
}

} // namespace velarion
