// The console's moves in the run of show: a moment one step up or down, and
// a cue's "start together with the cue above". Both go through `edit`, so
// they undo in one step and are refused in Show Mode like any edit.

#include "Live/AppModel.h"

#include "LiveModel/CueGroups.h"
#include "LiveModel/CueInsertionPoint.h"

namespace velarion {

bool AppModel::canMoveRundownCue(const Uuid& cueID, CueMoveDirection direction) const {
    return show_ && !isLocked() && reorderDestination(*show_, cueID, direction).has_value();
}

bool AppModel::moveRundownCue(const Uuid& cueID, CueMoveDirection direction) {
    if (!canMoveRundownCue(cueID, direction)) return false;
    if (rename_) setRename(std::nullopt);
    const Cue* cue = show_->cue(cueID);
    const std::string name = cue ? cue->name : std::string();
    const std::optional<CueInsertionPoint> point = reorderDestination(*show_, cueID, direction);
    // A step always lands next to a neighbouring cue, so the point names its section.
    if (!point || !point->sectionID) return false;
    if (!edit(edit::MoveMomentToSection{cueID, *point->sectionID, point->before})) return false;
    setStatus("Moved " + name + " " + std::string(toString(direction)));
    return true;
}

bool AppModel::canToggleStartTogether(const Uuid& cueID) const {
    return show_ && !isLocked() && startTogetherPredecessor(*show_, cueID) != nullptr;
}

bool AppModel::toggleStartTogether(const Uuid& cueID) {
    if (!canToggleStartTogether(cueID)) return false;
    Cue cue = *show_->cue(cueID);
    cue.follow = cue.follow == Follow::withPrevious ? Follow::manual : Follow::withPrevious;
    return edit(edit::UpdateCue{std::move(cue)});
}

} // namespace velarion
