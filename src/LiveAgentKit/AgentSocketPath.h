#pragma once
// Where the agent socket lives, and its address.
//
// The application's server and the bridge process both call `standard()`
// and so meet at the same path: the environment variable
// VELARION_AGENT_SOCKET when it is set at all, even to the empty text (which
// then fails as an invalid path rather than quietly falling back), else
// "Velarion/agent.sock" in the user's data folder ($XDG_DATA_HOME, by
// default ~/.local/share).
//
// Thread: any, while nothing changes the process environment.

#include "LiveAgentKit/AgentSocketError.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace velarion::agentSocketPath {

inline constexpr const char* environmentVariable = "VELARION_AGENT_SOCKET";

// The longest path an address holds: sun_path less its terminating zero
// (107 bytes on Linux).
inline constexpr std::size_t maxPathBytes = sizeof(sockaddr_un::sun_path) - 1;

std::string standard();

struct Address {
    sockaddr_un address{};
    // The full size of the address, not the length of the path: what bind and
    // connect are given.
    socklen_t length = 0;
};

// Throws AgentSocketError: InvalidPath for a path that doesn't begin with "/"
// or holds a zero byte (an empty path included), PathTooLong for one longer
// than maxPathBytes.
Address makeAddress(std::string_view path);

} // namespace velarion::agentSocketPath
