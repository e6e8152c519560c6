#pragma once
// The small JSON-schema builders the tool catalogue is written with, and the
// pieces several tools share: cue, section and cue-group references, the cue
// settings of add_cue and update_cue, and the feed, screen and look objects.
//
// Only what the argument checker reads and what an agent needs is produced:
// "type", "description", "enum", "properties", "required",
// "additionalProperties", "items", "anyOf", "minimum", "maximum", plus the
// hints the tools enforce themselves ("exclusiveMinimum", "minItems"). An
// empty description is left out, for nested items that carry none.
//
// Thread: pure functions; the shared pieces are built once, on first use,
// and are safe to read from any thread.

#include "LiveAgentKit/JSONValue.h"

#include <string>
#include <string_view>
#include <vector>

namespace velarion::agentSchema {

// "type" "object" with its properties, "required" (always present, possibly
// empty) and "additionalProperties" false.
JSONValue schema(JSONValue::Object properties, std::vector<std::string> required = {});

// "type" "string", with "enum" when values are given.
JSONValue string(std::string_view description, std::vector<std::string> enumValues = {});

// "type" and "description"; serves "number", "integer" and "boolean" alike.
JSONValue number(std::string_view description, std::string_view type = "number");
JSONValue integer(std::string_view description);
JSONValue boolean(std::string_view description);

// The schema that also accepts null: its "type" becomes the list of its type
// and "null", and null joins its "enum" when it has one.
JSONValue nullable(JSONValue schema);
JSONValue nullableNumber(std::string_view description);

JSONValue bounded(JSONValue schema, double minimum, double maximum);
JSONValue arrayOf(JSONValue items, std::string_view description = {});
JSONValue anyOf(JSONValue::Array alternatives, std::string_view description);

const JSONValue& cueRef();
const JSONValue& sectionRef();
const JSONValue& cueGroupRef();

// The cue settings add_cue and update_cue share.
const JSONValue::Object& cueProperties();

// An entry of set_network_feeds' "feeds".
const JSONValue& feedObject();
// An entry of set_screens' legacy "screens".
const JSONValue& legacyScreenObject();
// An entry of set_screens' "logical_screens".
const JSONValue& screenObject();
// An entry of set_screens' "looks".
const JSONValue& lookObject();

} // namespace velarion::agentSchema
