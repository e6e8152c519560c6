#include "Platform/Outputs/CpuCompositor.h"

#include "Platform/Outputs/LayerGeometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace velarion {

namespace {

using Byte = std::uint8_t;

// a * b / 255, rounded, for a and b in 0 ... 255.
inline std::uint32_t times255(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t t = a * b + 128;
    return (t + (t >> 8)) >> 8;
}

inline int toLevel(double value) {
    return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

// Source over, both premultiplied: d = s + d * (1 - s.alpha).
inline void blendPixel(Byte* d, std::uint32_t b, std::uint32_t g, std::uint32_t r, std::uint32_t a) {
    const std::uint32_t keep = 255 - a;
    d[0] = static_cast<Byte>(b + times255(d[0], keep));
    d[1] = static_cast<Byte>(g + times255(d[1], keep));
    d[2] = static_cast<Byte>(r + times255(d[2], keep));
    d[3] = static_cast<Byte>(a + times255(d[3], keep));
}

// One source pixel at a given opacity (0 ... 255) over a destination pixel.
inline void blendOver(Byte* d, const Byte* s, std::uint32_t opacity) {
    if (opacity == 255) {
        if (s[3] == 255) {
            std::memcpy(d, s, 4);
            return;
        }
        if (s[3] == 0) return;
        blendPixel(d, s[0], s[1], s[2], s[3]);
        return;
    }
    blendPixel(d, times255(s[0], opacity), times255(s[1], opacity), times255(s[2], opacity),
               times255(s[3], opacity));
}

#if defined(__x86_64__)
// Eight pixels at a time, with the SSE2 loop's exact rounding; returns how
// many pixels it did. Built for AVX2 and called only where the processor has it.
#define VELARION_AVX2 __attribute__((target("avx2"), always_inline)) inline
VELARION_AVX2 __m256i timesAvx2(__m256i value, __m256i by) {
    const __m256i t = _mm256_add_epi16(_mm256_mullo_epi16(value, by), _mm256_set1_epi16(128));
    return _mm256_srli_epi16(_mm256_add_epi16(t, _mm256_srli_epi16(t, 8)), 8);
}

VELARION_AVX2 __m256i blendHalfAvx2(__m256i source, __m256i target, __m256i factor) {
    const __m256i alphaLanes = _mm256_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15,
                                                6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15);
    source = timesAvx2(source, factor);
    const __m256i alpha = _mm256_shuffle_epi8(source, alphaLanes);
    return _mm256_add_epi16(source, timesAvx2(target, _mm256_sub_epi16(_mm256_set1_epi16(255), alpha)));
}
#undef VELARION_AVX2

__attribute__((target("avx2"))) int blendWordsAvx2(std::uint32_t* to, const std::uint32_t* from, int count,
                                                   std::uint32_t opacity) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i factor = _mm256_set1_epi16(static_cast<short>(opacity));
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i source = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + i));
        const __m256i target = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(to + i));
        // Unpacking works within each 128-bit half and packing puts the
        // halves back the same way, so pixel order is kept.
        const __m256i low =
            blendHalfAvx2(_mm256_unpacklo_epi8(source, zero), _mm256_unpacklo_epi8(target, zero), factor);
        const __m256i high =
            blendHalfAvx2(_mm256_unpackhi_epi8(source, zero), _mm256_unpackhi_epi8(target, zero), factor);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i), _mm256_packus_epi16(low, high));
    }
    return i;
}
#endif

struct Picture {
    const Byte* pixels = nullptr;
    int width = 0;
    int height = 0;
};

