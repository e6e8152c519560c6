#pragma once
// The error of both ends of the agent socket: the server's start and the
// bridge's client. Each case's words are what the agent or the operator
// reads, kept exactly; the agent's launch logic looks for those of
// `NotRunning`.
//
// Thread: a plain value; any thread.

#include <exception>
#include <string>
#include <variant>

namespace velarion {

namespace agentSocketError {
struct System {
    std::string message; // shown as it is
    friend bool operator==(const System&, const System&) = default;
};
struct PathTooLong {
    friend bool operator==(const PathTooLong&, const PathTooLong&) = default;
};
struct InvalidPath {
    friend bool operator==(const InvalidPath&, const InvalidPath&) = default;
};
struct NotRunning {
    friend bool operator==(const NotRunning&, const NotRunning&) = default;
};
// The peer went away while the request was being written: nothing was
// answered yet, so the client may send once more.
struct Closed {
    friend bool operator==(const Closed&, const Closed&) = default;
};
struct TimedOut {
    friend bool operator==(const TimedOut&, const TimedOut&) = default;
};
// The peer went away after the request had gone out: never retried.
struct ResponseLost {
    friend bool operator==(const ResponseLost&, const ResponseLost&) = default;
};
} // namespace agentSocketError

using AgentSocketErrorCase =
    std::variant<agentSocketError::System, agentSocketError::PathTooLong,
                 agentSocketError::InvalidPath, agentSocketError::NotRunning,
                 agentSocketError::Closed, agentSocketError::TimedOut,
                 agentSocketError::ResponseLost>;

// The words for a case.
std::string errorDescription(const AgentSocketErrorCase& reason);

class AgentSocketError : public std::exception {
public:
    explicit AgentSocketError(AgentSocketErrorCase reason);

    const AgentSocketErrorCase& reason() const { return reason_; }
    template <class Case> bool is() const { return std::holds_alternative<Case>(reason_); }

    const std::string& errorDescription() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

private:
    AgentSocketErrorCase reason_;
    std::string description_;
};

} // namespace velarion
