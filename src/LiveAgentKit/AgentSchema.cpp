#include "LiveAgentKit/AgentSchema.h"

#include <utility>

namespace velarion::agentSchema {

namespace {

JSONValue::Array texts(const std::vector<std::string>& values) {
    return JSONValue::Array(values.begin(), values.end());
}

JSONValue::Object typed(std::string_view type, std::string_view description) {
    JSONValue::Object members{{"type", JSONValue(type)}};
    if (!description.empty())
        members.emplace("description", JSONValue(description));
    return members;
}

// The builders hand out values; the few that amend one take its members.
JSONValue::Object membersOf(const JSONValue& value) {
    const JSONValue::Object* members = value.objectValue();
    return members != nullptr ? *members : JSONValue::Object{};
}

} // namespace

JSONValue schema(JSONValue::Object properties, std::vector<std::string> required) {
    return JSONValue::Object{
        {"type", "object"},
        {"properties", std::move(properties)},
        {"required", texts(required)},
        {"additionalProperties", false},
    };
}

JSONValue string(std::string_view description, std::vector<std::string> enumValues) {
    JSONValue::Object members = typed("string", description);
    if (!enumValues.empty())
        members.emplace("enum", texts(enumValues));
    return members;
}

JSONValue number(std::string_view description, std::string_view type) {
    return typed(type, description);
}

JSONValue integer(std::string_view description) {
    return number(description, "integer");
}

JSONValue boolean(std::string_view description) {
    return number(description, "boolean");
}

JSONValue nullable(JSONValue schema) {
    JSONValue::Object members = membersOf(schema);
    if (auto type = members.find("type"); type != members.end()) {
        type->second = JSONValue::Array{type->second, "null"};
    }
    if (auto values = members.find("enum");
        values != members.end() && values->second.arrayValue()) {
        JSONValue::Array withNull = *values->second.arrayValue();
        withNull.emplace_back(nullptr);
        values->second = std::move(withNull);
    }
    return members;
}

JSONValue nullableNumber(std::string_view description) {
    return nullable(number(description));
}

JSONValue bounded(JSONValue schema, double minimum, double maximum) {
    JSONValue::Object members = membersOf(schema);
    members.insert_or_assign("minimum", minimum);
    members.insert_or_assign("maximum", maximum);
    return members;
}

JSONValue arrayOf(JSONValue items, std::string_view description) {
    JSONValue::Object members = typed("array", description);
    members.emplace("items", std::move(items));
    return members;
}

JSONValue anyOf(JSONValue::Array alternatives, std::string_view description) {
    return JSONValue::Object{{"anyOf", std::move(alternatives)},
                             {"description", JSONValue(description)}};
}

const JSONValue& cueRef() {
    static const JSONValue ref =
        string("A cue: its id, its number in the run of show (\"4\"), or its exact name.");
    return ref;
}

const JSONValue& sectionRef() {
    static const JSONValue ref = string("A section: its id or its exact title.");
    return ref;
}

const JSONValue& cueGroupRef() {
    static const JSONValue ref = string("A cue group: its id or its exact, unique name.");
    return ref;
}

} // namespace velarion::agentSchema
