// The screens of an output setup in either form, the feeds they send, looks,
// and the lyric line limits that follow from them.

#include "LiveModel/OutputSetup.h"

#include <algorithm>

namespace velarion {

namespace {

std::vector<LayerKind> allLayers() {
    std::vector<LayerKind> layers;
    for (std::size_t i = 0; i < enumCount<LayerKind>(); ++i) {
        layers.push_back(static_cast<LayerKind>(i));
    }
    return layers;
}

std::optional<int> clampedLines(std::optional<int> lines) {
    if (!lines)
        return std::nullopt;
    return clampedLyricLines(*lines);
}

LogicalScreen displayScreen(std::string id, std::string name, ScreenRole role,
                            std::vector<LayerKind> layers, std::optional<int> lyricLines) {
    LogicalScreen screen;
    screen.id = id;
    screen.name = std::move(name);
    screen.role = role;
    screen.destination = destination::Display{std::move(id)};
    screen.layers = std::move(layers);
    screen.lyricLines = lyricLines;
    return screen;
}

// The screen a feed's `screen` source names: by screen id, or, for sources
// written before screens had ids of their own, by the display it drives.
const LogicalScreen* screenNamed(const std::vector<LogicalScreen>& screens, const std::string& id) {
    for (const LogicalScreen& screen : screens) {
        if (screen.id == id)
            return &screen;
    }
    const ScreenDestination display = destination::Display{id};
    for (const LogicalScreen& screen : screens) {
        if (screen.destination == display)
            return &screen;
    }
    return nullptr;
}

} // namespace

std::vector<LogicalScreen> OutputSetup::effectiveScreens() const {
    if (usesLogicalScreens)
        return screens;
    std::vector<LogicalScreen> result;
    int number = 0;
    for (const std::string& displayID : audienceDisplayIDs) {
        const auto layers = screenLayers.find(displayID);
        const auto lines = screenLyricLines.find(displayID);
        result.push_back(displayScreen(
            displayID, "Audience " + std::to_string(++number), ScreenRole::audience,
            layers != screenLayers.end() ? layers->second : allLayers(),
            lines != screenLyricLines.end() ? std::optional(clampedLyricLines(lines->second))
                                            : std::nullopt));
    }
    if (audienceWindowForTesting) {
        result.push_back(displayScreen(std::string(testWindowID), "Audience test window",
                                       ScreenRole::audience, allLayers(), std::nullopt));
    }
    if (confidenceDisplayID) {
        result.push_back(displayScreen(*confidenceDisplayID, "Stage", ScreenRole::stage,
                                       allLayers(), std::nullopt));
    }
    for (const NetworkFeed& feed : feeds) {
        LogicalScreen screen;
        screen.id = feed.id.text();
        screen.name = feed.name;
        screen.role = std::holds_alternative<feedSource::Stage>(feed.source) ? ScreenRole::stage
                                                                             : ScreenRole::stream;
        screen.destination = destination::Ndi{feed.id};
        screen.layers = feed.layers;
        screen.lyricLines = clampedLines(feed.lyricLines);
        result.push_back(std::move(screen));
    }
    return result;
}

std::vector<NetworkFeed> OutputSetup::effectiveFeeds() const {
    if (!usesLogicalScreens)
        return feeds;
    std::vector<NetworkFeed> result;
    for (const LogicalScreen& screen : screens) {
        const auto* ndi = std::get_if<destination::Ndi>(&screen.destination);
        if (!ndi)
            continue;
        const auto named = [&](const NetworkFeed& feed) { return feed.id == ndi->feedID; };
        // Two screens on one feed still make one sender.
        if (std::any_of(result.begin(), result.end(), named))
            continue;
        const auto feed = std::find_if(feeds.begin(), feeds.end(), named);
        if (feed != feeds.end())
            result.push_back(*feed);
    }
    return result;
}

bool OutputSetup::materializeScreens() {
    if (usesLogicalScreens)
        return false;
    screens = effectiveScreens();
    usesLogicalScreens = true;
    for (NetworkFeed& feed : feeds) {
        auto* source = std::get_if<feedSource::Screen>(&feed.source);
        if (!source)
            continue;
        const ScreenDestination display = destination::Display{source->id};
        const auto screen = std::find_if(screens.begin(), screens.end(),
                                         [&](const auto& s) { return s.destination == display; });
        if (screen != screens.end())
            source->id = screen->id;
    }
    return true;
}

OutputLook OutputSetup::resolvedLook(const LogicalScreen& screen) const {
    if (screen.lookID) {
        for (const OutputLook& look : looks) {
            if (look.id == *screen.lookID)
                return look;
        }
    }
    // A look that has gone falls back to the screen's own settings too.
    return OutputLook{customLookID(), "Custom", screen.layers, screen.lyricLines};
}

bool OutputSetup::removeLook(const Uuid& id) {
    const auto look = std::find_if(looks.begin(), looks.end(),
                                   [&](const OutputLook& candidate) { return candidate.id == id; });
    if (look == looks.end())
        return false;
    const OutputLook removed = *look;
    looks.erase(look);
    for (LogicalScreen& screen : screens) {
        if (screen.lookID != id)
            continue;
        screen.lookID.reset();
        screen.layers = removed.layers;
        screen.lyricLines = removed.lyricLines;
    }
    return true;
}

void OutputSetup::setLayers(std::vector<LayerKind> layers, const std::string& forScreen) {
    std::sort(layers.begin(), layers.end());
    layers.erase(std::unique(layers.begin(), layers.end()), layers.end());
    screenLayers[forScreen] = std::move(layers);
}

std::vector<std::string> OutputSetup::visualDestinations() const {
    std::vector<std::string> ids;
    for (const LogicalScreen& screen : effectiveScreens()) {
        if (screen.role != ScreenRole::stage)
            ids.push_back(screen.id);
    }
    return ids;
}

std::map<std::string, int> OutputSetup::lyricLineLimits() const {
    // Stage screens draw the speaker's picture, not the lyric layer, and a
    // placeholder sends nothing: neither should make the operator step
    // through more parts.
    std::vector<LogicalScreen> showing;
    for (LogicalScreen& screen : effectiveScreens()) {
        if (screen.role == ScreenRole::stage)
            continue;
        if (std::holds_alternative<destination::Placeholder>(screen.destination))
            continue;
        showing.push_back(std::move(screen));
    }

    // One picture per display, and per feed unless the feed mirrors a
    // screen, in which case it shows that screen's picture. A chain of
    // mirrors is followed to its end; the screens of a loop of mirrors share
    // one picture, named after the first of them.
    const auto mirroredIndex = [&](std::size_t index) -> std::optional<std::size_t> {
        const auto* ndi = std::get_if<destination::Ndi>(&showing[index].destination);
        if (!ndi)
            return std::nullopt;
        const auto feed = std::find_if(feeds.begin(), feeds.end(),
                                       [&](const auto& f) { return f.id == ndi->feedID; });
        if (feed == feeds.end())
            return std::nullopt;
        const auto* source = std::get_if<feedSource::Screen>(&feed->source);
        const LogicalScreen* mirrored = source ? screenNamed(showing, source->id) : nullptr;
        if (!mirrored)
            return std::nullopt;
        return static_cast<std::size_t>(mirrored - showing.data());
    };
    const auto pictureOf = [&](std::size_t index) {
        std::vector<std::size_t> chain{index};
        while (const auto next = mirroredIndex(chain.back())) {
            const auto seen = std::find(chain.begin(), chain.end(), *next);
            if (seen != chain.end()) {
                return showing[*std::min_element(seen, chain.end())].destination;
            }
            chain.push_back(*next);
        }
        return showing[chain.back()].destination;
    };

    std::vector<std::pair<ScreenDestination, int>> strictest;
    std::vector<ScreenDestination> pictures;
    for (const LogicalScreen& screen : showing) {
        pictures.push_back(pictureOf(pictures.size()));
        const auto lines = resolvedLook(screen).lyricLines;
        if (!lines)
            continue;
        const int limit = clampedLyricLines(*lines);
        const auto known = std::find_if(strictest.begin(), strictest.end(), [&](const auto& entry) {
            return entry.first == pictures.back();
        });
        if (known == strictest.end()) {
            strictest.emplace_back(pictures.back(), limit);
        } else {
            known->second = std::min(known->second, limit);
        }
    }

    std::map<std::string, int> limits;
    for (std::size_t i = 0; i < showing.size(); ++i) {
        for (const auto& [picture, limit] : strictest) {
            if (picture == pictures[i])
                limits[showing[i].id] = limit;
        }
    }
    return limits;
}

} // namespace velarion
