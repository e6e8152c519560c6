#pragma once
// The error a tool raises to refuse. Its message is the one sentence the
// agent sees, and says what to do next.
//
// Thread: a plain value; any thread.

#include <exception>
#include <string>
#include <utility>

namespace velarion {

class AgentFailure : public std::exception {
public:
    explicit AgentFailure(std::string message) : message(std::move(message)) {}
    const char* what() const noexcept override { return message.c_str(); }

    std::string message;
};

} // namespace velarion
