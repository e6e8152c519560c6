// set_screens and set_network_feeds: each builds a whole new output setup on
// a copy, checks all of it, and applies it as one edit, so a refusal changes
// nothing and one undo restores everything.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/AsciiCase.h"
#include "LiveModel/ScreenPreset.h"
#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>

namespace velarion::agentService {

namespace {

JSONValue applied(AgentCall& call, OutputSetup setup) {
    syncLegacyScreenConnections(setup);
    validateOutputConfiguration(setup);
    apply(call, edit::SetOutputs{setup});
    return screensSummary(call.show().outputs);
}

std::vector<OutputLook> readLooks(const JSONValue::Array& entries, const std::vector<OutputLook>& old) {
    std::vector<OutputLook> looks;
    for (const JSONValue& entry : entries) {
        OutputLook look;
        look.name = text(entry["name"], "name");
        if (const JSONValue* id = entry["id"]) {
            look.id = outputUUID(*id, "look name");
        } else {
            const auto same = std::find_if(old.begin(), old.end(), [&](const OutputLook& candidate) {
                return equalsIgnoringAsciiCase(candidate.name, look.name);
            });
            look.id = same != old.end() ? same->id : Uuid::random();
        }
        const auto previous = std::find_if(old.begin(), old.end(), [&](const OutputLook& o) { return o.id == look.id; });
        look.layers = previous != old.end() ? previous->layers : screenPreset::layers(ScreenPreset::everything);
        look.lyricLines = previous != old.end() ? previous->lyricLines : std::nullopt;
        if (const JSONValue* shows = entry["shows"]) look.layers = outputLayers(*shows);
        if (const JSONValue* lines = entry["lyric_lines"]) {
            if (lines->isNull()) look.lyricLines.reset();
            else look.lyricLines = clampedLyricLines(static_cast<int>(std::clamp<std::int64_t>(lines->intValue().value_or(8), 1, 8)));
        }
        looks.push_back(std::move(look));
    }
    return looks;
}

std::vector<LogicalScreen> readScreens(const JSONValue::Array& entries, const std::vector<LogicalScreen>& old,
                                       const std::vector<OutputLook>& looks, const std::vector<DisplayInfo>& displays) {
    std::vector<LogicalScreen> screens;
    std::set<std::string> taken;
    int number = 0;
    for (const JSONValue& entry : entries) {
        ++number;
        std::optional<ScreenDestination> destination;
        if (const JSONValue* given = entry["destination"]) destination = screenDestination(*given, displays);
        std::string id;
        if (const JSONValue* given = entry["id"]) id = text(given, "screen id");
        const LogicalScreen* previous = nullptr;
        for (const LogicalScreen& screen : old) {
            const bool sameID = !id.empty() && screen.id == id;
            // A connection given twice keeps its old id once; the two then
            // meet the one-screen-per-connection check, not a doubled id.
            const bool sameConnection = id.empty() && destination && screen.destination == *destination &&
                                        !std::holds_alternative<destination::Placeholder>(*destination) &&
                                        !taken.contains(screen.id);
            if (sameID || sameConnection) {
                previous = &screen;
                break;
            }
        }
        LogicalScreen screen;
        if (previous) {
            screen = *previous;
        } else {
            screen.name = "Screen " + std::to_string(number);
            screen.layers = screenPreset::layers(ScreenPreset::everything);
        }
        screen.id = !id.empty() ? id : previous ? previous->id : Uuid::random().text();
        taken.insert(screen.id);
        if (entry["name"]) screen.name = text(entry["name"], "name");
        if (const JSONValue* role = entry["role"]) {
            const std::string word = role->stringValue().value_or("");
            const auto parsed = parseEnum<ScreenRole>(word);
            if (!parsed) throw AgentFailure(word + " isn't one of the allowed values.");
            screen.role = *parsed;
        }
        if (destination) screen.destination = *destination;
        applyScreenLook(entry, screen, looks);
        // A Stage screen shows the confidence picture, whatever its layers.
        if (screen.role == ScreenRole::stage && screen.layers.empty()) {
            screen.layers = screenPreset::layers(ScreenPreset::everything);
        }
        screens.push_back(std::move(screen));
    }
    return screens;
}

} // namespace

JSONValue setScreens(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const bool logical = arguments["logical_screens"] != nullptr;
    const bool legacy = arguments["screens"] || arguments["speaker_display"] || arguments["test_window"];
    if (logical && legacy) throw AgentFailure("Use logical_screens separately from the legacy display settings.");
    if (!logical && !legacy && !arguments["looks"]) {
        throw AgentFailure("Give screens, logical_screens, looks, speaker_display, or test_window.");
    }
    OutputSetup setup = show.outputs;
    const std::vector<DisplayInfo> displays = logical || legacy ? call.host.agentDisplays() : std::vector<DisplayInfo>{};
    if (const JSONValue* looks = arguments["looks"]) setup.looks = readLooks(*looks->arrayValue(), setup.looks);
    if (logical) {
        setup.screens = readScreens(*arguments["logical_screens"]->arrayValue(), setup.effectiveScreens(),
                                    setup.looks, displays);
        setup.usesLogicalScreens = true;
    } else if (legacy) {
        applyLegacyScreens(arguments, setup, displays);
    }
    return applied(call, std::move(setup));
}

JSONValue setNetworkFeeds(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    OutputSetup setup = show.outputs;
    const std::vector<NetworkFeed>& old = show.outputs.feeds;
    std::vector<NetworkFeed> feeds;
    std::set<Uuid> ids;
    std::set<std::string> names;
    for (const JSONValue& entry : *arguments["feeds"]->arrayValue()) {
        NetworkFeed feed;
        feed.id = Uuid::random();
        feed.layers = screenPreset::layers(ScreenPreset::everything);
        if (const JSONValue* id = entry["id"]) {
            feed.id = outputUUID(*id, "NDI feed id");
            if (!ids.insert(feed.id).second) throw AgentFailure("An NDI feed id was listed more than once.");
            const auto known = std::find_if(old.begin(), old.end(), [&](const NetworkFeed& f) { return f.id == feed.id; });
            if (known != old.end()) feed = *known;
        }
        ids.insert(feed.id);
        feed.name = text(entry["name"], "name");
        if (!names.insert(asciiLowercased(feed.name)).second) {
            throw AgentFailure("Each NDI output needs a different name: " + feed.name + " is repeated.");
        }
        const JSONValue* preset = entry["preset"];
        const JSONValue* layers = entry["layers"];
        if (preset && layers) throw AgentFailure("Give preset or layers for an NDI feed, not both.");
        if (preset) feed.layers = outputLayers(*preset);
        if (layers) feed.layers = outputLayers(*layers);

        // Plain values beside their keys: g++ 12 warns falsely about optionals here.
        const JSONValue* transparentKey = entry["transparent"];
        const JSONValue* alphaKey = entry["alpha_mode"];
        const bool transparent = flag(transparentKey, false);
        const NDIAlphaMode alpha =
            alphaKey ? parseEnum<NDIAlphaMode>(alphaKey->stringValue().value_or("")).value_or(NDIAlphaMode::off)
                     : NDIAlphaMode::off;
        if (transparentKey && alphaKey && transparent != (alpha != NDIAlphaMode::off)) {
            throw AgentFailure("transparent and alpha_mode disagree for " + feed.name + ".");
        }
        if (alphaKey) feed.alphaMode = alpha;
        else if (transparentKey) feed.alphaMode = transparent ? NDIAlphaMode::straight : NDIAlphaMode::off;

        const JSONValue* rate = entry["frame_rate"];
        const JSONValue* fpsKey = entry["fps"];
        const std::int64_t fps = fpsKey ? fpsKey->intValue().value_or(0) : 0;
        if (rate) {
            const VideoFrameRate given{static_cast<int>((*rate)["numerator"]->intValue().value_or(0)),
                                       static_cast<int>((*rate)["denominator"]->intValue().value_or(1))};
            const double perSecond = static_cast<double>(given.numerator) / given.denominator;
            if (perSecond < 1 || perSecond > 120) {
                throw AgentFailure("The frame_rate ratio for " + feed.name + " must be from 1–120 frames per second.");
            }
            if (fpsKey && std::lround(perSecond) != fps) throw AgentFailure("fps and frame_rate disagree for " + feed.name + ".");
            feed.frameRate = given;
        } else if (fpsKey) {
            feed.frameRate = VideoFrameRate{static_cast<int>(fps), 1};
        }

        if (const JSONValue* source = entry["source"]) {
            if (const JSONValue* screen = (*source)["screen"]) {
                feed.source = feedSource::Screen{text(screen, "source screen id")};
            } else {
                feed.source = source->stringValue() == "stage" ? NetworkFeedSource(feedSource::Stage{})
                                                               : NetworkFeedSource(feedSource::Audience{});
            }
        }
        const bool picturesOwn = preset || layers || entry["lyric_lines"];
        if (picturesOwn && std::holds_alternative<feedSource::Stage>(feed.source)) {
            throw AgentFailure("NDI feed " + feed.name + " uses the stage picture; its preset, layers, and lyric_lines do not apply.");
        }
        if (picturesOwn && std::holds_alternative<feedSource::Screen>(feed.source)) {
            throw AgentFailure("NDI feed " + feed.name + " mirrors a screen. Edit that screen's look, or choose source "
                               "audience before setting feed layers or lyric_lines.");
        }
        if (const JSONValue* lines = entry["lyric_lines"]) {
            if (lines->isNull()) feed.lyricLines.reset();
            else feed.lyricLines = clampedLyricLines(static_cast<int>(std::clamp<std::int64_t>(lines->intValue().value_or(8), 1, 8)));
        }
        if (entry["sound"]) feed.sendsSound = flag(entry["sound"], false);
        if (entry["width"]) feed.width = static_cast<int>(entry["width"]->intValue().value_or(feed.width));
        if (entry["height"]) feed.height = static_cast<int>(entry["height"]->intValue().value_or(feed.height));
        feeds.push_back(std::move(feed));
    }

    if (setup.usesLogicalScreens) {
        // Cue routing names screens, so screens outlive their feeds as
        // placeholders, and a new feed gets a screen of its own.
        for (LogicalScreen& screen : setup.screens) {
            const auto* ndi = std::get_if<destination::Ndi>(&screen.destination);
            if (ndi && !ids.contains(ndi->feedID)) screen.destination = destination::Placeholder{};
        }
        for (const NetworkFeed& feed : feeds) {
            const bool known = std::any_of(old.begin(), old.end(), [&](const NetworkFeed& f) { return f.id == feed.id; });
            if (known) continue;
            LogicalScreen screen;
            screen.id = Uuid::random().text();
            screen.name = feed.name;
            screen.role = ScreenRole::stream;
            screen.destination = destination::Ndi{feed.id};
            screen.layers = feed.layers;
            screen.lyricLines = feed.lyricLines;
            setup.screens.push_back(std::move(screen));
        }
    }
    setup.feeds = std::move(feeds);
    return applied(call, std::move(setup));
}

} // namespace velarion::agentService
