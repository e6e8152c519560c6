#pragma once
// Framing of the agent wire: one JSON object per line, both ways.
//
// A message is compact JSON text followed by one line feed (byte 10). The
// writer escapes line feeds inside strings, so a message never holds one.
// There is no length prefix and no maximum line length; a carriage return is
// an ordinary byte. Readers take 65,536 bytes at a time and cut whole lines
// off the front of what they have read.
//
// Thread: pure functions; any thread.

#include "LiveAgentKit/AgentMessages.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace velarion::agentLine {

inline constexpr char terminator = '\n';
inline constexpr std::size_t readChunkBytes = 65536;

// The answer, with id 0, to a line that isn't a request.
inline constexpr std::string_view invalidRequestError = "That request wasn't valid JSON.";

// The message with its line feed; absent when it can't be encoded, in which
// case nothing is to be sent.
std::optional<std::string> encode(const AgentRequest& request);
std::optional<std::string> encode(const AgentResponse& response);

// A line as the server reads it (without its line feed): the request, or
// the response that answers a line that isn't one. The server skips empty
// lines before they get here.
std::variant<AgentRequest, AgentResponse> decodeRequest(std::string_view line);

// A line as the client reads it. Throws AgentDecodeError.
AgentResponse decodeResponse(std::string_view line);

// Cuts the first whole line out of `buffer`, dropping its line feed; absent
// while the buffer holds no line feed, and then the buffer is left as it is.
std::optional<std::string> takeLine(std::string& buffer);

} // namespace velarion::agentLine
