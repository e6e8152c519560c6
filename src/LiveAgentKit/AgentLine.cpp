#include "LiveAgentKit/AgentLine.h"

namespace velarion::agentLine {

namespace {

std::optional<std::string> withTerminator(const JSONValue& json) {
    std::optional<std::string> text = json.encoded();
    if (text) text->push_back(terminator);
    return text;
}

JSONValue parsed(std::string_view line) {
    std::optional<JSONValue> json = JSONValue::parse(line);
    if (!json) throw AgentDecodeError("the line isn't valid JSON");
    return std::move(*json);
}

} // namespace

std::optional<std::string> encode(const AgentRequest& request) {
    return withTerminator(request.json());
}

std::optional<std::string> encode(const AgentResponse& response) {
    // Written around the result rather than through `json()`, which would
    // copy it first: a result can be a whole show. The keys stay in order.
    std::string line = "{";
    if (response.error) {
        std::optional<std::string> error = JSONValue(*response.error).encoded();
        if (!error) return std::nullopt;
        line += "\"error\":" + *error + ",";
    }
    line += "\"id\":" + JSONValue(response.id).text() + ",\"ok\":" + (response.ok ? "true" : "false");
    if (response.result) {
        std::optional<std::string> result = response.result->encoded();
        if (!result) return std::nullopt;
        line.reserve(line.size() + result->size() + 16);
        line += ",\"result\":";
        line += *result;
    }
    line += '}';
    line.push_back(terminator);
    return line;
}

std::variant<AgentRequest, AgentResponse> decodeRequest(std::string_view line) {
    try {
        return AgentRequest::fromJSON(parsed(line));
    } catch (const AgentDecodeError&) {
        return AgentResponse::failure(0, std::string(invalidRequestError));
    }
}

AgentResponse decodeResponse(std::string_view line) {
    return AgentResponse::fromJSON(parsed(line));
}

std::optional<std::string> takeLine(std::string& buffer) {
    const std::size_t end = buffer.find(terminator);
    if (end == std::string::npos) return std::nullopt;
    std::string line = buffer.substr(0, end);
    buffer.erase(0, end + 1);
    return line;
}

} // namespace velarion::agentLine