// Bilinear at texel coordinates (texel centres at whole numbers), edges
// clamped, weights in 1/256 as the GL rasteriser has them.
inline void sample(const Picture& picture, double tx, double ty, Byte out[4]) {
    const double fx = std::floor(tx);
    const double fy = std::floor(ty);
    const auto wx = static_cast<std::uint32_t>(std::lround((tx - fx) * 256));
    const auto wy = static_cast<std::uint32_t>(std::lround((ty - fy) * 256));
    const int x0 = std::clamp(static_cast<int>(fx), 0, picture.width - 1);
    const int x1 = std::clamp(static_cast<int>(fx) + 1, 0, picture.width - 1);
    const int y0 = std::clamp(static_cast<int>(fy), 0, picture.height - 1);
    const int y1 = std::clamp(static_cast<int>(fy) + 1, 0, picture.height - 1);
    const std::size_t stride = static_cast<std::size_t>(picture.width) * 4;
    const Byte* p00 = picture.pixels + y0 * stride + static_cast<std::size_t>(x0) * 4;
    const Byte* p01 = picture.pixels + y0 * stride + static_cast<std::size_t>(x1) * 4;
    const Byte* p10 = picture.pixels + y1 * stride + static_cast<std::size_t>(x0) * 4;
    const Byte* p11 = picture.pixels + y1 * stride + static_cast<std::size_t>(x1) * 4;
    for (int c = 0; c < 4; ++c) {
        const std::uint32_t top = p00[c] * (256 - wx) + p01[c] * wx;
        const std::uint32_t bottom = p10[c] * (256 - wx) + p11[c] * wx;
        out[c] = static_cast<Byte>((top * (256 - wy) + bottom * wy + 32768) >> 16);
    }
}

// Pixels whose centres lie in [from, to): the first and one past the last,
// clamped to 0 ... size.
inline std::pair<int, int> centresWithin(double from, double to, int size) {
    const int first = std::clamp(static_cast<int>(std::ceil(from - 0.5)), 0, size);
    const int end = std::clamp(static_cast<int>(std::ceil(to - 0.5)), 0, size);
    return {first, std::max(first, end)};
}

// Two neighbouring texels along one axis and the weight of the second, in
// 1/256.
struct Tap {
    int first = 0;
    int second = 0;
    std::uint32_t weight = 0;
};

class Painter {
public:
    explicit Painter(RasterImage& target) : target_(target) {}

    // The background is laid lazily: a first picture that covers the whole
    // target opaquely makes it unnecessary (the common full-frame slide).
    void fill(const SceneColor& color) {
        const Byte pixel[4] = {static_cast<Byte>(toLevel(color.blue * color.alpha)),
                               static_cast<Byte>(toLevel(color.green * color.alpha)),
                               static_cast<Byte>(toLevel(color.red * color.alpha)),
                               static_cast<Byte>(toLevel(color.alpha))};
        std::memcpy(&fillWord_, pixel, 4);
        fillPending_ = true;
    }

    void ensureFilled() {
        if (!fillPending_) return;
        fillPending_ = false;
        auto* d = reinterpret_cast<std::uint32_t*>(target_.bgra.data());
        std::fill(d, d + target_.bgra.size() / 4, fillWord_);
    }

