#include "LiveAgentKit/AgentMessages.h"

#include <cmath>
#include <utility>

namespace velarion {

namespace {

[[noreturn]] void refuse(std::string_view key, std::string_view problem) {
    throw AgentDecodeError("key \"" + std::string(key) + "\" " + std::string(problem));
}

void requireObject(const JSONValue& json) {
    if (json.objectValue() == nullptr) throw AgentDecodeError("the message isn't a JSON object");
}

const JSONValue& required(const JSONValue& json, std::string_view key) {
    const JSONValue* value = json[key];
    if (value == nullptr) refuse(key, "is missing");
    return *value;
}

// Absent and null read alike: an optional key.
const JSONValue* optional(const JSONValue& json, std::string_view key) {
    const JSONValue* value = json[key];
    return value == nullptr || value->isNull() ? nullptr : value;
}

// Strict, unlike JSONValue::intValue: the id is the client's own integer, not
// a number to be read generously.
std::int64_t integer(const JSONValue& json, std::string_view key) {
    const JSONValue& value = required(json, key);
    const auto* number = std::get_if<double>(&value.storage());
    // NaN fails the first test; 2^63 itself is out of range.
    if (number == nullptr || std::trunc(*number) != *number || *number < -0x1p63 ||
        *number >= 0x1p63) {
        refuse(key, "isn't an integer");
    }
    return static_cast<std::int64_t>(*number);
}

} // namespace

JSONValue AgentRequest::json() const {
    return JSONValue::Object{{"id", id}, {"tool", tool}, {"arguments", arguments}};
}

AgentRequest AgentRequest::fromJSON(const JSONValue& json) {
    requireObject(json);
    AgentRequest request;
    request.id = integer(json, "id");
    const JSONValue& tool = required(json, "tool");
    if (!tool.is<std::string>()) refuse("tool", "isn't text");
    request.tool = std::get<std::string>(tool.storage());
    request.arguments = required(json, "arguments");
    return request;
}

AgentResponse AgentResponse::success(std::int64_t id, JSONValue result) {
    return AgentResponse{id, true, std::move(result), std::nullopt};
}

AgentResponse AgentResponse::failure(std::int64_t id, std::string error) {
    return AgentResponse{id, false, std::nullopt, std::move(error)};
}

JSONValue AgentResponse::json() const {
    JSONValue::Object object{{"id", id}, {"ok", ok}};
    if (result) object.emplace("result", *result);
    if (error) object.emplace("error", *error);
    return object;
}

AgentResponse AgentResponse::fromJSON(const JSONValue& json) {
    requireObject(json);
    AgentResponse response;
    response.id = integer(json, "id");
    const JSONValue& ok = required(json, "ok");
    if (!ok.is<bool>()) refuse("ok", "isn't true or false");
    response.ok = std::get<bool>(ok.storage());
    if (const JSONValue* result = optional(json, "result")) response.result = *result;
    if (const JSONValue* error = optional(json, "error")) {
        if (!error->is<std::string>()) refuse("error", "isn't text");
        response.error = std::get<std::string>(error->storage());
    }
    return response;
}

} // namespace velarion
