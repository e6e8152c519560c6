#pragma once
// The agent's vocabulary: 44 tools, each with a name, the tier that permits
// it, a description written for a language model, and the JSON schema of its
// arguments. The MCP bridge lists them; the bridge and the application both
// check arguments against the same schemas (AgentArguments.h). Names,
// descriptions and schemas are an interface and change only on purpose.
//
// Thread: the catalogue is built once, on first use, and is then read-only;
// any thread.

#include "LiveAgentKit/JSONValue.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velarion {

// What the operator allows an agent: reading is always allowed; running the
// show and editing it each have a switch.
enum class AgentTier { observe, run, edit };

inline constexpr std::array<AgentTier, 3> allAgentTiers{AgentTier::observe, AgentTier::run,
                                                        AgentTier::edit};

std::string_view toString(AgentTier tier);
std::optional<AgentTier> parseAgentTier(std::string_view text);

struct AgentTool {
    std::string name;
    AgentTier tier = AgentTier::observe;
    std::string description;
    JSONValue inputSchema;

    // What MCP's tools/list shows: "name", "description" and "inputSchema".
    JSONValue mcpDescription() const;

    friend bool operator==(const AgentTool&, const AgentTool&) = default;
};

namespace agentTools {

// Every tool, in catalogue order.
const std::vector<AgentTool>& all();

// The tool of exactly that name, or null.
const AgentTool* tool(std::string_view name);

// The parts of the catalogue, in order: observing, running and the app's own
// life (get_show … lock_show), then building shows (new_show … redo). `all`
// joins them.
std::vector<AgentTool> liveTools();
std::vector<AgentTool> showTools();

} // namespace agentTools

} // namespace velarion
