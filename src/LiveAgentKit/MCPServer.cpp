#include "LiveAgentKit/MCPServer.h"

#include "LiveAgentKit/AgentArguments.h"
#include "LiveAgentKit/AgentGuide.h"
#include "LiveAgentKit/AgentTools.h"

#include <utility>

namespace velarion {

namespace {

constexpr int parseError = -32700;
constexpr int invalidRequest = -32600;
constexpr int methodNotFound = -32601;
constexpr int invalidParams = -32602;

JSONValue result(const JSONValue& id, JSONValue value) {
    return JSONValue::Object{{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(value)}};
}

JSONValue error(const JSONValue& id, int code, std::string message) {
    return JSONValue::Object{
        {"jsonrpc", "2.0"},
        {"id", id},
        {"error", JSONValue::Object{{"code", code}, {"message", std::move(message)}}},
    };
}

// An error whose "data" says in a sentence what was wrong.
JSONValue error(const JSONValue& id, int code, std::string message, std::string data) {
    return JSONValue::Object{
        {"jsonrpc", "2.0"},
        {"id", id},
        {"error", JSONValue::Object{{"code", code},
                                    {"message", std::move(message)},
                                    {"data", std::move(data)}}},
    };
}

const JSONValue& member(const JSONValue& value, std::string_view key, const JSONValue& fallback) {
    const JSONValue* found = value[key];
    return found != nullptr ? *found : fallback;
}

std::string chosenProtocolVersion(const JSONValue& params) {
    const JSONValue* asked = params["protocolVersion"];
    const std::optional<std::string> version =
        asked != nullptr ? asked->stringValue() : std::nullopt;
    if (version) {
        for (std::string_view known : MCPServer::protocolVersions) {
            if (*version == known)
                return *version;
        }
    }
    return std::string(MCPServer::latestProtocolVersion);
}

JSONValue handshake(const JSONValue& params) {
    return JSONValue::Object{
        {"protocolVersion", chosenProtocolVersion(params)},
        {"capabilities", JSONValue::Object{{"tools", JSONValue::Object{{"listChanged", false}}}}},
        {"serverInfo", JSONValue::Object{{"name", "velarion"}, {"version", MCPServer::version}}},
        {"instructions", agentGuide::mcpInstructions},
    };
}

// The list is the same for every request; only the reply around it differs.
const JSONValue& toolList() {
    static const JSONValue list = [] {
        JSONValue::Array tools;
        for (const AgentTool& tool : agentTools::all())
            tools.push_back(tool.mcpDescription());
        return JSONValue(JSONValue::Object{{"tools", std::move(tools)}});
    }();
    return list;
}

} // namespace

MCPServer::MCPServer(Call call) : call_(std::move(call)) {}

std::optional<std::string> MCPServer::handle(std::string_view line) const {
    const std::optional<JSONValue> message = JSONValue::parse(line);
    if (!message)
        return error(nullptr, parseError, "Parse error").text();
    // Well-formed JSON, but this bridge answers one message per line.
    if (message->is<JSONValue::Array>())
        return error(nullptr, invalidRequest, "Invalid Request",
                     "Batches aren't supported. Send each JSON-RPC message on its own line.")
            .text();

    // A method that is missing or of the wrong kind counts as unreadable, not
    // as an invalid request.
    const JSONValue* methodValue = (*message)["method"];
    const std::optional<std::string> method =
        methodValue != nullptr ? methodValue->stringValue() : std::nullopt;
    if (!method)
        return error(nullptr, parseError, "Parse error").text();

    const JSONValue* id = (*message)["id"];
    if (id == nullptr || id->isNull())
        return std::nullopt;

    static const JSONValue noParams = JSONValue::Object{};
    const JSONValue& params = member(*message, "params", noParams);

    if (*method == "initialize")
        return result(*id, handshake(params)).text();
    if (*method == "ping")
        return result(*id, JSONValue::Object{}).text();
    if (*method == "tools/list")
        return result(*id, toolList()).text();
    if (*method == "tools/call")
        return callTool(*id, params).text();
    return error(*id, methodNotFound, "Method not found").text();
}

JSONValue MCPServer::callTool(const JSONValue& id, const JSONValue& params) const {
    const JSONValue* nameValue = params["name"];
    const std::optional<std::string> name =
        nameValue != nullptr ? nameValue->stringValue() : std::nullopt;
    const AgentTool* tool = name ? agentTools::tool(*name) : nullptr;
    if (tool == nullptr)
        return error(id, invalidParams, "Unknown tool");

    static const JSONValue noArguments = JSONValue::Object{};
    const JSONValue& arguments = member(params, "arguments", noArguments);
    try {
        agentArguments::validate(arguments, *tool);
    } catch (const InvalidArguments& invalid) {
        // Caught here, a bad argument never reaches the application.
        return error(id, invalidParams, invalid.message);
    }

    const AgentResponse response = call_(tool->name, arguments);
    const std::string answer = response.ok
                                   ? (response.result ? response.result->prettyText() : "null")
                                   : response.error.value_or("Failed");
    return result(id, JSONValue::Object{
                          {"content",
                           JSONValue::Array{JSONValue::Object{{"type", "text"}, {"text", answer}}}},
                          {"isError", !response.ok},
                      });
}

} // namespace velarion
