#pragma once
// Checks a tool's arguments against its schema before anything runs, and
// says what is wrong in one sentence the agent can act on: "Give cue for
// fire_cue.", "Unknown parameter \"cue_name\" for fire_cue. Valid fields:
// cue.", "arguments.fade must be number for clear.".
//
// The checker reads only "anyOf", "enum", "type", "minimum", "maximum",
// "properties", "additionalProperties", "required" and "items". Other hints
// in the schemas ("exclusiveMinimum", "minItems") are the tools' to enforce.
// It stops at the first failure: anyOf, then enum, then type; for an object
// unknown keys before missing ones, then its members; for an array its
// items in order.
//
// Thread: pure functions; any thread.

#include "LiveAgentKit/AgentTools.h"
#include "LiveAgentKit/JSONValue.h"

#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace velarion {

// The checker's error; `message` is the sentence for the agent.
class InvalidArguments : public std::exception {
public:
    explicit InvalidArguments(std::string message) : message(std::move(message)) {}
    const char* what() const noexcept override { return message.c_str(); }

    std::string message;
};

namespace agentArguments {

// Checks a tool call's arguments, at the path "arguments". Throws
// InvalidArguments.
void validate(const JSONValue& arguments, const AgentTool& tool);

// Checks any value against any schema; `path` names the value in sentences
// and `toolName` the tool. Throws InvalidArguments.
void validate(const JSONValue& value, const JSONValue& schema, const std::string& path,
              std::string_view toolName);

} // namespace agentArguments

} // namespace velarion
