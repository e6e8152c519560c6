#pragma once
// The two records on the agent wire. A request names a tool and carries its
// arguments; a response echoes the request's id and holds either the tool's
// result or a sentence for the agent. Their JSON keys are those of the
// records; a response leaves out an absent result or error.
//
// Thread: plain values; any thread.

#include "LiveAgentKit/JSONValue.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace velarion {

// A line or value that isn't the record it should be; says what is wrong
// (`key "ok" is missing`).
struct AgentDecodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct AgentRequest {
    std::int64_t id = 0; // chosen by the client, echoed in the response
    std::string tool;
    JSONValue arguments; // normally an object

    JSONValue json() const;
    // All three keys are required; `id` must be a whole number. Throws
    // AgentDecodeError.
    static AgentRequest fromJSON(const JSONValue& json);

    friend bool operator==(const AgentRequest&, const AgentRequest&) = default;
};

struct AgentResponse {
    std::int64_t id = 0; // the request's; 0 for a line that couldn't be read
    bool ok = false;
    std::optional<JSONValue> result;  // on success
    std::optional<std::string> error; // on failure, for the agent to read

    static AgentResponse success(std::int64_t id, JSONValue result);
    static AgentResponse failure(std::int64_t id, std::string error);

    JSONValue json() const;
    // `id` and `ok` are required; `result` and `error` read as absent when
    // missing or null. Throws AgentDecodeError.
    static AgentResponse fromJSON(const JSONValue& json);

    friend bool operator==(const AgentResponse&, const AgentResponse&) = default;
};

} // namespace velarion
