#include "LiveAgentKit/AgentSocketPath.h"

#include "LiveAgentKit/AgentSocketError.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

namespace velarion::agentSocketPath {

namespace {

// Relative values are invalid by the XDG rules and ignored, as are empty ones.
std::optional<std::string> absoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') return std::nullopt;
    return std::string(value);
}

std::optional<std::string> homeFolder() {
    if (auto home = absoluteFromEnvironment("HOME")) return home;
    // Without $HOME (a service, a stripped environment) the account database knows.
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') {
        return std::string(found->pw_dir);
    }
    return std::nullopt;
}

} // namespace

std::string standard() {
    if (const char* value = std::getenv(environmentVariable)) return value;
    const std::string name = "Velarion/agent.sock";
    if (auto data = absoluteFromEnvironment("XDG_DATA_HOME")) return *data + "/" + name;
    if (auto home = homeFolder()) return *home + "/.local/share/" + name;
    // No home at all: a relative path, which makeAddress refuses in words.
    return name;
}

Address makeAddress(std::string_view path) {
    if (!path.starts_with('/') || path.find('\0') != std::string_view::npos) {
        throw AgentSocketError(agentSocketError::InvalidPath{});
    }
    if (path.size() > maxPathBytes) throw AgentSocketError(agentSocketError::PathTooLong{});
    Address result;
    result.address.sun_family = AF_UNIX;
    std::memcpy(result.address.sun_path, path.data(), path.size());
    result.length = sizeof(result.address);
    return result;
}

} // namespace velarion::agentSocketPath
