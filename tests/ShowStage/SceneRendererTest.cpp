#include "ShowStage/OutputScene.h"
#include "ShowStage/SceneRenderer.h"
#include "ShowStage/VideoFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace velarion {
namespace {

constexpr double rootWidth = 1000;
constexpr double rootHeight = 500;

SceneLayer colorLayer(double opacity = 1, double dissolveSeconds = 0) {
    return SceneLayer{.id = Uuid::random(),
                      .content = SceneColorContent{SceneColor{1, 0, 0, 1}},
                      .opacity = opacity,
                      .dissolveSeconds = dissolveSeconds};
}

OutputScene sceneOf(std::vector<SceneLayer> layers) {
    return OutputScene{.destinationID = Uuid::nil(), .layers = std::move(layers)};
}

StillImage still(std::uint8_t value, std::optional<SceneID> id = std::nullopt) {
    std::vector<std::uint8_t> pixels(16, value);
    return *(id ? StillImage::withID(*id, 2, 2, pixels) : StillImage::fromBGRA(2, 2, pixels));
}

class FakeVideoSource : public SceneVideoSource {
public:
    explicit FakeVideoSource(bool hasFrame) : hasFrame_(hasFrame) {}
    bool hasFrameToShow() const override { return hasFrame_; }

private:
    bool hasFrame_;
};

std::vector<SceneID> drawnIDs(const SceneFrame& frame) {
    std::vector<SceneID> ids;
    for (const SceneDrawOperation& operation : frame.operations) ids.push_back(operation.layerID);
    return ids;
}

TEST(SceneRendererTest, ReorderRestacksTheSameRecordsWithoutDissolving) {
    SceneRenderer renderer(rootWidth, rootHeight);
    const SceneLayer a = colorLayer(1, 2), b = colorLayer(0.5, 2), c = colorLayer(1, 2);
    renderer.apply(sceneOf({a, b, c}), {}, 0);
    renderer.collectFinished(10);
    const SceneManagedLayer* recordOfB = renderer.managedLayer(b.id);

    renderer.apply(sceneOf({c, a, b}), {}, 10);
    EXPECT_EQ(renderer.managedLayer(b.id), recordOfB) << "a staying id keeps its record";
    EXPECT_EQ(renderer.managedLayer(c.id)->zPosition, 0);
    EXPECT_EQ(renderer.managedLayer(a.id)->zPosition, 1);
    EXPECT_EQ(recordOfB->zPosition, 2);
    EXPECT_FALSE(renderer.isAnimating(10));
    EXPECT_TRUE(renderer.fadingOutLayers().empty());

    const SceneFrame frame = renderer.drawList(10);
    EXPECT_EQ(drawnIDs(frame), (std::vector<SceneID>{c.id, a.id, b.id}));
    EXPECT_FLOAT_EQ(frame.operations[2].opacity, 0.5f);
}

TEST(SceneRendererTest, NewLayerDissolvesInToItsOwnOpacityAndOthersCut) {
    SceneRenderer renderer(rootWidth, rootHeight);
    SceneLayer existing = colorLayer(1, 3);
    renderer.apply(sceneOf({existing}), {}, 0);

    existing.opacity = 0.4; // a change in place is a cut, whatever its dissolve
    existing.frame = SceneRect{0, 0, 0.5, 0.5};
    const SceneLayer added = colorLayer(0.6, 1.5);
    renderer.apply(sceneOf({existing, added}), {}, 10);

    EXPECT_EQ(drawnIDs(renderer.drawList(10)), (std::vector<SceneID>{existing.id}))
        << "fully transparent at its start";
    const SceneFrame midway = renderer.drawList(10.75);
    ASSERT_EQ(midway.operations.size(), 2u);
    EXPECT_FLOAT_EQ(midway.operations[0].opacity, 0.4f);
    EXPECT_FLOAT_EQ(midway.operations[1].opacity, 0.3f);
    EXPECT_TRUE(renderer.isAnimating(11.4));
    EXPECT_FALSE(renderer.isAnimating(11.5));
    EXPECT_FLOAT_EQ(renderer.drawList(20).operations[1].opacity, 0.6f);

    renderer.collectFinished(11.5);
    EXPECT_FALSE(renderer.managedLayer(added.id)->dissolveIn);
    EXPECT_FLOAT_EQ(renderer.drawList(11.5).operations[1].opacity, 0.6f);
}

TEST(SceneRendererTest, DroppedLayerFadesOverItsLastDissolveFromItsPresentOpacity) {
    SceneRenderer renderer(rootWidth, rootHeight);
    std::vector<SceneID> finished;
    renderer.setFadeOutFinished([&](SceneID id) { finished.push_back(id); });

    const SceneLayer fading = colorLayer(0.8, 2);
    const SceneLayer halfIn = colorLayer(0.8, 2);
    const SceneLayer cut = colorLayer(1, 0);
    renderer.apply(sceneOf({fading, cut}), {}, 0);
    renderer.apply(sceneOf({fading, halfIn}), {}, 4);
    EXPECT_EQ(drawnIDs(renderer.drawList(4)), (std::vector<SceneID>{fading.id}))
        << "a cut layer goes at once";

    // The new scene's only layer is a cut; the dropped one still takes its own 2 s.
    const SceneLayer next = colorLayer(1, 0);
    renderer.apply(sceneOf({next}), {}, 5);
    EXPECT_EQ(renderer.managedLayer(fading.id), nullptr);
    EXPECT_EQ(renderer.managedLayer(halfIn.id), nullptr);
    ASSERT_EQ(renderer.fadingOutLayers().size(), 2u);

    const SceneFrame frame = renderer.drawList(6);
    ASSERT_EQ(frame.operations.size(), 3u);
    EXPECT_EQ(frame.operations[0].layerID, fading.id);
    EXPECT_FLOAT_EQ(frame.operations[0].opacity, 0.4f);
    EXPECT_EQ(frame.operations[2].layerID, halfIn.id) << "keeps its former z, above the new z 0";
    EXPECT_FLOAT_EQ(frame.operations[2].opacity, 0.2f) << "from the 0.4 it had reached";

    renderer.collectFinished(6.9);
    EXPECT_TRUE(finished.empty());
    renderer.collectFinished(7);
    renderer.collectFinished(8);
    EXPECT_EQ(finished, (std::vector<SceneID>{fading.id, halfIn.id}));
    EXPECT_TRUE(renderer.fadingOutLayers().empty());
    EXPECT_EQ(drawnIDs(renderer.drawList(8)), (std::vector<SceneID>{next.id}));
    EXPECT_FALSE(renderer.isAnimating(8));
}

TEST(SceneRendererTest, SameStillIdIsNotUploadedAgain) {
    SceneRenderer renderer(rootWidth, rootHeight);
    const StillImage first = still(10);
    SceneLayer layer{.id = Uuid::random(), .content = SceneStillContent{first},
                     .scaling = SceneScaling::fill};
    renderer.apply(sceneOf({layer}), {}, 0);
    const SceneManagedLayer* record = renderer.managedLayer(layer.id);
    EXPECT_EQ(record->stillUploads, 1u);
    EXPECT_EQ(record->gravity, SceneGravity::resizeAspectFill);

    layer.content = SceneStillContent{still(200, first.id())};
    renderer.apply(sceneOf({layer}), {}, 1);
    EXPECT_EQ(record->stillUploads, 1u);
    EXPECT_EQ(std::get<SceneStillContent>(record->contents).image.pixels(), first.pixels());

    layer.content = SceneStillContent{first.freshCopy()};
    renderer.apply(sceneOf({layer}), {}, 2);
    EXPECT_EQ(record->stillUploads, 2u);
}

TEST(SceneRendererTest, OnlyAVideoWithAFrameIsReadyForDisplay) {
    SceneRenderer renderer(rootWidth, rootHeight);
    const SceneID readySurface = Uuid::random(), waitingSurface = Uuid::random();
    const SceneID lateSurface = Uuid::random();
    const SceneLayer picture{.id = Uuid::random(), .content = SceneStillContent{still(1)}};
    const SceneLayer ready{.id = Uuid::random(), .content = SceneVideoContent{readySurface}};
    const SceneLayer waiting{.id = Uuid::random(), .content = SceneVideoContent{waitingSurface}};
    const SceneLayer late{.id = Uuid::random(), .content = SceneVideoContent{lateSurface}};
    SceneSurfaces surfaces{{readySurface, std::make_shared<FakeVideoSource>(true)},
                           {waitingSurface, std::make_shared<FakeVideoSource>(false)}};
    const OutputScene scene = sceneOf({picture, ready, waiting, late});
    renderer.apply(scene, surfaces, 0);

    EXPECT_FALSE(renderer.isReadyForDisplay(picture.id));
    EXPECT_FALSE(renderer.isReadyForDisplay(Uuid::random()));
    EXPECT_TRUE(renderer.isReadyForDisplay(ready.id));
    EXPECT_FALSE(renderer.isReadyForDisplay(waiting.id));
    EXPECT_FALSE(renderer.isReadyForDisplay(late.id));
    const SceneFrame frame = renderer.drawList(0);
    EXPECT_EQ(drawnIDs(frame), (std::vector<SceneID>{picture.id, ready.id, waiting.id}))
        << "a missing surface shows nothing";
    EXPECT_EQ(frame.operations[1].surface, surfaces[readySurface]);

    surfaces[lateSurface] = std::make_shared<FakeVideoSource>(true);
    renderer.apply(scene, surfaces, 1);
    EXPECT_TRUE(renderer.isReadyForDisplay(late.id));
}

TEST(SceneRendererTest, FrameBecomesAPixelRectFromTheBottomAndFollowsResize) {
    SceneRenderer renderer(rootWidth, rootHeight);
    SceneLayer layer = colorLayer();
    layer.frame = SceneRect{0.1, 0.2, 0.5, 0.25};
    renderer.apply(OutputScene{.background = SceneColor{0, 0, 1, 1}, .layers = {layer}}, {}, 0);

    const SceneFrame frame = renderer.drawList(0);
    EXPECT_EQ(frame.background, (SceneColor{0, 0, 1, 1}));
    EXPECT_EQ(frame.operations.at(0).rect, (ScenePixelRect{100, 100, 500, 125}));
    const SceneManagedLayer* record = renderer.managedLayer(layer.id);
    EXPECT_EQ(record->bounds, (ScenePixelRect{0, 0, 500, 125}));
    EXPECT_EQ(record->position, (ScenePoint{350, 162.5}));

    renderer.resize(2000, 1000);
    renderer.layout();
    EXPECT_EQ(renderer.drawList(0).operations.at(0).rect, (ScenePixelRect{200, 200, 1000, 250}));
    EXPECT_EQ(record->position, (ScenePoint{700, 325}));
}

// The scene values whose equality is written by hand: a still image is the
// same picture as long as its id is, whatever its pixels.
std::vector<std::uint8_t> solid(int width, int height, std::uint8_t value) {
    return std::vector<std::uint8_t>(static_cast<std::size_t>(width * height * 4), value);
}

TEST(StillImageTest, EqualityFollowsTheIdNotThePixels) {
    auto red = StillImage::fromBGRA(2, 2, solid(2, 2, 10));
    auto sameRedAgain = StillImage::fromBGRA(2, 2, solid(2, 2, 10));
    ASSERT_TRUE(red && sameRedAgain);
    EXPECT_NE(*red, *sameRedAgain) << "a fresh still of the same picture is another picture";

    StillImage copy = *red;
    EXPECT_EQ(copy, *red);

    // Same id, other pixels: still the same picture, so a renderer won't upload it again.
    auto repainted = StillImage::withID(red->id(), 1, 1, solid(1, 1, 200));
    ASSERT_TRUE(repainted);
    EXPECT_EQ(*repainted, *red);
    EXPECT_EQ(repainted->width(), 1);

    StillImage renamed = red->freshCopy();
    EXPECT_NE(renamed, *red);
    EXPECT_EQ(renamed.pixels().get(), red->pixels().get()) << "a fresh id must not copy pixels";
}

TEST(StillImageTest, RejectsBuffersThatDoNotMatchTheSize) {
    EXPECT_FALSE(StillImage::fromBGRA(0, 2, {}));
    EXPECT_FALSE(StillImage::fromBGRA(2, -1, {}));
    EXPECT_FALSE(StillImage::fromBGRA(2, 2, {1, 2, 3}));
    auto wrongLength = solid(3, 2, 0);
    wrongLength.pop_back();
    EXPECT_FALSE(StillImage::fromBGRA(3, 2, wrongLength));

    auto picture = StillImage::fromBGRA(3, 2, solid(3, 2, 7));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width(), 3);
    EXPECT_EQ(picture->height(), 2);
    EXPECT_EQ(picture->bgra().size(), 24u);
}

