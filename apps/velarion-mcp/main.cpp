// velarion-mcp: the MCP server an agent host starts. It speaks MCP on
// standard input and output and passes tool calls to the running Velarion
// over its local agent socket.

#include "LiveAgentKit/MCPBridge.h"

#include <csignal>
#include <iostream>

int main() {
    // A host that goes away shows as a failed write, not as a signal.
    std::signal(SIGPIPE, SIG_IGN);
    std::ios::sync_with_stdio(false);
    velarion::MCPBridge bridge;
    return bridge.serve(std::cin, std::cout) ? 0 : 1;
}
