// Reading screens, looks and connections from the agent's arguments, and
// the check a whole output setup passes before it is applied.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/AsciiCase.h"
#include "LiveModel/ScreenPreset.h"
#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <set>
#include <string>

namespace velarion::agentService {

namespace {

std::vector<LayerKind> allLayers() { return screenPreset::layers(ScreenPreset::everything); }

bool isTestWindow(const ScreenDestination& destination) {
    const auto* display = std::get_if<destination::Display>(&destination);
    return display && display->id == OutputSetup::testWindowID;
}

} // namespace

std::vector<LayerKind> outputLayers(const JSONValue& value) {
    const auto refuse = [] { return AgentFailure("Use everything, clean, overlay, backdrop, or a list of layers."); };
    if (value.is<std::string>()) {
        const auto preset = parseEnum<ScreenPreset>(*value.stringValue());
        if (!preset) throw refuse();
        return screenPreset::layers(*preset);
    }
    const JSONValue::Array* list = value.arrayValue();
    if (!list) throw refuse();
    if (list->empty()) throw AgentFailure("A picture must show at least one layer.");
    std::vector<LayerKind> layers;
    for (const JSONValue& word : *list) {
        const auto layer = parseEnum<LayerKind>(word.stringValue().value_or(""));
        if (!layer) throw refuse();
        if (std::find(layers.begin(), layers.end(), *layer) == layers.end()) layers.push_back(*layer);
    }
    std::sort(layers.begin(), layers.end());
    return layers;
}

Uuid outputUUID(const JSONValue& value, std::string_view word) {
    const std::string text = trimmingWhitespace(value.stringValue().value_or(""));
    if (const auto id = Uuid::parse(text)) return *id;
    throw AgentFailure("\"" + text + "\" isn't a valid " + std::string(word) + ". get_show lists them.");
}

std::string displayID(const std::string& text, const std::vector<DisplayInfo>& displays) {
    if (text == OutputSetup::testWindowID) return text;
    for (const DisplayInfo& display : displays) {
        if (display.id == text) return text;
    }
    const DisplayInfo* named = nullptr;
    for (const DisplayInfo& display : displays) {
        if (display.name != text) continue;
        if (named) throw AgentFailure("More than one display is called " + text + ". Use its id from list_displays.");
        named = &display;
    }
    // A display that isn't connected now keeps its id: the show may be
    // built on another computer than the one it runs on.
    return named ? named->id : text;
}

ScreenDestination screenDestination(const JSONValue& value, const std::vector<DisplayInfo>& displays) {
    const std::string type = value["type"] ? value["type"]->stringValue().value_or("") : "";
    const JSONValue* id = value["id"];
    const std::string idText = id ? trimmingWhitespace(id->stringValue().value_or("")) : std::string();
    if (type == "display") {
        if (idText.empty()) throw AgentFailure("A display destination needs an id.");
        return destination::Display{displayID(idText, displays)};
    }
    if (type == "ndi") {
        if (idText.empty()) throw AgentFailure("An NDI destination needs a feed id.");
        return destination::Ndi{outputUUID(*id, "NDI feed id")};
    }
    if (type == "placeholder") {
        if (id) throw AgentFailure("A placeholder has no connection id.");
        return destination::Placeholder{};
    }
    throw AgentFailure("A screen destination must be display, ndi, or placeholder.");
}

void applyScreenLook(const JSONValue& arguments, LogicalScreen& screen, const std::vector<OutputLook>& looks) {
    const JSONValue* lookID = arguments["look_id"];
    const bool custom = arguments["shows"] || arguments["lyric_lines"];
    if (lookID && !lookID->isNull()) {
        if (custom) throw AgentFailure("Give a screen's look_id or its custom shows/lyric_lines, not both.");
        // A look is named by its id, or by its name as the agent knows it.
        const std::string text = trimmingWhitespace(lookID->stringValue().value_or(""));
        const auto named = std::find_if(looks.begin(), looks.end(), [&](const OutputLook& look) {
            return equalsIgnoringAsciiCase(look.name, text);
        });
        screen.lookID = Uuid::parse(text) ? outputUUID(*lookID, "look name")
                        : named != looks.end() ? named->id
                                               : outputUUID(*lookID, "look name");
        return;
    }
    if (lookID) screen.lookID.reset();
    if (const JSONValue* shows = arguments["shows"]) screen.layers = outputLayers(*shows);
    if (const JSONValue* lines = arguments["lyric_lines"]) {
        if (lines->isNull()) screen.lyricLines.reset();
        else screen.lyricLines = clampedLyricLines(static_cast<int>(std::clamp<std::int64_t>(lines->intValue().value_or(8), -100, 100)));
    }
}

void applyLegacyScreens(const JSONValue& arguments, OutputSetup& setup, const std::vector<DisplayInfo>& displays) {
    // Read everything before changing anything.
    struct Audience {
        std::string display;
        std::optional<std::vector<LayerKind>> layers;
        std::optional<int> lyricLines;
    };
    std::optional<std::vector<Audience>> audience;
    if (const JSONValue* screens = arguments["screens"]) {
        audience.emplace();
        for (const JSONValue& entry : *screens->arrayValue()) {
            Audience screen{displayID(text(entry["display"], "display"), displays), std::nullopt, std::nullopt};
            if (const JSONValue* shows = entry["shows"]) screen.layers = outputLayers(*shows);
            if (const JSONValue* lines = entry["lyric_lines"]) {
                const std::int64_t count = lines->intValue().value_or(0);
                if (count > 0) screen.lyricLines = clampedLyricLines(static_cast<int>(std::min<std::int64_t>(count, 8)));
            }
            audience->push_back(std::move(screen));
        }
    }
    std::optional<std::optional<std::string>> speaker;
    if (const JSONValue* display = arguments["speaker_display"]) {
        const std::string id = trimmingWhitespace(display->stringValue().value_or(""));
        speaker = id.empty() ? std::nullopt : std::optional(displayID(id, displays));
    }
    const bool setsTestWindow = arguments["test_window"] != nullptr;
    const bool testWindowOn = flag(arguments["test_window"], false);

    if (audience) {
        for (const std::string& old : setup.audienceDisplayIDs) {
            setup.screenLayers.erase(old);
            setup.screenLyricLines.erase(old);
        }
        setup.audienceDisplayIDs.clear();
        for (const Audience& screen : *audience) {
            setup.audienceDisplayIDs.push_back(screen.display);
            if (screen.layers) setup.screenLayers[screen.display] = *screen.layers;
            if (screen.lyricLines) setup.screenLyricLines[screen.display] = *screen.lyricLines;
        }
    }
    if (speaker) setup.confidenceDisplayID = *speaker;
    if (setsTestWindow) setup.audienceWindowForTesting = testWindowOn;
    if (!setup.usesLogicalScreens) return;

    // With logical screens, the display connections are replaced and every
    // other screen stays where it is.
    std::vector<LogicalScreen> kept;
    std::optional<std::size_t> insertAt;
    const std::vector<LogicalScreen> old = setup.screens;
    const auto oldID = [&](const ScreenDestination& destination, std::string fallback) {
        for (const LogicalScreen& screen : old) {
            if (screen.destination == destination) return screen.id;
        }
        return fallback;
    };
    for (const LogicalScreen& screen : old) {
        const bool isDisplay = std::holds_alternative<destination::Display>(screen.destination);
        const bool replaced = (audience && isDisplay && screen.role == ScreenRole::audience && !isTestWindow(screen.destination)) ||
                              (speaker && isDisplay && screen.role == ScreenRole::stage) ||
                              (setsTestWindow && isTestWindow(screen.destination));
        if (replaced) {
            if (!insertAt) insertAt = kept.size();
            continue;
        }
        kept.push_back(screen);
    }
    std::vector<LogicalScreen> added;
    const auto make = [&](const std::string& display, std::string name, ScreenRole role) {
        LogicalScreen screen;
        screen.destination = destination::Display{display};
        screen.id = oldID(screen.destination, display);
        screen.name = std::move(name);
        screen.role = role;
        screen.layers = allLayers();
        return screen;
    };
    int number = 0;
    for (const std::string& display : setup.audienceDisplayIDs) {
        if (!audience) break;
        LogicalScreen screen = make(display, "Audience " + std::to_string(++number), ScreenRole::audience);
        if (const auto layers = setup.screenLayers.find(display); layers != setup.screenLayers.end()) screen.layers = layers->second;
        if (const auto lines = setup.screenLyricLines.find(display); lines != setup.screenLyricLines.end()) screen.lyricLines = lines->second;
        added.push_back(std::move(screen));
    }
    if (setsTestWindow && testWindowOn) {
        LogicalScreen screen = make(std::string(OutputSetup::testWindowID), "Audience test window", ScreenRole::audience);
        screen.id = std::string(OutputSetup::testWindowID);
        added.push_back(std::move(screen));
    }
    if (speaker && *speaker) added.push_back(make(**speaker, "Stage", ScreenRole::stage));
    const std::size_t at = std::min(insertAt.value_or(kept.size()), kept.size());
    kept.insert(kept.begin() + static_cast<std::ptrdiff_t>(at), added.begin(), added.end());
    setup.screens = std::move(kept);
}

void syncLegacyScreenConnections(OutputSetup& setup) {
    if (!setup.usesLogicalScreens) return;
    std::vector<std::string> audience;
    std::optional<std::string> confidence;
    bool testWindow = false;
    for (const LogicalScreen& screen : setup.screens) {
        const auto* display = std::get_if<destination::Display>(&screen.destination);
        if (!display) continue;
        if (display->id == OutputSetup::testWindowID) {
            testWindow = testWindow || screen.role == ScreenRole::audience;
        } else if (screen.role == ScreenRole::audience) {
            audience.push_back(display->id);
        } else if (screen.role == ScreenRole::stage && !confidence) {
            confidence = display->id;
        }
    }
    setup.audienceDisplayIDs = std::move(audience);
    setup.confidenceDisplayID = std::move(confidence);
    setup.audienceWindowForTesting = testWindow;
}

void validateOutputConfiguration(const OutputSetup& setup) {
    std::set<Uuid> lookIDs;
    std::set<std::string> lookNames;
    for (const OutputLook& look : setup.looks) {
        if (!lookIDs.insert(look.id).second || !lookNames.insert(asciiLowercased(look.name)).second) {
            throw AgentFailure("Saved looks need unique ids and names.");
        }
    }
    const std::vector<LogicalScreen> screens = setup.effectiveScreens();
    std::set<std::string> screenIDs;
    for (const LogicalScreen& screen : screens) {
        if (!screenIDs.insert(screen.id).second) throw AgentFailure("A screen id was listed twice.");
    }
    std::set<std::string> connections;
    for (const LogicalScreen& screen : screens) {
        if (screen.lookID && *screen.lookID != OutputSetup::customLookID() && !lookIDs.contains(*screen.lookID)) {
            throw AgentFailure(screen.name + " refers to a missing look.");
        }
        if (setup.resolvedLook(screen).layers.empty()) throw AgentFailure(screen.name + " must show at least one layer.");
        std::string connection;
        if (const auto* ndi = std::get_if<destination::Ndi>(&screen.destination)) {
            const bool exists = std::any_of(setup.feeds.begin(), setup.feeds.end(),
                                            [&](const NetworkFeed& feed) { return feed.id == ndi->feedID; });
            if (!exists) throw AgentFailure(screen.name + " refers to a missing NDI feed.");
            connection = "ndi:" + ndi->feedID.text();
        } else if (const auto* display = std::get_if<destination::Display>(&screen.destination)) {
            connection = "display:" + display->id;
        }
        if (!connection.empty() && !connections.insert(connection).second) {
            throw AgentFailure("Each display or NDI feed can be connected to only one logical screen.");
        }
    }
    for (const NetworkFeed& feed : setup.feeds) {
        if (const auto* source = std::get_if<feedSource::Screen>(&feed.source); source && !screenIDs.contains(source->id)) {
            throw AgentFailure(feed.name + " refers to a missing source screen: " + source->id);
        }
        if (feed.layers.empty() || !feed.hasValidFormat()) {
            throw AgentFailure(feed.name + " needs layers, an even width from 16–8192, a height from 16–8192, and a "
                                           "frame rate from 1–120.");
        }
    }
}

} // namespace velarion::agentService