    void draw(const SceneDrawOperation& operation, const VideoFrameLookup& videoFrames) {
        const auto opacity = static_cast<std::uint32_t>(toLevel(operation.opacity));
        if (opacity == 0) return;
        centreX_ = operation.rect.left + operation.rect.width / 2;
        centreY_ = operation.rect.bottom + operation.rect.height / 2;
        transform_ = operation.transform;
        identity_ = operation.transform == SceneMatrix4::identity();

        if (const auto* color = std::get_if<SceneColorContent>(&operation.content)) {
            ensureFilled();
            const auto quad = colorQuad(operation.rect);
            if (!quad) return;
            const SceneColor& c = color->color;
            const auto alpha = times255(static_cast<std::uint32_t>(toLevel(c.alpha)), opacity);
            const Byte pixel[4] = {static_cast<Byte>(times255(toLevel(c.blue * c.alpha), opacity)),
                                   static_cast<Byte>(times255(toLevel(c.green * c.alpha), opacity)),
                                   static_cast<Byte>(times255(toLevel(c.red * c.alpha), opacity)),
                                   static_cast<Byte>(alpha)};
            paint(*quad, [&](Byte* d, double, double) { blendOver(d, pixel, 255); });
            return;
        }
        std::shared_ptr<const StillPixels> frame;
        Picture picture;
        if (const auto* still = std::get_if<SceneStillContent>(&operation.content)) {
            picture = Picture{still->image.bgra().data(), still->image.width(), still->image.height()};
        } else if (const auto* video = std::get_if<SceneVideoContent>(&operation.content)) {
            if (videoFrames) frame = videoFrames(video->surfaceID);
            else if (operation.surface) frame = operation.surface->latestFrame();
            if (!frame || frame->width <= 0 || frame->height <= 0) return;
            picture = Picture{frame->bgra.data(), frame->width, frame->height};
        }
        const auto quad = pictureQuad(operation.rect, operation.gravity, picture.width, picture.height);
        if (!quad) return;
        if (identity_ && copiesTexels(*quad, picture)) {
            copy(*quad, picture, opacity);
            return;
        }
        ensureFilled();
        if (identity_) {
            scale(*quad, picture, opacity);
            return;
        }
        const double du = (quad->uRight - quad->uLeft) / (quad->right - quad->left);
        const double dv = (quad->vBottom - quad->vTop) / (quad->top - quad->bottom);
        paint(*quad, [&](Byte* d, double x, double y) {
            const double u = quad->uLeft + (x - quad->left) * du;
            const double v = quad->vTop + (quad->top - y) * dv;
            Byte texel[4];
            sample(picture, u * picture.width - 0.5, v * picture.height - 0.5, texel);
            blendOver(d, texel, opacity);
        });
    }

private:
    // Each destination pixel lands on one source texel, one for one: the
    // common case of a slide page or a card drawn at its own size.
    bool copiesTexels(const LayerQuad& quad, const Picture& picture) const {
        const double texelsAcross = (quad.uRight - quad.uLeft) * picture.width;
        const double texelsDown = (quad.vBottom - quad.vTop) * picture.height;
        const double left = centreX_ + quad.left;
        const double top = target_.height - (centreY_ + quad.top);
        const auto whole = [](double value) { return std::abs(value - std::round(value)) < 1e-9; };
        const auto same = [](double a, double b) { return std::abs(a - b) < 1e-9; };
        return same(texelsAcross, quad.right - quad.left) && same(texelsDown, quad.top - quad.bottom) &&
               whole(left) && whole(top) &&
               whole(quad.uLeft * picture.width) && whole(quad.vTop * picture.height);
    }

    void copy(const LayerQuad& quad, const Picture& picture, std::uint32_t opacity) {
        const double left = centreX_ + quad.left;
        const double top = target_.height - (centreY_ + quad.top);
        const auto [firstColumn, endColumn] = centresWithin(left, centreX_ + quad.right, target_.width);
        const auto [firstRow, endRow] =
            centresWithin(top, target_.height - (centreY_ + quad.bottom), target_.height);
        const int sourceX = static_cast<int>(std::lround(quad.uLeft * picture.width - left));
        const int sourceY = static_cast<int>(std::lround(quad.vTop * picture.height - top));
        const std::size_t sourceStride = static_cast<std::size_t>(picture.width) * 4;
        const std::size_t targetStride = static_cast<std::size_t>(target_.width) * 4;
        const bool coversTarget =
            firstColumn == 0 && endColumn == target_.width && firstRow == 0 && endRow == target_.height;
        if (fillPending_ && coversTarget) {
            fillPending_ = false;
            for (int row = 0; row < endRow; ++row) {
                const auto* s = reinterpret_cast<const std::uint32_t*>(
                    picture.pixels + static_cast<std::size_t>(row + sourceY) * sourceStride +
                    static_cast<std::size_t>(sourceX) * 4);
                auto* d = reinterpret_cast<std::uint32_t*>(target_.bgra.data() +
                                                           static_cast<std::size_t>(row) * targetStride);
                if (opacity == 255 && isOpaque(s, endColumn)) {
                    std::memcpy(d, s, static_cast<std::size_t>(endColumn) * 4);
                    continue;
                }
                std::fill(d, d + endColumn, fillWord_);
                blendWords(d, s, endColumn, opacity);
            }
            return;
        }
        ensureFilled();
        for (int row = firstRow; row < endRow; ++row) {
            const Byte* s = picture.pixels + static_cast<std::size_t>(row + sourceY) * sourceStride +
                            static_cast<std::size_t>(firstColumn + sourceX) * 4;
            Byte* d = target_.bgra.data() + static_cast<std::size_t>(row) * targetStride +
                      static_cast<std::size_t>(firstColumn) * 4;
            const int count = endColumn - firstColumn;
            blendRow(d, s, count, opacity);
        }
    }

