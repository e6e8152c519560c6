#pragma once
// The bridge's end of the agent socket: sends one request and waits for its
// response, over a connection it keeps open between calls.
//
// Contract.
// - Blocking; one thread at a time. The timeout bounds each read and each
//   write, not the whole exchange, and is never under one second.
// - A connection found dead while the request is being written (the
//   application restarted since the last call) is replaced and the request
//   sent once more; nothing of the response had arrived, so nothing ran
//   twice. Any other failure drops the connection, so the next call starts
//   afresh, and is thrown: AgentSocketError in its words, or
//   AgentDecodeError for a line that isn't a response.
// - A response with another id (the late answer to a call that timed out) is
//   skipped.
// - Owns its socket; the destructor closes it.

#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/AgentSocketPath.h"
#include "LiveAgentKit/JSONValue.h"
#include "LiveAgentKit/UniqueFd.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace velarion {

class AgentSocketClient {
public:
    explicit AgentSocketClient(std::string path = agentSocketPath::standard());

    const std::string& path() const { return path_; }
    bool isConnected() const { return fd_.isOpen(); }

    // The tool's response, whether ok or not.
    AgentResponse call(std::string_view tool, const JSONValue& arguments, int timeoutSeconds);

    // Waits up to `timeoutSeconds` for the application to close this
    // connection, as it does when it quits, and then disconnects. Anything
    // it sends meanwhile is dropped. True once the connection has ended
    // (also when none was open); false at the timeout, still connected.
    bool waitForHangUp(double timeoutSeconds);

    void disconnect();

private:
    AgentResponse send(std::string_view tool, const JSONValue& arguments, int timeoutSeconds);
    void connectIfNeeded();
    void writeAll(const std::string& bytes);

    std::string path_;
    UniqueFd fd_;
    std::int64_t nextID_ = 1;
    std::string buffer_; // read after the last whole line
};

} // namespace velarion
