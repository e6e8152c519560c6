#pragma once
// What happens when actions meet or fail, and how a scene starts its cues.
// Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"

#include <variant>

namespace velarion::showcore {

enum class ActionConcurrencyPolicy { replace, mix, queue, ignoreIfRunning, restart, toggle, allowMultipleInstances };
SHOWCORE_CASE_NAMES(ActionConcurrencyPolicy, "replace", "mix", "queue", "ignoreIfRunning", "restart",
                    "toggle", "allowMultipleInstances");

enum class SceneTriggerMode { together, sequential, explicitTiming };
SHOWCORE_CASE_NAMES(SceneTriggerMode, "together", "sequential", "explicitTiming");

namespace failure {
struct UseVerifiedFallback {
    Uuid cueID;
    bool operator==(const UseVerifiedFallback&) const = default;
};
struct HoldOnRequiredFailure {
    bool operator==(const HoldOnRequiredFailure&) const = default;
};
struct ContinueWithWarning {
    bool operator==(const ContinueWithWarning&) const = default;
};
struct StopScene {
    bool operator==(const StopScene&) const = default;
};
} // namespace failure

// Set at scene, cue and action level.
using ShowFailurePolicy = std::variant<failure::UseVerifiedFallback, failure::HoldOnRequiredFailure,
                                       failure::ContinueWithWarning, failure::StopScene>;

} // namespace velarion::showcore
