#include "LiveAgentKit/AgentArguments.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

namespace velarion::agentArguments {

namespace {

bool isWholeInt64(double value) {
    return std::trunc(value) == value && value >= -0x1p63 && value < 0x1p63;
}

// Bounds read as floats in sentences ("16.0", "0.3"), the way the agent
// sees them written in the schema's own terms.
std::string boundText(double value) {
    char buffer[40];
    if (isWholeInt64(value) && std::fabs(value) < 1e16) {
        const auto written =
            std::to_chars(buffer, buffer + sizeof buffer, static_cast<std::int64_t>(value));
        return std::string(buffer, written.ptr) + ".0";
    }
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, written.ptr);
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0)
            text += separator;
        text += parts[i];
    }
    return text;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

// A schema's "type", a name or a list of names; list members that aren't
// text or numbers don't count.
std::vector<std::string> typeNames(const JSONValue* type) {
    std::vector<std::string> names;
    if (type == nullptr)
        return names;
    auto add = [&names](const JSONValue& name) {
        if (name.is<std::string>() || name.is<double>())
            names.push_back(*name.stringValue());
    };
    if (const JSONValue::Array* list = type->arrayValue()) {
        for (const JSONValue& name : *list)
            add(name);
    } else {
        add(*type);
    }
    return names;
}

class Checker {
public:
    explicit Checker(std::string_view toolName) : tool_(toolName) {}

    void check(const JSONValue& value, const JSONValue& schema, const std::string& path) const {
        if (const JSONValue* alternatives = schema["anyOf"];
            alternatives != nullptr && alternatives->arrayValue() != nullptr) {
            checkAnyOf(value, *alternatives->arrayValue(), path);
            return;
        }
        if (const JSONValue* values = schema["enum"];
            values != nullptr && values->arrayValue() != nullptr) {
            checkEnum(value, *values->arrayValue(), path);
        }

        const std::vector<std::string> names = typeNames(schema["type"]);
        if (names.empty()) {
            // Without a type the value's own kind says what else applies.
            if (value.is<JSONValue::Object>())
                checkObject(value, schema, path);
            if (value.is<JSONValue::Array>())
                checkArray(value, schema, path);
            if (value.is<double>())
                checkBounds(value, schema, path);
            return;
        }
        for (const std::string& name : names) {
            if ((name == "boolean" && value.is<bool>()) ||
                (name == "string" && value.is<std::string>()) ||
                (name == "null" && value.isNull())) {
                return;
            }
            if (const double* number = std::get_if<double>(&value.storage());
                number != nullptr && ((name == "number" && std::isfinite(*number)) ||
                                      (name == "integer" && isWholeInt64(*number)))) {
                checkBounds(value, schema, path);
                return;
            }
            if (name == "array" && value.is<JSONValue::Array>()) {
                checkArray(value, schema, path);
                return;
            }
            if (name == "object" && value.is<JSONValue::Object>()) {
                checkObject(value, schema, path);
                return;
            }
        }
        fail(path + " must be " + joined(names, " or ") + " for " + tool_ + ".");
    }

private:
    [[noreturn]] static void fail(std::string message) {
        throw InvalidArguments(std::move(message));
    }

    void checkAnyOf(const JSONValue& value, const JSONValue::Array& alternatives,
                    const std::string& path) const {
        for (const JSONValue& alternative : alternatives) {
            try {
                check(value, alternative, path);
                return;
            } catch (const InvalidArguments&) {
                // Try the next; only the lack of any fit is reported.
            }
        }
        fail(path + " has an unsupported value for " + tool_ + ".");
    }

    static void checkEnum(const JSONValue& value, const JSONValue::Array& values,
                          const std::string& path) {
        std::vector<std::string> texts;
        for (const JSONValue& member : values) {
            if (member == value)
                return;
            texts.push_back(member.text());
        }
        fail(path + " must be one of: " + joined(texts, ", ") + ".");
    }

    void checkBounds(const JSONValue& value, const JSONValue& schema,
                     const std::string& path) const {
        const double number = std::get<double>(value.storage());
        if (const JSONValue* bound = schema["minimum"]) {
            if (const auto minimum = bound->doubleValue(); minimum && *minimum > number) {
                fail(path + " must be at least " + boundText(*minimum) + " for " + tool_ + ".");
            }
        }
        if (const JSONValue* bound = schema["maximum"]) {
            if (const auto maximum = bound->doubleValue(); maximum && *maximum < number) {
                fail(path + " must be at most " + boundText(*maximum) + " for " + tool_ + ".");
            }
        }
    }

    void checkObject(const JSONValue& value, const JSONValue& schema,
                     const std::string& path) const {
        static const JSONValue::Object none;
        const JSONValue* declared = schema["properties"];
        const JSONValue::Object& properties =
            declared != nullptr && declared->objectValue() != nullptr ? *declared->objectValue()
                                                                      : none;
        const JSONValue::Object& members = *value.objectValue();
        auto fieldName = [&path](const std::string& key) {
            return path == "arguments" ? key : path + "." + key;
        };

        // Unknown keys come first: a misspelt key usually explains a missing one.
        if (const JSONValue* additional = schema["additionalProperties"];
            additional != nullptr && *additional == JSONValue(false)) {
            for (const auto& entry : members) {
                const std::string& key = entry.first;
                if (properties.count(key) > 0)
                    continue;
                std::string hint;
                std::vector<std::string> valid;
                for (const auto& property : properties) {
                    if (hint.empty() && endsWith(key, "_" + property.first)) {
                        hint = " Did you mean \"" + property.first + "\"?";
                    }
                    valid.push_back(property.first);
                }
                if (hint.empty())
                    hint = " Valid fields: " + joined(valid, ", ") + ".";
                fail("Unknown parameter \"" + fieldName(key) + "\" for " + tool_ + "." + hint);
            }
        }

        if (const JSONValue* required = schema["required"];
            required != nullptr && required->arrayValue() != nullptr) {
            for (const JSONValue& name : *required->arrayValue()) {
                if (!name.is<std::string>() && !name.is<double>())
                    continue;
                const std::string key = *name.stringValue();
                if (members.count(key) == 0)
                    fail("Give " + fieldName(key) + " for " + tool_ + ".");
            }
        }

        for (const auto& [key, propertySchema] : properties) {
            if (const auto member = members.find(key); member != members.end()) {
                check(member->second, propertySchema, path + "." + key);
            }
        }
    }

    void checkArray(const JSONValue& value, const JSONValue& schema,
                    const std::string& path) const {
        const JSONValue* items = schema["items"];
        if (items == nullptr)
            return;
        const JSONValue::Array& elements = *value.arrayValue();
        for (std::size_t index = 0; index < elements.size(); ++index) {
            check(elements[index], *items, path + "[" + std::to_string(index) + "]");
        }
    }

    std::string tool_;
};

} // namespace

void validate(const JSONValue& arguments, const AgentTool& tool) {
    validate(arguments, tool.inputSchema, "arguments", tool.name);
}

void validate(const JSONValue& value, const JSONValue& schema, const std::string& path,
              std::string_view toolName) {
    Checker(toolName).check(value, schema, path);
}

} // namespace velarion::agentArguments