    // An upright picture at another size: the texel columns and weights of
    // each pixel column are the same on every row, so they are worked out once.
    void scale(const LayerQuad& quad, const Picture& picture, std::uint32_t opacity) {
        const auto [firstColumn, endColumn] =
            centresWithin(centreX_ + quad.left, centreX_ + quad.right, target_.width);
        const auto [firstRow, endRow] = centresWithin(target_.height - (centreY_ + quad.top),
                                                      target_.height - (centreY_ + quad.bottom), target_.height);
        if (firstColumn >= endColumn || firstRow >= endRow) return;
        const double du = (quad.uRight - quad.uLeft) / (quad.right - quad.left);
        const double dv = (quad.vBottom - quad.vTop) / (quad.top - quad.bottom);
        const auto tap = [](double texel, int size) {
            double base = std::floor(texel);
            auto weight = static_cast<std::uint32_t>(std::lround((texel - base) * 256));
            if (weight == 256) base += 1, weight = 0; // a hair below a whole texel is that texel
            const int first = static_cast<int>(base);
            return Tap{std::clamp(first, 0, size - 1), std::clamp(first + 1, 0, size - 1), weight};
        };
        columns_.clear();
        for (int column = firstColumn; column < endColumn; ++column) {
            const double u = quad.uLeft + (column + 0.5 - centreX_ - quad.left) * du;
            columns_.push_back(tap(u * picture.width - 0.5, picture.width));
        }
        const auto* texels = reinterpret_cast<const std::uint32_t*>(picture.pixels);
        row_.resize(columns_.size());
        // The source columns this layer reads; each row mixes its two source
        // rows over them once, then every pixel mixes two neighbours of that.
        const int fromColumn = columns_.front().first;
        const int toColumn = columns_.back().second;
        mixed_.resize(static_cast<std::size_t>(toColumn - fromColumn + 1));
        // Columns that land on whole texels, one for one (a card moved by a
        // fraction of a row): the mixed row is the picture's row as it is.
        bool wholeTexels = true;
        for (std::size_t i = 0; i < columns_.size() && wholeTexels; ++i)
            wholeTexels = columns_[i].weight == 0 && columns_[i].first == fromColumn + static_cast<int>(i);
        for (int row = firstRow; row < endRow; ++row) {
            const double y = target_.height - row - 0.5 - centreY_;
            const Tap down = tap((quad.vTop + (quad.top - y) * dv) * picture.height - 0.5, picture.height);
            const std::uint32_t* upper = texels + static_cast<std::size_t>(down.first) * picture.width;
            const std::uint32_t* lower = texels + static_cast<std::size_t>(down.second) * picture.width;
            const std::uint32_t* mixed = upper + fromColumn;
            if (down.weight != 0) {
                for (int x = fromColumn; x <= toColumn; ++x)
                    mixed_[static_cast<std::size_t>(x - fromColumn)] = lerp(upper[x], lower[x], down.weight);
                mixed = mixed_.data();
            }
            auto* d = reinterpret_cast<std::uint32_t*>(target_.bgra.data()) +
                      static_cast<std::size_t>(row) * target_.width + firstColumn;
            if (wholeTexels) {
                blendWords(d, mixed, static_cast<int>(columns_.size()), opacity);
                continue;
            }
            for (std::size_t i = 0; i < columns_.size(); ++i) {
                const Tap& across = columns_[i];
                row_[i] = lerp(mixed[across.first - fromColumn], mixed[across.second - fromColumn], across.weight);
            }
            blendWords(d, row_.data(), static_cast<int>(row_.size()), opacity);
        }
    }

