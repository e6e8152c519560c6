#pragma once
// Where a show's pictures go: logical screens with their layers and looks,
// and NDI network feeds. The older form (display id lists and per-display
// maps) is kept readable alongside.

#include "LiveModel/EnumNames.h"
#include "LiveModel/LayerKind.h"
#include "Identity/Uuid.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velarion {

enum class ScreenRole { audience, stage, stream, lobby };
VELARION_ENUM_NAMES(ScreenRole, "audience", "stage", "stream", "lobby");

namespace destination {
struct Display {
    std::string id;
    friend bool operator==(const Display&, const Display&) = default;
};
struct Ndi {
    Uuid feedID;
    friend bool operator==(const Ndi&, const Ndi&) = default;
};
struct Placeholder {
    friend bool operator==(const Placeholder&, const Placeholder&) = default;
};
} // namespace destination

using ScreenDestination = std::variant<destination::Display, destination::Ndi, destination::Placeholder>;

// Lyric line limits are 1 to 8 wherever they are read.
inline int clampedLyricLines(int lines) { return lines < 1 ? 1 : (lines > 8 ? 8 : lines); }

struct LogicalScreen {
    std::string id;
    std::string name;
    ScreenRole role = ScreenRole::audience;
    ScreenDestination destination = destination::Placeholder{};
    std::vector<LayerKind> layers;
    std::optional<int> lyricLines;
    std::optional<Uuid> lookID;
    friend bool operator==(const LogicalScreen&, const LogicalScreen&) = default;
};

struct OutputLook {
    Uuid id;
    std::string name;
    std::vector<LayerKind> layers;
    std::optional<int> lyricLines;
    friend bool operator==(const OutputLook&, const OutputLook&) = default;
};

namespace feedSource {
struct Screen {
    std::string id;
    friend bool operator==(const Screen&, const Screen&) = default;
};
struct Audience {
    friend bool operator==(const Audience&, const Audience&) = default;
};
struct Stage {
    friend bool operator==(const Stage&, const Stage&) = default;
};
} // namespace feedSource

using NetworkFeedSource = std::variant<feedSource::Screen, feedSource::Audience, feedSource::Stage>;

enum class NDIAlphaMode { off, straight, premultiplied };
VELARION_ENUM_NAMES(NDIAlphaMode, "off", "straight", "premultiplied");

struct VideoFrameRate {
    int numerator = 30;
    int denominator = 1;

    bool isValid() const;
    // The rate formatted with three decimals, "29.970".
    std::string name() const;
    friend bool operator==(const VideoFrameRate&, const VideoFrameRate&) = default;
};

struct NetworkFeed {
    Uuid id;
    std::string name; // the NDI sender's name
    std::vector<LayerKind> layers;
    NetworkFeedSource source = feedSource::Audience{};
    NDIAlphaMode alphaMode = NDIAlphaMode::off;
    VideoFrameRate frameRate;
    int width = 1920;
    int height = 1080;
    std::optional<int> lyricLines;
    // Lives in memory only: never written, absent after a reload.
    std::optional<bool> sendsSound;

    // The rate rounded to whole frames, or 30 when the rate isn't valid.
    int framesPerSecond() const;
    bool hasValidFormat() const;
    friend bool operator==(const NetworkFeed&, const NetworkFeed&) = default;
};

struct OutputSetup {
    // The reserved destination id of the audience test window.
    static constexpr std::string_view testWindowID = "test-window";

    bool usesLogicalScreens = false;
    std::vector<LogicalScreen> screens;
    std::vector<OutputLook> looks;
    std::vector<std::string> audienceDisplayIDs;
    std::optional<std::string> confidenceDisplayID;
    bool audienceWindowForTesting = false;
    std::map<std::string, std::vector<LayerKind>> screenLayers;
    std::vector<NetworkFeed> feeds;
    std::map<std::string, int> screenLyricLines;
    std::optional<std::vector<std::string>> defaultVisualOutputIDs;

    // The id of the fallback look that stands for a screen's own settings.
    static Uuid customLookID() { return Uuid::nil(); }

    // The screens of either form; every reader goes through these two, so
    // that an old setup behaves like the new one. Old form order: audience
    // displays, the test window, Stage, then one screen per feed.
    std::vector<LogicalScreen> effectiveScreens() const;
    // The feeds to send: with logical screens, only those a screen names.
    std::vector<NetworkFeed> effectiveFeeds() const;
    // Moves an old setup into the new form, once; the old fields stay.
    // False when the setup already uses logical screens.
    bool materializeScreens();

    // The layers and lyric lines a screen shows: its saved look's, or its
    // own under the fallback look "Custom".
    OutputLook resolvedLook(const LogicalScreen& screen) const;
    // Removes the look; screens that used it keep its settings as their own.
    bool removeLook(const Uuid& id);
    // Old form: a display's layers, stored in layer order.
    void setLayers(std::vector<LayerKind> layers, const std::string& forScreen);

    // The ids a visual cue may address: every screen but the Stage ones.
    std::vector<std::string> visualDestinations() const;
    // Lyric line limit by screen id, for screens that show lyrics and have a
    // limit; screens that show one picture share the smallest of their limits.
    std::map<std::string, int> lyricLineLimits() const;

    friend bool operator==(const OutputSetup&, const OutputSetup&) = default;
};

} // namespace velarion
