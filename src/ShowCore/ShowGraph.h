#pragma once
// The run of a show: acts hold scenes, scenes hold cues, and a cue is a
// container of ordered actions. Every child names the record holding it, and
// siblings are ordered by their SortRank, not by their place in the list.
// Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/ActionPayload.h"
#include "ShowCore/ActionTarget.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/ShowPolicies.h"
#include "ShowCore/ShowTiming.h"
#include "ShowCore/SortRank.h"

#include <string>
#include <vector>

namespace velarion::showcore {

enum class CueType {
    wait,
    internalCommand,
    localAudio,
    appleMusicAudio,
    video,
    image,
    presentationSlide,
    text,
    timer,
    look,
    controlCommand,
    group
};
SHOWCORE_CASE_NAMES(CueType, "wait", "internalCommand", "localAudio", "appleMusicAudio", "video", "image",
                    "presentationSlide", "text", "timer", "look", "controlCommand", "group");

struct ShowAction {
    Uuid id;
    Uuid cueID;
    std::string title;
    SortRank order = SortRank::initial();
    bool isEnabled = true;
    std::string notes;
    CueTiming timing;
    ActionTarget target = target::None{};
    ActionConcurrencyPolicy concurrencyPolicy = ActionConcurrencyPolicy::replace;
    ShowFailurePolicy failurePolicy = failure::ContinueWithWarning{};
    ActionPayload payload = payload::Wait{};
    bool operator==(const ShowAction&) const = default;
};

struct Cue {
    Uuid id;
    Uuid sceneID;
    CueType type = CueType::wait;
    std::string title;
    SortRank order = SortRank::initial();
    bool isEnabled = true;
    std::string notes;
    std::vector<std::string> tags;
    CueTiming timing;
    ShowFailurePolicy failurePolicy = failure::ContinueWithWarning{};
    std::vector<ShowAction> actions;
    bool operator==(const Cue&) const = default;
};

struct Scene {
    Uuid id;
    Uuid actID;
    std::string title;
    SortRank order = SortRank::initial();
    bool isEnabled = true;
    std::string notes;
    SceneTriggerMode triggerMode = SceneTriggerMode::sequential;
    ShowFailurePolicy failurePolicy = failure::ContinueWithWarning{};
    std::vector<Cue> cues;
    bool operator==(const Scene&) const = default;
};

struct ShowAct {
    Uuid id;
    Uuid showID;
    std::string title;
    SortRank order = SortRank::initial();
    bool isEnabled = true;
    std::string notes;
    std::vector<Scene> scenes;
    bool operator==(const ShowAct&) const = default;
};

} // namespace velarion::showcore
