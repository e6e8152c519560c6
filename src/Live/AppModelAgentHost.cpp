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

MediaItem AppModelAgentHost::agentDrawSlides(const MediaItem& item) {
    if (!model_.show() || !model_.package()) throw AgentFailure("No show is open.");
    return slidePages_.update(item, *model_.package(), model_.show()->library);
}

} // namespace velarion
