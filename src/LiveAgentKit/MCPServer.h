#pragma once
// The Model Context Protocol side of the bridge: one JSON-RPC 2.0 message per
// line in, at most one line out. It answers the handshake, ping and the tool
// list itself, checks a tool call's arguments against the catalogue, and
// hands valid calls to `call`, which reaches the running application.
//
// Only malformed requests and bad arguments are JSON-RPC errors. A refusal by
// the application (a tier switch that is off, an unknown cue, no application
// at all) is a normal tool result with "isError" true, so the agent reads the
// sentence. A notification, and a request whose id is null, get no reply.
//
// `call` must not throw: the executable turns a socket failure into a
// response with `ok` false and the failure's words. The server owns no show
// state.
//
// Thread: `handle` is synchronous and runs `call` on the caller's thread; one
// line at a time, which keeps a blocking socket client safe.

#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/JSONValue.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velarion {

class MCPServer {
public:
    // Runs a tool whose arguments have passed the check.
    using Call = std::function<AgentResponse(const std::string& tool, const JSONValue& arguments)>;

    static constexpr std::string_view version = "2.0-alpha.9";
    // Chosen when a client asks for none, or for one not listed here.
    static constexpr std::string_view latestProtocolVersion = "2025-06-18";
    static constexpr std::string_view protocolVersions[] = {"2025-06-18", "2025-03-26",
                                                            "2024-11-05"};

    explicit MCPServer(Call call);

    // The reply to one line, compact with sorted keys and without its line
    // feed; absent for a notification.
    std::optional<std::string> handle(std::string_view line) const;

private:
    JSONValue callTool(const JSONValue& id, const JSONValue& params) const;

    Call call_;
};

} // namespace velarion
