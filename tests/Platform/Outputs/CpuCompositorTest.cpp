// The CPU compositor on the golden scenes, and probes of pixels whose value
// follows from the scene alone (so a wrong golden can't hide a wrong picture).

#include "FakeOutputDisplays.h"
#include "GoldenScenes.h"
#include "OutputsTestSupport.h"
#include "VirtualScheduler.h"

#include "LiveEngine/ScreenOutputManager.h"
#include "Platform/Outputs/CpuSceneMirror.h"

#include <QGuiApplication>

#include <cmath>

namespace velarion::testing {
namespace {

RasterImage drawn(const GoldenScene& scene) {
    RasterImage raster(scene.width, scene.height);
    CpuCompositor::draw(scene.frame(), raster);
    return raster;
}

const GoldenScene& named(const std::vector<GoldenScene>& scenes, const std::string& name) {
    for (const GoldenScene& scene : scenes)
        if (scene.name == name) return scene;
    throw std::runtime_error("no golden scene " + name);
}

QRgb texel(const SceneLayer& layer, int x, int y) {
    const StillImage& still = std::get<SceneStillContent>(layer.content).image;
    const std::uint8_t* p = still.bgra().data() + (static_cast<std::size_t>(y) * still.width() + x) * 4;
    return qRgba(p[2], p[1], p[0], p[3]);
}

TEST(CpuCompositor, DrawsEveryGoldenScene) {
    for (const GoldenScene& scene : goldenScenes()) {
        SCOPED_TRACE(scene.name);
        EXPECT_TRUE(matchesGolden(toImage(drawn(scene)), scene.name));
    }
}

TEST(CpuCompositor, PixelsFollowFromTheScene) {
    const auto scenes = goldenScenes();
    const QRgb background = qRgb(26, 26, 77);
    const QRgb box = qRgb(77, 77, 77);
    const auto& full = named(scenes, "full-frame-still");
    struct Probe {
        const char* scene;
        int x, y; // top-left origin
        QRgb expected;
    };
    const Probe probes[] = {
        // A picture at its own size is copied texel for texel.
        {"full-frame-still", 7, 11, texel(full.applied[0].first.layers[0], 7, 11)},
        {"full-frame-still", 159, 89, texel(full.applied[0].first.layers[0], 159, 89)},
        // 3:1 fitted into 16:9: bars of background above and below.
        {"letterboxed-still", 80, 3, background},
        {"letterboxed-still", 80, 86, background},
        // Fit keeps the box's colour beside a tall picture, not above it.
        {"gravity-fit-tall", 30, 45, box},
        {"gravity-fit-wide", 80, 24, box},
        // Fill and stretch cover the box.
        {"gravity-fill-tall", 80, 75, background},
        // Outside the box all is background.
        {"gravity-stretch-wide", 10, 45, background},
        // The rotated colour square's centre: 60% orange over the picture's
        // background.
        {"rotated", 116, 27, qRgb(qRound(0.9 * 0.6 * 255 + 0.4 * 26), qRound(0.3 * 0.6 * 255 + 0.4 * 26),
                                  qRound(0.1 * 0.6 * 255 + 0.4 * 77))},
        {"rotated", 2, 2, background},
    };
    for (const Probe& probe : probes) {
        SCOPED_TRACE(std::string(probe.scene) + " at " + std::to_string(probe.x) + "," + std::to_string(probe.y));
        const QImage image = toImage(drawn(named(scenes, probe.scene))).convertToFormat(QImage::Format_ARGB32);
        EXPECT_LE(channelDifference(image.pixel(probe.x, probe.y), probe.expected), parityLevels);
    }
}

TEST(CpuCompositor, AVideoLayerDrawsItsSurfacesLatestFrame) {
    struct Surface final : SceneVideoSource {
        bool hasFrameToShow() const override { return frame != nullptr; }
        std::shared_ptr<const StillPixels> latestFrame() const override { return frame; }
        std::shared_ptr<const StillPixels> frame;
    };
    auto surface = std::make_shared<Surface>();
    SceneFrame frame;
    frame.operations.push_back(SceneDrawOperation{SceneID::random(), SceneVideoContent{SceneID::random()},
                                                  SceneGravity::resize, ScenePixelRect{0, 0, 2, 1},
                                                  SceneMatrix4::identity(), 1, surface});
    RasterImage raster(2, 1);
    CpuCompositor::draw(frame, raster);
    EXPECT_EQ(raster.bgra, std::vector<std::uint8_t>({0, 0, 0, 255, 0, 0, 0, 255})) << "no frame yet: background";
    for (const std::uint8_t level : {40, 200}) {
        surface->frame = std::make_shared<StillPixels>(StillPixels{2, 1, {level, 0, 0, 255, 0, level, 0, 255}});
        CpuCompositor::draw(frame, raster);
        EXPECT_EQ(raster.bgra, surface->frame->bgra) << "the newest frame, drawn as it is";
    }
}

} // namespace
} // namespace velarion::testing
