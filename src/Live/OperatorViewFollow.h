#pragma once
// OperatorViewFollow: lets the operator's page follow what is on air. A run
// whose cue asks for a view takes the operator there once, when it is first
// seen; the operator may then leave and stay away. When the followed run
// ends the page goes back to the cues.
//
// Thread: a plain value; whoever owns it.

#include "Identity/Uuid.h"
#include "LiveModel/Cue.h"

#include <optional>
#include <set>

namespace velarion {

struct OperatorViewFollow {
    std::optional<Uuid> followingRunID; // the run whose page the operator was taken to
    std::set<Uuid> observedRuns;        // active runs already considered

    // The view to switch to, if any. `activeRunID` is the engine's program
    // run, `requestedView` its cue's operator view.
    std::optional<CueOperatorView> update(const std::optional<Uuid>& activeRunID, const std::set<Uuid>& runningIDs,
                                          const std::optional<CueOperatorView>& requestedView);

    friend bool operator==(const OperatorViewFollow&, const OperatorViewFollow&) = default;
};

} // namespace velarion