    // a + (b - a) * weight / 256 on each byte, two at a time.
    static inline std::uint32_t lerp(std::uint32_t a, std::uint32_t b, std::uint32_t weight) {
        const std::uint32_t keep = 256 - weight;
        const std::uint32_t low = (((a & 0x00FF00FFu) * keep + (b & 0x00FF00FFu) * weight + 0x00800080u) >> 8) &
                                  0x00FF00FFu;
        const std::uint32_t high =
            ((((a >> 8) & 0x00FF00FFu) * keep + ((b >> 8) & 0x00FF00FFu) * weight + 0x00800080u) >> 8) &
            0x00FF00FFu;
        return low | (high << 8);
    }

    static void blendRow(Byte* d, const Byte* s, int count, std::uint32_t opacity) {
        auto* to = reinterpret_cast<std::uint32_t*>(d);
        const auto* from = reinterpret_cast<const std::uint32_t*>(s);
        if (opacity == 255 && isOpaque(from, count)) {
            std::memcpy(to, from, static_cast<std::size_t>(count) * 4);
            return;
        }
        blendWords(to, from, count, opacity);
    }

    // Two channels at a time (SWAR): exact a * b / 255 on the bytes in bits
    // 0-7 and 16-23 of `pair`, rounded.
    static inline std::uint32_t timesPair(std::uint32_t pair, std::uint32_t factor) {
        const std::uint32_t t = (pair & 0x00FF00FFu) * factor + 0x00800080u;
        return ((t + ((t >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu;
    }
    static inline std::uint32_t timesPixel(std::uint32_t pixel, std::uint32_t factor) {
        return timesPair(pixel, factor) | (timesPair(pixel >> 8, factor) << 8);
    }

    // The hot loops, also built for AVX2 where the processor has it.
    __attribute__((target_clones("avx2", "default"))) static bool isOpaque(const std::uint32_t* from,
                                                                          int count) {
        std::uint32_t all = 0xFFFFFFFFu;
        for (int i = 0; i < count; ++i) all &= from[i];
        return (all >> 24) == 255;
    }


    static void blendWords(std::uint32_t* to, const std::uint32_t* from, int count, std::uint32_t opacity) {
        int i = 0;
#if defined(__x86_64__)
        static const bool hasAvx2 = __builtin_cpu_supports("avx2");
        if (hasAvx2) i = blendWordsAvx2(to, from, count, opacity);
#endif
#if defined(__SSE2__)
        // Four pixels at a time in 16-bit lanes: the same exact rounding as
        // timesPixel, so every pixel gets the same value either way.
        const __m128i zero = _mm_setzero_si128();
        const __m128i factor = _mm_set1_epi16(static_cast<short>(opacity));
        const __m128i full = _mm_set1_epi16(255);
        const __m128i half = _mm_set1_epi16(128);
        const auto times = [&](__m128i value, __m128i by) {
            const __m128i t = _mm_add_epi16(_mm_mullo_epi16(value, by), half);
            return _mm_srli_epi16(_mm_add_epi16(t, _mm_srli_epi16(t, 8)), 8);
        };
        const auto blendHalf = [&](__m128i source, __m128i target) {
            source = times(source, factor);
            __m128i alpha = _mm_shufflelo_epi16(source, _MM_SHUFFLE(3, 3, 3, 3));
            alpha = _mm_shufflehi_epi16(alpha, _MM_SHUFFLE(3, 3, 3, 3));
            return _mm_add_epi16(source, times(target, _mm_sub_epi16(full, alpha)));
        };
        for (; i + 4 <= count; i += 4) {
            const __m128i source = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
            const __m128i target = _mm_loadu_si128(reinterpret_cast<const __m128i*>(to + i));
            const __m128i low = blendHalf(_mm_unpacklo_epi8(source, zero), _mm_unpacklo_epi8(target, zero));
            const __m128i high = blendHalf(_mm_unpackhi_epi8(source, zero), _mm_unpackhi_epi8(target, zero));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_packus_epi16(low, high));
        }
#endif
        for (; i < count; ++i) {
            const std::uint32_t source = timesPixel(from[i], opacity);
            to[i] = source + timesPixel(to[i], 255 - (source >> 24));
        }
    }

    // Calls `pixel(destination, x, y)` for each pixel whose centre falls in
    // the quad, with (x, y) that centre in layer-local coordinates.
    template <typename PixelFunction>
    void paint(const LayerQuad& quad, PixelFunction&& pixel) {
        const std::size_t stride = static_cast<std::size_t>(target_.width) * 4;
        if (identity_) {
            const auto [firstColumn, endColumn] =
                centresWithin(centreX_ + quad.left, centreX_ + quad.right, target_.width);
            const auto [firstRow, endRow] =
                centresWithin(target_.height - (centreY_ + quad.top),
                              target_.height - (centreY_ + quad.bottom), target_.height);
            for (int row = firstRow; row < endRow; ++row) {
                const double y = target_.height - row - 0.5 - centreY_;
                Byte* d = target_.bgra.data() + static_cast<std::size_t>(row) * stride;
                for (int column = firstColumn; column < endColumn; ++column)
                    pixel(d + static_cast<std::size_t>(column) * 4, column + 0.5 - centreX_, y);
            }
            return;
        }
        const PlaneMatrix forward = planeOf(transform_);
        const auto inverse = inverted(forward);
        if (!inverse) return;
        // The drawn area: the quad's corners where the transform puts them.
        double minX = target_.width, maxX = 0, minY = target_.height, maxY = 0;
        for (const auto& [qx, qy] : {std::pair{quad.left, quad.bottom}, std::pair{quad.right, quad.bottom},
                                    std::pair{quad.left, quad.top}, std::pair{quad.right, quad.top}}) {
            const double w = forward[6] * qx + forward[7] * qy + forward[8];
            if (!(w > 0)) { // a corner behind the eye: search the whole picture
                minX = 0, maxX = target_.width, minY = 0, maxY = target_.height;
                break;
            }
            const double x = centreX_ + (forward[0] * qx + forward[1] * qy + forward[2]) / w;
            const double y = target_.height - (centreY_ + (forward[3] * qx + forward[4] * qy + forward[5]) / w);
            minX = std::min(minX, x), maxX = std::max(maxX, x);
            minY = std::min(minY, y), maxY = std::max(maxY, y);
        }
        const auto [firstColumn, endColumn] = centresWithin(std::floor(minX), std::ceil(maxX) + 1, target_.width);
        const auto [firstRow, endRow] = centresWithin(std::floor(minY), std::ceil(maxY) + 1, target_.height);
        const PlaneMatrix& m = *inverse;
        for (int row = firstRow; row < endRow; ++row) {
            const double py = target_.height - row - 0.5 - centreY_;
            Byte* d = target_.bgra.data() + static_cast<std::size_t>(row) * stride;
            for (int column = firstColumn; column < endColumn; ++column) {
                const double px = column + 0.5 - centreX_;
                const double w = m[6] * px + m[7] * py + m[8];
                if (w == 0) continue;
                const double qx = (m[0] * px + m[1] * py + m[2]) / w;
                const double qy = (m[3] * px + m[4] * py + m[5]) / w;
                if (qx < quad.left || qx >= quad.right || qy < quad.bottom || qy >= quad.top) continue;
                // A point behind the eye maps back with the wrong sign of w.
                if (forward[6] * qx + forward[7] * qy + forward[8] <= 0) continue;
                pixel(d + static_cast<std::size_t>(column) * 4, qx, qy);
            }
        }
    }

    RasterImage& target_;
    std::uint32_t fillWord_ = 0;
    bool fillPending_ = false;
    std::vector<Tap> columns_;
    std::vector<std::uint32_t> row_;
    std::vector<std::uint32_t> mixed_;
    double centreX_ = 0;
    double centreY_ = 0;
    SceneMatrix4 transform_;
    bool identity_ = true;
};

} // namespace

void CpuCompositor::draw(const SceneFrame& frame, RasterImage& target, const VideoFrameLookup& videoFrames) {
    if (target.width <= 0 || target.height <= 0) return;
    Painter painter(target);
    painter.fill(frame.background);
    for (const SceneDrawOperation& operation : frame.operations) painter.draw(operation, videoFrames);
    painter.ensureFilled();
}

} // namespace velarion
