// Feeds arbitrary bytes to the agent wire as both ends read it off a socket:
// cut into lines, each line decoded as a request (the server) and as a
// response (the bridge's client). A refusal is the expected outcome for
// most lines; a crash, a sanitizer report, an escaping exception of another
// kind, a hang or a blown memory limit is a bug.
//
// Framing must lose and invent nothing, whatever the reads' boundaries. A
// line that decodes must encode to exactly one line that decodes the same,
// and one that doesn't must get the one answer the server gives.

#include "FuzzCheck.h"
#include "LiveAgentKit/AgentLine.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace {

using namespace velarion;

void takeLines(std::string& buffer, std::vector<std::string>& lines) {
    while (std::optional<std::string> line = agentLine::takeLine(buffer))
        lines.push_back(std::move(*line));
}

// The encoded message without its line feed; aborts unless it is one line.
std::string singleLine(const std::optional<std::string>& message) {
    if (!message || message->empty() || message->back() != agentLine::terminator ||
        message->find(agentLine::terminator) != message->size() - 1)
        std::abort();
    return message->substr(0, message->size() - 1);
}

void checkAsRequest(std::string_view line) {
    const std::variant<AgentRequest, AgentResponse> decoded = agentLine::decodeRequest(line);
    if (const auto* request = std::get_if<AgentRequest>(&decoded)) {
        const auto again = agentLine::decodeRequest(singleLine(agentLine::encode(*request)));
        require(std::holds_alternative<AgentRequest>(again) &&
                std::get<AgentRequest>(again) == *request);
        return;
    }
    const AgentResponse& answer = std::get<AgentResponse>(decoded);
    require(answer == AgentResponse::failure(0, std::string(agentLine::invalidRequestError)));
}

void checkAsResponse(std::string_view line) {
    AgentResponse response;
    try {
        response = agentLine::decodeResponse(line);
    } catch (const AgentDecodeError&) {
        return;
    }
    require(agentLine::decodeResponse(singleLine(agentLine::encode(response))) == response);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = textOf(data, size);

    std::string whole(bytes);
    std::vector<std::string> lines;
    takeLines(whole, lines);
    require(whole.find(agentLine::terminator) == std::string::npos);
    std::string rebuilt;
    for (const std::string& line : lines)
        rebuilt += line + agentLine::terminator;
    require(rebuilt + whole == bytes);

    // The same bytes in two reads, split where the first byte says.
    const std::size_t split = size == 0 ? 0 : data[0] % (size + 1);
    std::string buffer(bytes.substr(0, split));
    std::vector<std::string> inTwoReads;
    takeLines(buffer, inTwoReads);
    buffer.append(bytes.substr(split));
    takeLines(buffer, inTwoReads);
    require(inTwoReads == lines && buffer == whole);

    for (const std::string& line : lines) {
        if (line.empty())
            continue; // the server skips blank lines
        checkAsRequest(line);
        checkAsResponse(line);
    }
    return 0;
}
