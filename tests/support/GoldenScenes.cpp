#include "GoldenScenes.h"

#include <algorithm>
#include <cmath>

namespace velarion::testing {

StillImage generatedStill(int width, int height, bool translucent) {
    std::vector<std::uint8_t> bgra(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double fx = (x + 0.5) / width;
            const double fy = (y + 0.5) / height;
            double r = 0.15 + 0.8 * fx;
            double g = 0.2 + 0.6 * fy;
            double b = 0.9 - 0.7 * fx * fy;
            // A bright disc and a dark bar: hard edges.
            const double dx = fx - 0.3;
            const double dy = fy - 0.4;
            if (dx * dx * width * width + dy * dy * height * height < 0.04 * height * height)
                r = 1, g = 0.95, b = 0.3;
            if (fx > 0.6 && fx < 0.8) r *= 0.25, g *= 0.25, b *= 0.25;
            const double a = translucent ? std::clamp(1.1 - fy, 0.2, 1.0) : 1.0;
            std::uint8_t* p = bgra.data() + (static_cast<std::size_t>(y) * width + x) * 4;
            p[0] = static_cast<std::uint8_t>(std::lround(b * a * 255));
            p[1] = static_cast<std::uint8_t>(std::lround(g * a * 255));
            p[2] = static_cast<std::uint8_t>(std::lround(r * a * 255));
            p[3] = static_cast<std::uint8_t>(std::lround(a * 255));
        }
    }
    return *StillImage::fromBGRA(width, height, std::move(bgra));
}

std::shared_ptr<const VideoFrame> generatedVideoFrame(int width, int height) {
    const int chromaWidth = (width + 1) / 2, chromaHeight = (height + 1) / 2;
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(
        static_cast<std::size_t>(width * height + chromaWidth * chromaHeight * 2));
    std::uint8_t* luma = bytes->data();
    std::uint8_t* chroma = luma + width * height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool block = x >= width / 4 && x < width / 2 && y >= height / 4 && y < height / 2;
            luma[y * width + x] = static_cast<std::uint8_t>(block ? 235 : 16 + 200 * x / width);
        }
    for (int y = 0; y < chromaHeight; ++y)
        for (int x = 0; x < chromaWidth; ++x) {
            const bool block = x > chromaWidth * 2 / 3 && y < chromaHeight / 2;
            chroma[(y * chromaWidth + x) * 2] = static_cast<std::uint8_t>(60 + 140 * x / chromaWidth);
            chroma[(y * chromaWidth + x) * 2 + 1] = static_cast<std::uint8_t>(block ? 230 : 70 + 110 * y / chromaHeight);
        }
    return VideoFrame::make(VideoPlaneLayout::nv12, width, height,
                            {VideoPlane{luma, width, width, height},
                             VideoPlane{chroma, chromaWidth * 2, chromaWidth, chromaHeight}, VideoPlane{}},
                            {}, bytes);
}

SceneLayer stillLayer(const StillImage& still, SceneRect frame, SceneScaling scaling) {
    SceneLayer layer;
    layer.id = Uuid::random();
    layer.content = SceneStillContent{still};
    layer.frame = frame;
    layer.scaling = scaling;
    return layer;
}

SceneFrame GoldenScene::frame() const {
    SceneRenderer renderer(width, height);
    for (const auto& [scene, atSeconds] : applied) renderer.apply(scene, surfaces, atSeconds);
    return renderer.drawList(drawAtSeconds);
}

namespace {

OutputScene sceneOf(std::vector<SceneLayer> layers, SceneColor background = SceneColor::black()) {
    OutputScene scene;
    scene.background = background;
    scene.layers = std::move(layers);
    return scene;
}

GoldenScene still(std::string name, std::vector<SceneLayer> layers) {
    GoldenScene golden;
    golden.name = std::move(name);
    golden.applied.emplace_back(sceneOf(std::move(layers), SceneColor{0.1, 0.1, 0.3, 1}), 0);
    return golden;
}

} // namespace

std::vector<GoldenScene> goldenScenes() {
    const StillImage page = generatedStill(160, 90);
    const StillImage wide = generatedStill(120, 40);
    const StillImage tall = generatedStill(40, 90);
    const StillImage card = generatedStill(128, 20, true);
    std::vector<GoldenScene> scenes;

    scenes.push_back(still("full-frame-still", {stillLayer(page)}));
    scenes.push_back(still("letterboxed-still", {stillLayer(wide)}));
    // Covers the whole output but lets the background through at the bottom.
    scenes.push_back(still("translucent-full-frame", {stillLayer(generatedStill(160, 90, true))}));

    SceneLayer lowerThird = stillLayer(card, SceneRect{0.1, 0.08, 0.8, 0.2}, SceneScaling::stretch);
    lowerThird.opacity = 0.9;
    scenes.push_back(still("lower-third", {stillLayer(page), lowerThird}));

    GoldenScene dissolve;
    dissolve.name = "dissolve-half-way";
    SceneLayer before = stillLayer(page);
    before.dissolveSeconds = 1;
    SceneLayer after = stillLayer(wide, SceneRect::full(), SceneScaling::fill);
    after.dissolveSeconds = 1;
    dissolve.applied.emplace_back(sceneOf({before}), 0);
    dissolve.applied.emplace_back(sceneOf({after}), 10);
    dissolve.drawAtSeconds = 10.5;
    scenes.push_back(dissolve);

    SceneLayer rotated = stillLayer(page, SceneRect{0.25, 0.2, 0.5, 0.6}, SceneScaling::stretch);
    rotated.rotationDegrees = 30;
    SceneLayer square;
    square.id = Uuid::random();
    square.content = SceneColorContent{SceneColor{0.9, 0.3, 0.1, 0.6}};
    square.frame = SceneRect{0.6, 0.55, 0.25, 0.3};
    square.rotationDegrees = -45;
    scenes.push_back(still("rotated", {rotated, square}));

    SceneLayer pinned = stillLayer(page, SceneRect{0.1, 0.1, 0.8, 0.8}, SceneScaling::stretch);
    pinned.cornerPin = SceneCornerPin{{0.1, 0.0}, {0.85, 0.15}, {0.0, 1.0}, {1.0, 0.8}};
    scenes.push_back(still("corner-pinned", {pinned}));

    const SceneRect box{0.15, 0.2, 0.7, 0.6};
    for (const auto& [pictureName, picture] : {std::pair{"wide", wide}, std::pair{"tall", tall}}) {
        for (const SceneScaling scaling : {SceneScaling::fit, SceneScaling::fill, SceneScaling::stretch}) {
            SceneLayer frameLayer;
            frameLayer.id = Uuid::random();
            frameLayer.content = SceneColorContent{SceneColor{0.3, 0.3, 0.3, 1}};
            frameLayer.frame = box;
            scenes.push_back(still(std::string("gravity-") + std::string(toString(scaling)) + "-" + pictureName,
                                   {frameLayer, stillLayer(picture, box, scaling)}));
        }
    }

    // A video in planes, one for one. (Scaled, the two back ends filter the
    // chroma in another order, and hard colour edges differ.)
    const SceneID surfaceID = Uuid::random();
    SceneLayer video;
    video.id = Uuid::random();
    video.content = SceneVideoContent{surfaceID};
    GoldenScene golden = still("video-planes", {video});
    golden.surfaces[surfaceID] = std::make_shared<OneFrameVideo>(generatedVideoFrame(160, 90));
    scenes.push_back(std::move(golden));
    return scenes;
}

} // namespace velarion::testing
