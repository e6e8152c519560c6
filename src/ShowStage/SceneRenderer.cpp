#include "ShowStage/SceneRenderer.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>

namespace velarion {

namespace {

SceneGravity gravityFor(SceneScaling scaling) {
    switch (scaling) {
    case SceneScaling::fit: return SceneGravity::resizeAspect;
    case SceneScaling::fill: return SceneGravity::resizeAspectFill;
    case SceneScaling::stretch: return SceneGravity::resize;
    }
    return SceneGravity::resizeAspect;
}

ScenePoint minus(ScenePoint a, ScenePoint b) { return ScenePoint{a.x - b.x, a.y - b.y}; }

} // namespace

SceneRenderer::SceneRenderer(double widthPixels, double heightPixels)
    : widthPixels_(widthPixels), heightPixels_(heightPixels) {}

void SceneRenderer::apply(const OutputScene& scene, const SceneSurfaces& surfaces,
                          double nowSeconds) {
    background_ = scene.background;

    wantedIDs_.clear();
    for (const SceneLayer& layer : scene.layers) wantedIDs_.push_back(layer.id);
    std::sort(wantedIDs_.begin(), wantedIDs_.end());

    // The managed layers are exactly the previous scene's; walking that
    // bottom first keeps the order of simultaneous fades from depending on
    // hashing.
    if (currentScene_) {
        for (const SceneLayer& previous : currentScene_->layers) {
            if (!std::binary_search(wantedIDs_.begin(), wantedIDs_.end(), previous.id) &&
                managed_.contains(previous.id))
                removeLayer(previous.id, nowSeconds);
        }
    }

    for (std::size_t index = 0; index < scene.layers.size(); ++index) {
        const SceneLayer& layer = scene.layers[index];
        auto [found, made] = managed_.try_emplace(layer.id);
        SceneManagedLayer& record = found->second;
        const auto opacity = static_cast<float>(layer.opacity);
        if (made && layer.dissolveSeconds > 0) {
            record.dissolveIn = SceneOpacityRamp{0, opacity, nowSeconds, layer.dissolveSeconds};
        } else if (record.dissolveIn) {
            // An opacity change mid-dissolve is a cut to the new target, not
            // a second dissolve.
            record.dissolveIn->toOpacity = opacity;
        }
        record.zPosition = static_cast<double>(index);
        record.opacity = opacity;
        place(record, layer);
        update(record, layer, surfaces);
        record.description = layer;
        lastDescriptions_[layer.id] = layer;
    }

    currentScene_ = scene;
    rebuildDrawOrder();
}

void SceneRenderer::removeLayer(const SceneID& id, double nowSeconds) {
    auto node = managed_.extract(id);
    const auto last = lastDescriptions_.find(id);
    const double dissolveSeconds = last != lastDescriptions_.end() ? last->second.dissolveSeconds : 0;
    if (dissolveSeconds > 0) {
        SceneManagedLayer& layer = node.mapped();
        const float present = layer.opacityAt(nowSeconds);
        layer.dissolveIn.reset();
        fadingOut_.push_back(SceneFadingLayer{
            std::move(layer), SceneOpacityRamp{present, 0, nowSeconds, dissolveSeconds}});
    }
    stillIdentities_.erase(id);
    lastDescriptions_.erase(id);
}

void SceneRenderer::resize(double widthPixels, double heightPixels) {
    widthPixels_ = widthPixels;
    heightPixels_ = heightPixels;
}

void SceneRenderer::layout() {
    for (auto& [id, record] : managed_) place(record, record.description);
    // Fading layers too, or they would jump against the new root mid-fade.
    for (SceneFadingLayer& fading : fadingOut_) place(fading.layer, fading.layer.description);
}

void SceneRenderer::place(SceneManagedLayer& record, const SceneLayer& description) const {
    const SceneRect& frame = description.frame;
    const double left = frame.x * widthPixels_;
    const double bottom = frame.y * heightPixels_;
    const double width = frame.width * widthPixels_;
    const double height = frame.height * heightPixels_;
    record.bounds = ScenePixelRect{0, 0, width, height};
    record.position = ScenePoint{left + width / 2, bottom + height / 2};

    const SceneMatrix4 rotation =
        description.rotationDegrees == 0
            ? SceneMatrix4::identity()
            : SceneMatrix4::rotationZ(description.rotationDegrees * std::numbers::pi / 180);
    const auto& pin = description.cornerPin;
    const bool pinned =
        pin && *pin != SceneCornerPin::identity() && width > 0 && height > 0;
    // Pinned first, then rotated: the pin belongs to the layer's own shape.
    record.transform = pinned ? rotation * pinTransform(*pin, width, height) : rotation;
}

void SceneRenderer::update(SceneManagedLayer& record, const SceneLayer& description,
                           const SceneSurfaces& surfaces) {
    if (const auto* color = std::get_if<SceneColorContent>(&description.content)) {
        record.contents = *color;
        return;
    }
    record.gravity = gravityFor(description.scaling);
    if (const auto* still = std::get_if<SceneStillContent>(&description.content)) {
        const SceneID& stillID = still->image.id();
        auto [shown, first] = stillIdentities_.try_emplace(description.id, stillID);
        // Same id is the same picture whatever its pixels: uploading is what
        // a cut between slides must not pay for twice.
        if (!first && shown->second == stillID &&
            std::holds_alternative<SceneStillContent>(record.contents))
            return;
        shown->second = stillID;
        record.contents = *still;
        ++record.stillUploads;
        return;
    }
    const auto& video = std::get<SceneVideoContent>(description.content);
    record.contents = video;
    const auto source = surfaces.find(video.surfaceID);
    record.videoSource = source != surfaces.end() ? source->second : nullptr;
}

SceneMatrix4 SceneRenderer::pinTransform(const SceneCornerPin& pin, double width, double height) {
    if (!(width > 0) || !(height > 0)) return SceneMatrix4::identity();
    const ScenePoint p0 = pin.topLeft;
    const ScenePoint p1 = pin.topRight;
    const ScenePoint p2 = pin.bottomLeft;
    const ScenePoint p3 = pin.bottomRight;

    const ScenePoint d1 = minus(p1, p3);
    const ScenePoint d2 = minus(p2, p3);
    const double den = d1.x * d2.y - d1.y * d2.x;
    if (std::abs(den) <= 1e-12) return SceneMatrix4::identity();

    const ScenePoint s{p0.x - p1.x - p2.x + p3.x, p0.y - p1.y - p2.y + p3.y};
    const double g = (s.x * d2.y - s.y * d2.x) / den;
    const double h = (d1.x * s.y - d1.y * s.x) / den;

    SceneMatrix4 homography;
    homography.at(0, 0) = p1.x - p0.x + g * p1.x;
    homography.at(0, 1) = p2.x - p0.x + h * p2.x;
    homography.at(0, 3) = p0.x;
    homography.at(1, 0) = p1.y - p0.y + g * p1.y;
    homography.at(1, 1) = p2.y - p0.y + h * p2.y;
    homography.at(1, 3) = p0.y;
    homography.at(3, 0) = g;
    homography.at(3, 1) = h;

    // Centred layer coordinates -> unit square -> pinned unit -> back.
    return SceneMatrix4::translation(-width / 2, -height / 2) *
           SceneMatrix4::scale(width, height) * homography *
           SceneMatrix4::scale(1 / width, 1 / height) *
           SceneMatrix4::translation(width / 2, height / 2);
}

void SceneRenderer::rebuildDrawOrder() {
    drawOrder_.clear();
    std::size_t sequence = 0;
    for (const SceneFadingLayer& fading : fadingOut_)
        drawOrder_.push_back(DrawEntry{&fading.layer, &fading.fadeOut, sequence++});
    for (const auto& [id, record] : managed_)
        drawOrder_.push_back(DrawEntry{&record, nullptr, sequence++});
    // By z; at equal z fading layers beneath, oldest first.
    std::sort(drawOrder_.begin(), drawOrder_.end(), [](const DrawEntry& a, const DrawEntry& b) {
        return std::tuple(a.layer->zPosition, a.fadeOut == nullptr, a.sequence) <
               std::tuple(b.layer->zPosition, b.fadeOut == nullptr, b.sequence);
    });
}

SceneFrame SceneRenderer::drawList(double atSeconds) const {
    SceneFrame frame;
    drawList(atSeconds, frame);
    return frame;
}

void SceneRenderer::drawList(double atSeconds, SceneFrame& frame) const {
    frame.background = background_;
    frame.operations.clear();
    for (const DrawEntry& entry : drawOrder_) {
        const SceneManagedLayer& layer = *entry.layer;
        const float opacity =
            entry.fadeOut ? entry.fadeOut->valueAt(atSeconds) : layer.opacityAt(atSeconds);
        if (!(opacity > 0)) continue;
        const bool video = std::holds_alternative<SceneVideoContent>(layer.contents);
        if (video && !layer.videoSource) continue;

        SceneDrawOperation& operation = frame.operations.emplace_back();
        operation.layerID = layer.description.id;
        operation.content = layer.contents;
        operation.gravity = layer.gravity;
        operation.rect = ScenePixelRect{layer.position.x - layer.bounds.width / 2,
                                        layer.position.y - layer.bounds.height / 2,
                                        layer.bounds.width, layer.bounds.height};
        operation.transform = layer.transform;
        operation.opacity = opacity;
        if (video) operation.surface = layer.videoSource;
    }
}

void SceneRenderer::collectFinished(double atSeconds) {
    std::vector<SceneID> faded;
    for (const SceneFadingLayer& fading : fadingOut_) {
        if (fading.fadeOut.isFinishedAt(atSeconds)) faded.push_back(fading.layer.description.id);
    }
    if (!faded.empty()) {
        std::erase_if(fadingOut_, [atSeconds](const SceneFadingLayer& fading) {
            return fading.fadeOut.isFinishedAt(atSeconds);
        });
        rebuildDrawOrder();
    }
    for (auto& [id, record] : managed_) {
        if (record.dissolveIn && record.dissolveIn->isFinishedAt(atSeconds))
            record.dissolveIn.reset();
    }
    if (faded.empty() || !fadeOutFinished_) return;
    // A copy, so the callback may replace itself or apply a new scene.
    const auto callback = fadeOutFinished_;
    for (const SceneID& id : faded) callback(id);
}

bool SceneRenderer::isAnimating(double atSeconds) const {
    for (const SceneFadingLayer& fading : fadingOut_) {
        if (!fading.fadeOut.isFinishedAt(atSeconds)) return true;
    }
    for (const auto& [id, record] : managed_) {
        if (record.dissolveIn && !record.dissolveIn->isFinishedAt(atSeconds)) return true;
    }
    return false;
}

void SceneRenderer::setFadeOutFinished(std::function<void(SceneID)> callback) {
    fadeOutFinished_ = std::move(callback);
}

bool SceneRenderer::isReadyForDisplay(const SceneID& layerID) const {
    const auto found = managed_.find(layerID);
    if (found == managed_.end()) return false;
    const SceneManagedLayer& record = found->second;
    return std::holds_alternative<SceneVideoContent>(record.contents) && record.videoSource &&
           record.videoSource->hasFrameToShow();
}

const SceneManagedLayer* SceneRenderer::managedLayer(const SceneID& layerID) const {
    const auto found = managed_.find(layerID);
    return found != managed_.end() ? &found->second : nullptr;
}

} // namespace velarion
