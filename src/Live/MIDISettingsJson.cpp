#include "Live/MIDISettingsJson.h"

namespace velarion {

namespace {

nlohmann::json triggerJson(const MIDITrigger& trigger) {
    nlohmann::json payload = std::visit(
        [](const auto& t) {
            using T = std::decay_t<decltype(t)>;
            if constexpr (std::is_same_v<T, midi::NoteTrigger>)
                return nlohmann::json{{"channel", t.channel}, {"note", t.note}};
            else if constexpr (std::is_same_v<T, midi::ControlChangeTrigger>)
                return nlohmann::json{{"channel", t.channel}, {"controller", t.controller}};
            else
                return nlohmann::json{{"channel", t.channel}, {"program", t.program}};
        },
        trigger);
    return nlohmann::json{{std::string(midiTrigger::caseName(trigger)), std::move(payload)}};
}

std::optional<int> integer(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_number_integer()) return std::nullopt;
    return found->get<int>();
}

std::optional<MIDITrigger> triggerFromJson(const nlohmann::json& json) {
    if (!json.is_object() || json.size() != 1) return std::nullopt;
    const auto only = json.begin();
    const std::string& name = only.key();
    const nlohmann::json& payload = only.value();
    if (!payload.is_object()) return std::nullopt;
    const auto channel = integer(payload, "channel");
    if (!channel) return std::nullopt;
    std::optional<MIDITrigger> trigger;
    if (name == "note") {
        if (auto note = integer(payload, "note")) trigger = midi::NoteTrigger{*channel, *note};
    } else if (name == "controlChange") {
        if (auto controller = integer(payload, "controller"))
            trigger = midi::ControlChangeTrigger{*channel, *controller};
    } else if (name == "programChange") {
        if (auto program = integer(payload, "program")) trigger = midi::ProgramChangeTrigger{*channel, *program};
    }
    if (trigger && !midiTrigger::isValid(*trigger)) return std::nullopt;
    return trigger;
}

} // namespace

nlohmann::json midiSettingsJson(const MIDISettings& settings) {
    nlohmann::json bindings = nlohmann::json::array();
    for (const MIDIBinding& binding : settings.bindings)
        bindings.push_back({{"action", std::string(toString(binding.action))}, {"trigger", triggerJson(binding.trigger)}});
    return {{"isEnabled", settings.isEnabled}, {"bindings", std::move(bindings)}};
}

MIDISettings midiSettingsFromJson(const nlohmann::json& json) {
    MIDISettings settings;
    if (!json.is_object()) return settings;
    if (const auto enabled = json.find("isEnabled"); enabled != json.end() && enabled->is_boolean())
        settings.isEnabled = enabled->get<bool>();
    const auto bindings = json.find("bindings");
    if (bindings == json.end() || !bindings->is_array()) return settings;
    for (const auto& entry : *bindings) {
        if (!entry.is_object()) continue;
        const auto action = entry.find("action");
        const auto trigger = entry.find("trigger");
        if (action == entry.end() || !action->is_string() || trigger == entry.end()) continue;
        const auto parsedAction = parseEnum<MIDIAction>(action->get<std::string>());
        const auto parsedTrigger = triggerFromJson(*trigger);
        // Through `bind`, so that a hand-edited file can't give a trigger two jobs.
        if (parsedAction && parsedTrigger) settings.bind(*parsedAction, *parsedTrigger);
    }
    return settings;
}

} // namespace velarion
