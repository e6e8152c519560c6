// Reading the agent's argument values, and edits through the host with the
// words they leave in the live history.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/TextTrimming.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>
#include <variant>

namespace velarion::agentService {

std::string text(const JSONValue* value, std::string_view name) {
    std::optional<std::string> given = value ? value->stringValue() : std::nullopt;
    std::string trimmed = given ? trimmingWhitespace(*given) : std::string();
    if (trimmed.empty()) throw AgentFailure("Give " + std::string(name) + ".");
    return trimmed;
}

ClearTarget choice(const JSONValue* value, std::string_view name) {
    const std::optional<std::string> given = value ? value->stringValue() : std::nullopt;
    if (given) {
        if (const auto target = parseEnum<ClearTarget>(*given)) return *target;
    }
    throw AgentFailure(std::string(name) + " isn't one of the allowed values.");
}

std::optional<int> clock(const JSONValue* value) {
    const std::optional<std::string> given = value ? value->stringValue() : std::nullopt;
    const std::string trimmed = given ? trimmingWhitespace(*given) : std::string();
    if (trimmed.empty()) return std::nullopt;
    const auto refuse = [] { return AgentFailure("Times are 24-hour \"HH:MM\"."); };
    const std::size_t colon = trimmed.find(':');
    if (colon == std::string::npos || trimmed.find(':', colon + 1) != std::string::npos) throw refuse();
    const auto number = [&](std::string_view part) {
        if (part.empty() || part.size() > 2) throw refuse();
        int result = 0;
        for (char c : part) {
            if (c < '0' || c > '9') throw refuse();
            result = result * 10 + (c - '0');
        }
        return result;
    };
    const int hours = number(std::string_view(trimmed).substr(0, colon));
    const int minutes = number(std::string_view(trimmed).substr(colon + 1));
    if (hours > 23 || minutes > 59) throw refuse();
    return hours * 60 + minutes;
}

std::filesystem::path url(const std::string& text, bool isShow) {
    std::string expanded = text;
    if (expanded == "~" || expanded.starts_with("~/")) {
        const char* home = std::getenv("HOME");
        expanded = std::string(home ? home : "") + expanded.substr(1);
    }
    std::filesystem::path path(expanded);
    // A trailing slash would make the extension land inside the package.
    while (path.has_parent_path() && !path.has_filename() && path != path.root_path()) {
        path = path.parent_path();
    }
    if (isShow && path.extension() != "." + std::string(ShowPackage::fileExtension)) {
        path += "." + std::string(ShowPackage::fileExtension);
    }
    return path;
}

bool flag(const JSONValue* value, bool fallback) {
    if (!value) return fallback;
    return value->boolValue().value_or(fallback);
}

std::string clockText(int minuteOfDay) {
    char text[8];
    std::snprintf(text, sizeof text, "%02d:%02d", (minuteOfDay / 60) % 100, minuteOfDay % 60);
    return text;
}

std::string editWords(const ShowEdit& edit) {
    return std::visit(
        [](const auto& change) -> std::string {
            using T = std::decay_t<decltype(change)>;
            if constexpr (std::is_same_v<T, edit::SetTitle>) return "renamed show " + change.title;
            else if constexpr (std::is_same_v<T, edit::AddSection>) return "added section " + change.section.title;
            else if constexpr (std::is_same_v<T, edit::RenameSection>) return "renamed section " + change.title;
            else if constexpr (std::is_same_v<T, edit::SetSectionSchedule>) return "updated the schedule";
            else if constexpr (std::is_same_v<T, edit::DeleteSection>) return "deleted a section";
            else if constexpr (std::is_same_v<T, edit::MoveSection>) return "reordered sections";
            else if constexpr (std::is_same_v<T, edit::InsertCue>) return "added cue " + change.cue.name;
            else if constexpr (std::is_same_v<T, edit::UpdateCue>) return "updated cue " + change.cue.name;
            else if constexpr (std::is_same_v<T, edit::DeleteCue>) return "deleted a cue";
            else if constexpr (std::is_same_v<T, edit::MoveCue> || std::is_same_v<T, edit::MoveMoment>)
                return "reordered cues";
            else if constexpr (std::is_same_v<T, edit::AddMedia>) return "added media " + change.item.name;
            else if constexpr (std::is_same_v<T, edit::UpdateMedia>) return "updated media " + change.item.name;
            else if constexpr (std::is_same_v<T, edit::RemoveMedia>) return "removed media";
            else if constexpr (std::is_same_v<T, edit::SetOutputs>) return "updated outputs";
            else if constexpr (std::is_same_v<T, edit::SetAudio>) return "updated sound settings";
            else if constexpr (std::is_same_v<T, edit::SetHolding>) return "updated the safe slide";
            else if constexpr (std::is_same_v<T, edit::CreateCueGroup>) return "created cue group " + change.group.name;
            else if constexpr (std::is_same_v<T, edit::UpdateCueGroup>) return "updated cue group " + change.group.name;
            else if constexpr (std::is_same_v<T, edit::RemoveCueGroup>) return "removed a cue group";
            else return "updated show settings";
        },
        edit);
}

void apply(AgentCall& call, const ShowEdit& edit) {
    if (std::optional<std::string> refusal = call.host.agentEdit(edit)) {
        throw AgentFailure(std::move(*refusal));
    }
    call.note("Agent: " + editWords(edit));
}

} // namespace velarion::agentService
