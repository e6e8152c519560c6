#pragma once
// Moments and playback groups: the bundles the run of show is worked in.
// A moment is a cue with the cues linked to it (any follow other than manual
// joins the cue before it), or a whole playback group; every reordering moves
// moments, never half of one. A playback group is a named run of consecutive
// cues in one section with its own step-by-step playback.
//
// Results that are lists of cues point into the Show passed in, as
// Show::allCues() does: they stay valid while that Show (or a copy sharing
// its sections) lives unchanged. A CueGroupStep holds copies, since the
// engine keeps steps while the show goes on being edited.
//
// Thread: pure functions on values; any thread.

#include "LiveModel/Show.h"

#include <optional>
#include <vector>

namespace velarion {

// The moment holding a cue, in show order; empty when the cue doesn't exist.
// A group is one moment whatever the follow of its cues; otherwise the walk
// runs over allCues and so may reach across a section boundary.
std::vector<const Cue*> moment(const Show& show, const Uuid& containing);

// The first group that lists the cue, or null.
const CueGroup* cueGroup(const Show& show, const Uuid& containing);

// The group's cues in the order of allCues; ids that no longer exist are
// left out.
std::vector<const Cue*> cues(const Show& show, const CueGroup& in);

// The group cleaned up (trimmed name, cue ids in show order), or throws
// ShowEditError when it can't be a group of this show.
CueGroup validatedCueGroup(const Show& show, const CueGroup& group);

// Cues that start together as one step of a group's playback.
struct CueGroupStep {
    std::vector<Cue> cues;
    // The cue whose end moves the group on: the last cue when the next step
    // waits for it (After Previous), otherwise the cue that opened the step.
    Cue driver;
    friend bool operator==(const CueGroupStep&, const CueGroupStep&) = default;
};

// The group's steps; disabled cues are left out, and a step left empty
// by them is dropped.
std::vector<CueGroupStep> playbackSteps(const Show& show, const CueGroup& in);
// The same from the group's cues in show order, for callers that found them
// already.
std::vector<CueGroupStep> playbackSteps(const std::vector<const Cue*>& cues);

// The cue Next must point at when this one is armed: the first enabled cue of
// its group, or of its With Previous bundle up to it. None for a disabled or
// unknown cue.
std::optional<Uuid> armTarget(const Show& show, const Uuid& forCue);

// The cue right before this one in the show, when both are enabled; used to
// flip a cue between With Previous and manual. Null otherwise.
const Cue* startTogetherPredecessor(const Show& show, const Uuid& of);

} // namespace velarion
