#include "Platform/Pictures/BackdropLoops.h"

#include "Identity/Uuid.h"
#include "Platform/Pictures/BackdropLoopEncoder.h"

#include <QColor>
#include <QPainter>
#include <QRadialGradient>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <system_error>

namespace velarion::BackdropLoops {

namespace {

namespace fs = std::filesystem;

constexpr std::array<Palette, 6> palettes{{
    // drift: night blue under a blue, a violet and an indigo glow
    {{0.035f, 0.045f, 0.150f}, {{{0.16f, 0.34f, 0.95f}, {0.56f, 0.24f, 0.90f}, {0.30f, 0.18f, 0.68f}}}},
    // ember: dark brown under amber, orange and gold
    {{0.150f, 0.055f, 0.020f}, {{{1.00f, 0.58f, 0.14f}, {0.92f, 0.36f, 0.08f}, {1.00f, 0.76f, 0.34f}}}},
    // mono: charcoal under three greys
    {{0.095f, 0.095f, 0.105f}, {{{0.36f, 0.36f, 0.38f}, {0.24f, 0.24f, 0.25f}, {0.48f, 0.48f, 0.50f}}}},
    // dawn: plum-dark under rose, amber and a deeper pink
    {{0.170f, 0.060f, 0.090f}, {{{0.95f, 0.44f, 0.58f}, {1.00f, 0.64f, 0.24f}, {0.82f, 0.32f, 0.44f}}}},
    // forest: deep green under sage, emerald and moss
    {{0.030f, 0.095f, 0.065f}, {{{0.56f, 0.68f, 0.50f}, {0.08f, 0.64f, 0.38f}, {0.24f, 0.48f, 0.28f}}}},
    // ocean: deep navy under sea glass, deep blue and teal
    {{0.015f, 0.060f, 0.130f}, {{{0.46f, 0.80f, 0.72f}, {0.08f, 0.28f, 0.66f}, {0.12f, 0.52f, 0.58f}}}},
}};

constexpr std::array<std::string_view, 6> captions{
    "Blue and violet · 10 s loop",       "Warm amber · 10 s loop",
    "Soft charcoal · 10 s loop",         "Rose and amber · 10 s loop",
    "Sage and emerald · 10 s loop",      "Deep blue and sea glass · 10 s loop",
};

// How each glow wanders. The turns are whole numbers, which is what makes
// the loop seamless; differing turns and phases keep the three glows from
// moving in step.
struct GlowPath {
    double radiusShare; // of the picture's longer side
    double swayX;       // of the width, either side of the centre
    double swayY;       // of the height
    int turnsX;
    int turnsY;
    double phaseX;
    double phaseY;
    double alpha;
};
constexpr std::array<GlowPath, 3> glowPaths{{
    {0.62, 0.30, 0.24, 1, 1, 0.0, 0.0, 0.80},
    {0.52, 0.34, 0.30, 1, 2, 2.1, 1.0, 0.70},
    {0.46, 0.26, 0.34, 2, 1, 4.2, 2.6, 0.60},
}};

QColor colorOf(const Rgb& rgb, double alpha = 1.0) {
    return QColor::fromRgbF(rgb[0], rgb[1], rgb[2], static_cast<float>(alpha));
}

int index(BuiltInBackdrop backdrop) { return static_cast<int>(backdrop); }

Failed failed(BuiltInBackdrop backdrop, const std::string& reason) {
    return Failed{"The " + std::string(displayName(backdrop)) +
                  " backdrop loop couldn't be made: " + reason + "."};
}

std::optional<Failed> checkSize(BuiltInBackdrop backdrop, int width, int height, double seconds,
                                int fps) {
    if (width < 2 || height < 2 || width % 2 != 0 || height % 2 != 0 || width > 7680 ||
        height > 4320)
        return failed(backdrop, "the size must be even numbers of pixels, at most 7680 by 4320");
    if (fps < 1 || fps > 120) return failed(backdrop, "the frame rate must be 1 to 120 frames a second");
    if (!(seconds > 0) || seconds > 600) return failed(backdrop, "the length must be above 0 and at most 10 minutes");
    return std::nullopt;
}

// Removes the partial file on every way out but success.
class PartialFile {
public:
    explicit PartialFile(fs::path file) : file_(std::move(file)) {}
    ~PartialFile() {
        std::error_code ignored;
        if (!file_.empty()) fs::remove(file_, ignored);
    }
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;
    const fs::path& path() const { return file_; }
    void keep() { file_.clear(); }

private:
    fs::path file_;
};

// A render writes its partial file continuously, so one untouched for this
// long was left by a process that died mid-way.
constexpr auto abandonedAfter = std::chrono::minutes(10);

void removeAbandonedPartials(const fs::path& in) {
    std::error_code error;
    const auto now = fs::file_time_type::clock::now();
    for (fs::directory_iterator entry(in, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (!name.ends_with(".partial.mov")) continue;
        std::error_code ignored;
        const auto written = fs::last_write_time(entry->path(), ignored);
        if (!ignored && now - written > abandonedAfter) fs::remove(entry->path(), ignored);
    }
}

} // namespace

Palette palette(BuiltInBackdrop backdrop) { return palettes[index(backdrop)]; }

std::string_view caption(BuiltInBackdrop backdrop) { return captions[index(backdrop)]; }

fs::path folder() {
    fs::path data;
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && fs::path(xdg).is_absolute())
        data = xdg;
    else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        data = fs::path(home) / ".local" / "share";
    else
        data = fs::temp_directory_path();
    return data / "Velarion" / "Looks";
}

fs::path url(BuiltInBackdrop backdrop, const fs::path& in) {
    return in / (std::string(toString(backdrop)) + "-v1.mov");
}

bool isReady(BuiltInBackdrop backdrop, const fs::path& in) {
    std::error_code error;
    const fs::path file = url(backdrop, in);
    return fs::is_regular_file(file, error) && fs::file_size(file, error) > 0 && !error;
}

QImage frame(BuiltInBackdrop backdrop, int width, int height, int frameIndex, int frameCount) {
    const Palette& colours = palettes[index(backdrop)];
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(colorOf(colours.base));
    // Plain source-over: the glows blend into each other and stay dark enough
    // for white text, and Qt fills it about three times faster than screening.
    QPainter painter(&picture);
    painter.setPen(Qt::NoPen);

    const double turn = 2 * std::numbers::pi * frameIndex / std::max(frameCount, 1);
    const double longSide = std::max(width, height);
    // Each look starts its glows somewhere else, so the six don't move alike.
    const double lookPhase = 0.9 * index(backdrop);
    for (std::size_t i = 0; i < glowPaths.size(); ++i) {
        const GlowPath& path = glowPaths[i];
        const QPointF centre(width * (0.5 + path.swayX * std::sin(path.turnsX * turn + path.phaseX + lookPhase)),
                             height * (0.5 + path.swayY * std::cos(path.turnsY * turn + path.phaseY + lookPhase)));
        const double radius = path.radiusShare * longSide;
        QRadialGradient glow(centre, radius);
        glow.setColorAt(0.0, colorOf(colours.glows[i], path.alpha));
        glow.setColorAt(0.45, colorOf(colours.glows[i], path.alpha * 0.45));
        glow.setColorAt(1.0, colorOf(colours.glows[i], 0.0));
        painter.setBrush(glow);
        painter.drawRect(QRectF(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius)
                             .intersected(QRectF(0, 0, width, height)));
    }
    painter.end();
    return picture;
}

MakeResult make(BuiltInBackdrop backdrop, const fs::path& in, int width, int height, double seconds,
                int fps, const MakeOptions& options) {
    const fs::path target = url(backdrop, in);
    if (isReady(backdrop, in)) return target;
    if (auto bad = checkSize(backdrop, width, height, seconds, fps)) return *bad;

    std::error_code error;
    fs::create_directories(in, error);
    if (error) return failed(backdrop, "the folder " + in.string() + " couldn't be created (" + error.message() + ")");

    removeAbandonedPartials(in);

    const int frameCount = std::max(1, static_cast<int>(std::lround(seconds * fps)));
    PartialFile partial(in / (Uuid::random().text() + ".partial.mov"));
    const LoopEncoding settings{width, height, fps, frameCount, loopBitrateKbps(width, height, fps)};
    const EncodeResult encoded = encodeLoop(
        partial.path(), settings,
        [&](int frameIndex) { return frame(backdrop, width, height, frameIndex, frameCount); },
        [&](int framesPushed) {
            // The last share belongs to finishing the file.
            if (options.progress) options.progress(0.98 * framesPushed / frameCount);
        },
        options.stop);
    if (encoded.end == EncodeEnd::cancelled) return Cancelled{};
    if (encoded.end == EncodeEnd::failed) return failed(backdrop, encoded.error);

    fs::rename(partial.path(), target, error);
    if (error) return failed(backdrop, "the finished file couldn't be put in place (" + error.message() + ")");
    partial.keep();
    if (options.progress) options.progress(1.0);
    return target;
}

} // namespace velarion::BackdropLoops
