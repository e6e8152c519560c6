#pragma once
// The `velarion-mcp` program: an agent host's MCP connection on standard
// input and output, passed on to the running application over the agent
// socket. It owns no show state.
//
// Each line is answered by `MCPServer`; a tool call whose arguments pass the
// check goes to the application, and whatever goes wrong on the way (nothing
// listening, no answer in time, the connection lost) comes back as a tool
// result with "isError" true and the socket error's own words. Two tools are
// the bridge's own business:
// - `launch_app` asks the application; when nothing listens it opens the
//   `velarion` program beside the bridge, detached, and answers once a call
//   on the socket is answered, or says why it gave up. An answer in any
//   words counts: with no show open the application refuses most tools.
// - `restart_app` is passed on; once the application has agreed, the bridge
//   waits for it to close the connection and then for a call on the socket
//   to succeed again, so the agent's next call finds it back.
// Every wait is bounded by the settings: a call never hangs forever.
//
// Thread: one thread at a time; calls block, one tool at a time, which keeps
// the socket client's blocking calls safe. Lifetime: an application it opened
// lives on after the bridge.

#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveAgentKit/AgentSocketPath.h"
#include "LiveAgentKit/JSONValue.h"
#include "LiveAgentKit/MCPServer.h"

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velarion {

class DetachedProcess;

namespace mcpBridge {
// The `velarion` program in the folder of this process's own executable,
// empty when that can't be found out.
std::string applicationBesideBridge();
} // namespace mcpBridge

struct MCPBridgeSettings {
    std::string socketPath = agentSocketPath::standard();
    // What `launch_app` opens.
    std::string applicationPath = mcpBridge::applicationBesideBridge();
    // How long the application may take to answer a call (each read and
    // write of it); the tools that copy files, decks included, get longer.
    int callTimeoutSeconds = 30;
    int slowCallTimeoutSeconds = 300;
    // One call that checks whether the application answers.
    int probeTimeoutSeconds = 2;
    // From opening the application until it answers.
    double launchWaitSeconds = 30;
    // How long the socket may still take to answer once the opened program
    // has ended, before the bridge says it closed while starting.
    double endedGraceSeconds = 3;
    // From the application's agreement to restart until it has closed (it
    // saves the show first), and from then until it answers again.
    double quitWaitSeconds = 30;
    double restartWaitSeconds = 60;
    double pollIntervalSeconds = 0.2;
};

class MCPBridge {
public:
    explicit MCPBridge(MCPBridgeSettings settings = {});
    MCPBridge(const MCPBridge&) = delete;
    MCPBridge& operator=(const MCPBridge&) = delete;

    // The reply to one line of the agent host; absent for a notification.
    std::optional<std::string> handle(std::string_view line);

    // Answers lines from `input` until it ends, each reply on its own line,
    // flushed at once. False when `output` failed (the host went away).
    bool serve(std::istream& input, std::ostream& output);

    // A tool whose arguments have passed the check. Never throws.
    AgentResponse call(const std::string& tool, const JSONValue& arguments);

    const MCPBridgeSettings& settings() const { return settings_; }

private:
    struct GaveUp {};
    struct Ended {};
    using Wait = std::variant<AgentResponse, GaveUp, Ended>;

    AgentResponse forward(const std::string& tool, const JSONValue& arguments, int timeoutSeconds);
    AgentResponse launch(const JSONValue& arguments);
    AgentResponse restart(const JSONValue& arguments);
    // Calls `launch_app` until it succeeds, for up to `seconds`; stops early
    // when the program it `opened` has ended.
    Wait waitUntilAnswering(double seconds, const JSONValue& arguments,
                            const DetachedProcess* opened);
    int timeoutFor(std::string_view tool) const;

    MCPBridgeSettings settings_;
    AgentSocketClient client_;
    MCPServer server_;
};

} // namespace velarion
