#pragma once
// One playing of a cue group, step by step. Owned by the engine while it
// plays; a step's runs carry the playback's id as their `group`. Tasks of an
// earlier step are told apart by `generation`, so a late one dies silently.

#include "Identity/Uuid.h"
#include "LiveEngine/EngineState.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveModel/CueGroup.h"
#include "LiveModel/CueGroups.h"

#include <optional>
#include <set>
#include <vector>

namespace velarion {

struct GroupPlayback {
    Uuid id;
    CueGroup group;
    std::vector<CueGroupStep> steps;
    std::optional<Uuid> nextCueID;         // where Next goes when the group ends
    std::optional<Uuid> outsideFollowerID; // the After Previous cue behind it
    int index = 0;
    Uuid generation;
    std::optional<Uuid> driverRunID;
    std::set<Uuid> runIDs; // the runs of the present step
    std::optional<int> pendingIndex; // a step waiting for GO
    TaskHandle advanceTask;

    CueGroupPlaybackState snapshot() const;
};

} // namespace velarion
