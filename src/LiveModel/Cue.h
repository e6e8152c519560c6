#pragma once
// One step of the run of show.

#include "LiveModel/CueKind.h"
#include "LiveModel/EnumNames.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion {

enum class Follow { manual, withPrevious, afterPrevious };
VELARION_ENUM_NAMES(Follow, "manual", "withPrevious", "afterPrevious");

enum class MusicHandoff { crossfade, cut };
VELARION_ENUM_NAMES(MusicHandoff, "crossfade", "cut");

enum class CueOperatorView { cues, slides };
VELARION_ENUM_NAMES(CueOperatorView, "cues", "slides");

// Where a cue's picture sits in its target, in unit coordinates.
struct CueGeometry {
    double scale = 1;
    double x = 0;
    double y = 0;
    double rotation = 0;
    double opacity = 1;

    static constexpr CueGeometry full() { return {}; }
    // Limits scale, position and opacity; rotation is free.
    static CueGeometry make(double scale, double x, double y, double rotation, double opacity);
    bool isFull() const { return *this == full(); }

    struct Rect {
        double left, top, width, height;
        friend bool operator==(const Rect&, const Rect&) = default;
    };
    Rect frame() const { return {x + (0.5 - scale / 2), y + (0.5 - scale / 2), scale, scale}; }

    friend bool operator==(const CueGeometry&, const CueGeometry&) = default;
};

struct Cue {
    Uuid id;
    std::string name;
    std::string notes;
    CueKind kind;
    Follow follow = Follow::manual;
    double preWait = 0;
    bool isEnabled = true;
    std::optional<MusicHandoff> musicHandoff;
    std::optional<CueGeometry> geometry;
    std::optional<bool> keepOnScreen;
    std::optional<CueOperatorView> operatorView;
    std::optional<std::vector<std::string>> visualOutputIDs;
    std::optional<std::string> audioDeviceID;
    std::optional<std::string> descriptionOverride;
    std::optional<double> groupDuration;

    friend bool operator==(const Cue&, const Cue&) = default;
};

// How the list view joins a cue to its neighbours in a chain.
struct CueLink {
    bool above = false;
    bool below = false;

    // `index` must lie inside `cues`.
    static CueLink make(const std::vector<const Cue*>& cues, std::size_t index);
    friend bool operator==(const CueLink&, const CueLink&) = default;
};

} // namespace velarion
