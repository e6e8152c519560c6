#include "LiveAgentKit/AgentTools.h"

namespace velarion {

std::string_view toString(AgentTier tier) {
    switch (tier) {
    case AgentTier::observe:
        return "observe";
    case AgentTier::run:
        return "run";
    case AgentTier::edit:
        return "edit";
    }
    return "observe";
}

std::optional<AgentTier> parseAgentTier(std::string_view text) {
    for (AgentTier tier : allAgentTiers) {
        if (toString(tier) == text)
            return tier;
    }
    return std::nullopt;
}

JSONValue AgentTool::mcpDescription() const {
    return JSONValue::Object{
        {"name", name},
        {"description", description},
        {"inputSchema", inputSchema},
    };
}

namespace agentTools {

const std::vector<AgentTool>& all() {
    static const std::vector<AgentTool> tools = [] {
        std::vector<AgentTool> joined = liveTools();
        std::vector<AgentTool> building = showTools();
        joined.insert(joined.end(), building.begin(), building.end());
        return joined;
    }();
    return tools;
}

const AgentTool* tool(std::string_view name) {
    for (const AgentTool& candidate : all()) {
        if (candidate.name == name)
            return &candidate;
    }
    return nullptr;
}

} // namespace agentTools

} // namespace velarion
