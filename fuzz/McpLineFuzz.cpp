// Feeds arbitrary lines to the MCP bridge's protocol handler, with a stand-in
// for the application that answers from the arguments it is given. Errors
// are the expected outcome for most inputs; a crash, a sanitizer report, a
// hang or a blown memory limit is a bug.
//
// What the bridge writes must be one line of JSON-RPC 2.0 the host can read,
// and only arguments that pass the check may reach the application.

#include "FuzzCheck.h"
#include "LiveAgentKit/AgentArguments.h"
#include "LiveAgentKit/AgentTools.h"
#include "LiveAgentKit/MCPServer.h"

#include <optional>
#include <string>

namespace {

using velarion::AgentResponse;
using velarion::JSONValue;

// Succeeds with the arguments themselves, or refuses in words made of them,
// so that both kinds of tool result come out of the same input.
AgentResponse answer(const std::string& toolName, const JSONValue& arguments) {
    const velarion::AgentTool* tool = velarion::agentTools::tool(toolName);
    require(tool != nullptr);
    try {
        velarion::agentArguments::validate(arguments, *tool);
    } catch (const velarion::InvalidArguments&) {
        std::abort(); // the bridge let bad arguments through
    }
    const JSONValue::Object* members = arguments.objectValue();
    if (members != nullptr && members->size() % 2 == 1) {
        return AgentResponse::failure(1, "Refused: " + arguments.text());
    }
    return AgentResponse::success(1, arguments);
}

const velarion::MCPServer server(answer);

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view line = textOf(data, size);
    const std::optional<std::string> reply = server.handle(line);

    // Everything is answered but a notification: a readable message with a
    // method and no id, or a null one.
    const std::optional<JSONValue> request = JSONValue::parse(line);
    const JSONValue* method = request ? (*request)["method"] : nullptr;
    const JSONValue* id = request ? (*request)["id"] : nullptr;
    const bool expectsReply =
        !request || method == nullptr || !method->stringValue() || (id != nullptr && !id->isNull());
    require(expectsReply == reply.has_value());
    if (!reply)
        return 0;

    require(reply->find('\n') == std::string::npos);
    const std::optional<JSONValue> written = JSONValue::parse(*reply);
    require(written && written->objectValue());
    require((*written)["jsonrpc"] != nullptr && *(*written)["jsonrpc"] == JSONValue("2.0"));
    require((*written)["id"] != nullptr);
    require(((*written)["result"] == nullptr) != ((*written)["error"] == nullptr));
    return 0;
}
