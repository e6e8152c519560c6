// Where the socket lives and which paths make an address.

#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/AgentSocketPath.h"
#include "ScopedEnvironment.h"

#include <gtest/gtest.h>

#include <string>

namespace velarion {
namespace {

using testing::ScopedEnvironment;

// An absolute path of exactly `bytes` bytes.
std::string pathOf(std::size_t bytes) {
    return "/tmp/" + std::string(bytes - 10, 'a') + ".sock";
}

std::string addressError(const std::string& path) {
    try {
        agentSocketPath::makeAddress(path);
    } catch (const AgentSocketError& error) {
        return error.errorDescription();
    }
    return "made";
}

// The sentences are checked where they are made; here, which one.
const std::string tooLong = AgentSocketError(agentSocketError::PathTooLong{}).errorDescription();
const std::string invalid = AgentSocketError(agentSocketError::InvalidPath{}).errorDescription();

TEST(AgentSocketAddress, HoldsPathsUpToTheLimitAndRefusesRelativeEmptyAndZeroBytePaths) {
    for (std::size_t bytes : {std::size_t(103), std::size_t(107)}) {
        const std::string path = pathOf(bytes);
        ASSERT_EQ(path.size(), bytes);
        const auto made = agentSocketPath::makeAddress(path);
        EXPECT_EQ(made.address.sun_family, AF_UNIX);
        EXPECT_STREQ(made.address.sun_path, path.c_str());
        // bind and connect get the whole address, not the path's length.
        EXPECT_EQ(made.length, sizeof(sockaddr_un));
    }
    EXPECT_EQ(addressError(pathOf(108)), tooLong);
    EXPECT_EQ(addressError("Velarion/agent.sock"), invalid);
    EXPECT_EQ(addressError(std::string("/tmp/a\0b.sock", 13)), invalid);
    // Being relative is the first fault named, whatever the length.
    EXPECT_EQ(addressError(pathOf(200).substr(1)), invalid);
}

TEST(AgentSocketPath, EnvironmentVariableWinsEvenWhenEmpty) {
    const ScopedEnvironment data("XDG_DATA_HOME", "/srv/data");
    {
        const ScopedEnvironment socket("VELARION_AGENT_SOCKET", "/run/user/1000/v.sock");
        EXPECT_EQ(agentSocketPath::standard(), "/run/user/1000/v.sock");
    }
    {
        const ScopedEnvironment socket("VELARION_AGENT_SOCKET", "");
        EXPECT_EQ(agentSocketPath::standard(), "");
        EXPECT_EQ(addressError(agentSocketPath::standard()), invalid);
    }
    const ScopedEnvironment socket("VELARION_AGENT_SOCKET", std::nullopt);
    EXPECT_EQ(agentSocketPath::standard(), "/srv/data/Velarion/agent.sock");
}

TEST(AgentSocketPath, FallsBackToTheUsersDataFolder) {
    const ScopedEnvironment socket("VELARION_AGENT_SOCKET", std::nullopt);
    const ScopedEnvironment home("HOME", "/home/operator");
    for (const std::optional<std::string>& ignored : {std::optional<std::string>(), std::optional<std::string>("relative/data")}) {
        const ScopedEnvironment data("XDG_DATA_HOME", ignored);
        EXPECT_EQ(agentSocketPath::standard(), "/home/operator/.local/share/Velarion/agent.sock");
    }
}

} // namespace
} // namespace velarion