// A frame of `width` by 2 in NV12 whose chroma columns are given.
std::shared_ptr<const VideoFrame> nv12(VideoColorimetry colorimetry, std::uint8_t luma,
                                       std::vector<std::pair<std::uint8_t, std::uint8_t>> chroma) {
    const int width = static_cast<int>(chroma.size()) * 2;
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(static_cast<std::size_t>(width) * 2, luma);
    for (const auto& [cb, cr] : chroma) bytes->insert(bytes->end(), {cb, cr});
    const std::uint8_t* data = bytes->data();
    return VideoFrame::make(VideoPlaneLayout::nv12, width, 2,
                            {VideoPlane{data, width, width, 2}, VideoPlane{data + width * 2, width, width / 2, 1}, {}},
                            colorimetry, bytes);
}

TEST(VideoFrameTest, ConvertsWithTheFramesOwnMatrixAndRange) {
    struct Case {
        VideoColorimetry colorimetry;
        std::uint8_t y, cb, cr;
        int red, green, blue;
    };
    using enum VideoColorMatrix;
    const Case cases[] = {
        {{bt709, false}, 16, 128, 128, 0, 0, 0},     {{bt709, false}, 235, 128, 128, 255, 255, 255},
        {{bt709, false}, 63, 102, 240, 255, 1, 0},   {{bt601, false}, 81, 90, 240, 254, 0, 0},
        {{bt601, true}, 76, 85, 255, 254, 0, 0},     {{bt2020, false}, 126, 160, 128, 128, 122, 197},
    };
    for (const Case& c : cases) {
        const auto pixels = nv12(c.colorimetry, c.y, {{c.cb, c.cr}})->bgra();
        const std::uint8_t* p = pixels->bgra.data();
        EXPECT_LE(std::max({std::abs(p[2] - c.red), std::abs(p[1] - c.green), std::abs(p[0] - c.blue)}), 1)
            << int(c.y) << "," << int(c.cb) << "," << int(c.cr);
        EXPECT_EQ(p[3], 255);
    }
}

TEST(VideoFrameTest, ChromaIsSampledBetweenItsSitesAsATextureSamplerWould) {
    // Studio-range grey with the red difference rising by 56 over one column.
    const auto frame = nv12({VideoColorMatrix::bt709, false}, 126, {{128, 128}, {128, 184}});
    const auto pixels = frame->bgra();
    EXPECT_EQ(pixels, frame->bgra()) << "converted once";
    const int expected[4] = {128, 153, 203, 228};
    for (int x = 0; x < 4; ++x)
        for (int y = 0; y < 2; ++y) EXPECT_NEAR(pixels->bgra[static_cast<std::size_t>((y * 4 + x) * 4 + 2)], expected[x], 1) << x;
}

} // namespace
} // namespace velarion
