#include "LiveAgentKit/AgentSocketError.h"

#include <utility>

namespace velarion {

namespace {

// Said when the connection ended without an answer: the tool may have run.
constexpr const char* noAnswer = "Velarion closed the connection before answering. The action may "
                                 "have happened; read get_show before retrying it.";

struct Words {
    std::string operator()(const agentSocketError::System& e) const { return e.message; }
    std::string operator()(const agentSocketError::PathTooLong&) const {
        return "The control socket's path is too long.";
    }
    std::string operator()(const agentSocketError::InvalidPath&) const {
        return "The control socket path must be an absolute path without null characters.";
    }
    std::string operator()(const agentSocketError::NotRunning&) const {
        return "Velarion isn't running or its local connection is unavailable. Open Velarion; "
               "check Settings → Agent control for connection errors.";
    }
    std::string operator()(const agentSocketError::Closed&) const { return noAnswer; }
    std::string operator()(const agentSocketError::TimedOut&) const {
        return "Velarion did not answer in time. The action may have happened; read get_show "
               "before retrying it.";
    }
    std::string operator()(const agentSocketError::ResponseLost&) const { return noAnswer; }
};

} // namespace

std::string errorDescription(const AgentSocketErrorCase& reason) {
    return std::visit(Words{}, reason);
}

AgentSocketError::AgentSocketError(AgentSocketErrorCase reason)
    : reason_(std::move(reason)), description_(velarion::errorDescription(reason_)) {}

} // namespace velarion
