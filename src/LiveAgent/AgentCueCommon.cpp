// The settings every cue has (name, follow, routing, placement …), and
// reading a Spotify link.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace velarion::agentService {

namespace {

std::optional<double> finiteNumber(const JSONValue* value) {
    const std::optional<double> number = value ? value->doubleValue() : std::nullopt;
    if (!number || !std::isfinite(*number)) return std::nullopt;
    return number;
}

CueGeometry geometry(const JSONValue& value, const CueGeometry& present) {
    const auto read = [&](std::string_view key, double fallback) {
        return finiteNumber(value[key]).value_or(fallback);
    };
    return CueGeometry::make(read("scale", present.scale), read("x", present.x), read("y", present.y),
                             read("rotation", present.rotation), read("opacity", present.opacity));
}

std::vector<std::string_view> pathComponents(std::string_view path) {
    std::vector<std::string_view> components;
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        const std::string_view component = path.substr(0, slash);
        if (!component.empty()) components.push_back(component);
        if (slash == std::string_view::npos) break;
        path.remove_prefix(slash + 1);
    }
    return components;
}

} // namespace

void applyCommon(const JSONValue& arguments, Cue& cue, const Show& show) {
    if (arguments["name"]) cue.name = text(arguments["name"], "name");
    if (const JSONValue* notes = arguments["notes"]) cue.notes = notes->stringValue().value_or("");
    if (const auto wait = finiteNumber(arguments["pre_wait"])) cue.preWait = std::max(0.0, *wait);
    cue.isEnabled = flag(arguments["enabled"], cue.isEnabled);
    if (const JSONValue* follow = arguments["follow"]) {
        const std::string word = follow->stringValue().value_or("");
        if (word == "go") cue.follow = Follow::manual;
        else if (word == "with_previous") cue.follow = Follow::withPrevious;
        else if (word == "after_previous") cue.follow = Follow::afterPrevious;
        else throw AgentFailure("follow must be go, with_previous, or after_previous.");
    }
    if (const JSONValue* duration = arguments["group_duration"]) {
        if (duration->isNull()) {
            cue.groupDuration.reset();
        } else {
            const std::optional<double> seconds = finiteNumber(duration);
            if (!seconds || *seconds <= 0) throw AgentFailure("group_duration must be positive, finite seconds or null.");
            cue.groupDuration = seconds;
        }
    }
    if (const JSONValue* description = arguments["description_override"]) {
        const std::string words = trimmingWhitespace(description->stringValue().value_or(""));
        cue.descriptionOverride = words.empty() ? std::nullopt : std::optional(words);
    }
    if (const JSONValue* keep = arguments["keep_on_screen"]) cue.keepOnScreen = keep->boolValue();
    if (const JSONValue* outputs = arguments["visual_output_ids"]) {
        if (outputs->isNull()) {
            cue.visualOutputIDs.reset();
        } else {
            const std::vector<std::string> known = show.outputs.visualDestinations();
            std::vector<std::string> ids;
            for (const JSONValue& id : *outputs->arrayValue()) {
                const std::string given = id.stringValue().value_or("");
                if (std::find(known.begin(), known.end(), given) == known.end()) {
                    throw AgentFailure(given + " isn't one of the allowed values.");
                }
                ids.push_back(given);
            }
            cue.visualOutputIDs = std::move(ids);
        }
    }
    if (const JSONValue* device = arguments["audio_device_id"]) {
        if (device->isNull()) {
            cue.audioDeviceID.reset();
        } else {
            const std::string uid = trimmingWhitespace(device->stringValue().value_or(""));
            if (uid.empty()) throw AgentFailure("audio_device_id needs a device UID, system, or null to follow defaults.");
            cue.audioDeviceID = uid;
        }
    }
    if (const JSONValue* view = arguments["operator_view"]) {
        if (view->isNull()) cue.operatorView.reset();
        else if (const auto parsed = parseEnum<CueOperatorView>(view->stringValue().value_or(""))) cue.operatorView = parsed;
        else throw AgentFailure("operator_view isn't one of the allowed values.");
    }
    if (const JSONValue* placement = arguments["geometry"]) {
        if (placement->isNull()) {
            cue.geometry.reset();
        } else {
            const CueGeometry placed = geometry(*placement, cue.geometry.value_or(CueGeometry::full()));
            cue.geometry = placed.isFull() ? std::nullopt : std::optional(placed);
        }
    }
}

std::optional<std::string> spotifyURI(std::string_view text) {
    const std::string trimmed = trimmingWhitespace(text);
    for (const char* prefix : {"spotify:track:", "spotify:playlist:", "spotify:album:"}) {
        if (trimmed.starts_with(prefix) && trimmed.size() > std::string_view(prefix).size()) return trimmed;
    }
    std::string_view rest = trimmed;
    const std::size_t scheme = rest.find("://");
    if (scheme == std::string_view::npos) return std::nullopt;
    const std::string_view protocol = rest.substr(0, scheme);
    if (protocol != "https" && protocol != "http") return std::nullopt;
    rest.remove_prefix(scheme + 3);
    rest = rest.substr(0, rest.find_first_of("?#"));
    const std::size_t slash = rest.find('/');
    std::string host(rest.substr(0, slash));
    if (const std::size_t port = host.find(':'); port != std::string::npos) host.resize(port);
    std::transform(host.begin(), host.end(), host.begin(), [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    if (host != "spotify.com" && !host.ends_with(".spotify.com")) return std::nullopt;
    if (slash == std::string_view::npos) return std::nullopt;
    const std::vector<std::string_view> components = pathComponents(rest.substr(slash + 1));
    for (std::size_t i = 0; i + 1 < components.size(); ++i) {
        const std::string_view kind = components[i];
        if (kind == "track" || kind == "playlist" || kind == "album") {
            return "spotify:" + std::string(kind) + ":" + std::string(components[i + 1]);
        }
    }
    return std::nullopt;
}

} // namespace velarion::agentService
