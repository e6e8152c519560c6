#include "Live/AppModelAgentHost.h"

#include "LiveAgentKit/AgentFailure.h"

namespace velarion {

std::optional<EngineState> AppModelAgentHost::engineState() const {
    if (const EngineState* state = model_.engineState()) return *state;
    return std::nullopt;
}

std::vector<AudioDevice> AppModelAgentHost::audioOutputs() const {
    return devices_ != nullptr ? devices_->outputs() : std::vector<AudioDevice>{};
}

void AppModelAgentHost::agentDrawSlides(const MediaItem& item, SlidesDrawn done) {
    if (!model_.show() || !model_.package()) return done(std::nullopt, "No show is open.");
    // Exactly one of the two runs.
    auto shared = std::make_shared<SlidesDrawn>(std::move(done));
    model_.drawPages(
        item, [shared](DrawnPages result) { (*shared)(std::move(result.item), result.failure); },
        [shared](const std::string& reason) { (*shared)(std::nullopt, reason); });
}

} // namespace velarion
