#pragma once
// The commands a show accepts, where they come from, and the mode the
// operator's workspace is in. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"

#include <variant>

namespace velarion::showcore {

namespace command {
struct FireCue {
    Uuid cueID;
    bool operator==(const FireCue&) const = default;
};
struct ClearDestination {
    Uuid destinationID;
    bool operator==(const ClearDestination&) const = default;
};
struct StopExecution {
    Uuid executionID;
    bool operator==(const StopExecution&) const = default;
};
// Stopping everything is refused unless the operator confirmed it.
struct AllStop {
    bool confirmation = false;
    bool operator==(const AllStop&) const = default;
};
struct Go {
    bool operator==(const Go&) const = default;
};
struct Hold {
    bool operator==(const Hold&) const = default;
};
struct Resume {
    bool operator==(const Resume&) const = default;
};
struct ClearCurrentCue {
    bool operator==(const ClearCurrentCue&) const = default;
};
} // namespace command

using ShowCommand = std::variant<command::FireCue, command::ClearDestination, command::StopExecution,
                                 command::AllStop, command::Go, command::Hold, command::Resume,
                                 command::ClearCurrentCue>;

enum class ShowCommandSourceKind { operatorUI, keyboard, clicker, midi, osc, pad, automation };
SHOWCORE_CASE_NAMES(ShowCommandSourceKind, "operatorUI", "keyboard", "clicker", "midi", "osc", "pad", "automation");

enum class ShowWorkspaceMode { build, rehearse, show };
SHOWCORE_CASE_NAMES(ShowWorkspaceMode, "build", "rehearse", "show");

} // namespace velarion::showcore
