#include "RecordingOutputManager.h"

#include <stdexcept>

namespace velarion::testing {

void RecordingOutputManager::apply(const OutputScene& scene, const LayerKinds& kinds,
                                   const VideoSurfaces& /*surfaces*/, const LayerRoutes& routes,
                                   const LyricPartPictures& lyricParts,
                                   const std::optional<SceneID>& lyricLayerID) {
    AppliedOutputCall call{scene, kinds, routes, {}, lyricLayerID};
    for (const auto& entry : lyricParts) call.lyricLineLimits.insert(entry.first);
    applied.push_back(std::move(call));
}

void RecordingOutputManager::updateStage(const ConfidenceState& confidence,
                                         const std::optional<TimerState>& timer,
                                         const std::optional<std::string>& nextCueName,
                                         double wallSeconds) {
    stageUpdates.push_back({confidence, timer, nextCueName, wallSeconds});
}

std::optional<std::string> RecordingOutputManager::programOutputID() const {
    return programSelection_ ? programSelection_ : programID;
}

std::set<SceneID> RecordingOutputManager::programLayerIDs() const {
    std::set<SceneID> ids;
    if (applied.empty()) return ids;
    const AppliedOutputCall& last = applied.back();
    const std::optional<std::string> program = programOutputID();
    for (const SceneLayer& layer : last.scene.layers) {
        auto route = last.routes.find(layer.id);
        if (route == last.routes.end() || (program && route->second.contains(*program))) {
            ids.insert(layer.id);
        }
    }
    return ids;
}

void RecordingOutputManager::emitHealth(std::vector<OutputHealth> health) {
    reportedHealth = std::move(health);
    if (onHealthChange_) onHealthChange_(reportedHealth);
}

const AppliedOutputCall& RecordingOutputManager::lastApply() const {
    if (applied.empty()) throw std::logic_error("nothing was applied to the outputs");
    return applied.back();
}

} // namespace velarion::testing
