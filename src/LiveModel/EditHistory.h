#pragma once
// Undo and redo over whole Show values, and the Show Mode lock. Holding whole
// shows rather than inverse edits means any edit undoes exactly, whatever it
// touched; the snapshots share every section and item they have in common,
// so a full history costs little more than the show itself.
//
// Ownership: the history owns its snapshots; the current show stays with the
// caller and is passed in. Thread: owned and called by the main thread only.

#include "LiveModel/Show.h"
#include "LiveModel/ShowEdit.h"

#include <optional>
#include <vector>

namespace velarion {

class EditHistory {
public:
    // The application asks for 100 steps; a limit below 1 becomes 1.
    explicit EditHistory(int limit);

    // Applies the edit and records the step. Throws ShowEditError when locked
    // or refused, with the stacks as they were. An edit that changes nothing
    // makes no step and leaves redo alone.
    Show apply(const ShowEdit& edit, const Show& to);
    // The edits one after another as one step: all go in, or the first
    // refusal throws and nothing does.
    Show apply(const std::vector<ShowEdit>& edits, const Show& to);

    // The show before the last step, or none when locked or there is none.
    std::optional<Show> undo(const Show& from);
    // The mirror image of undo.
    std::optional<Show> redo(const Show& from);

    bool canUndo() const { return !isLocked && !undoStack_.empty(); }
    bool canRedo() const { return !isLocked && !redoStack_.empty(); }

    int limit() const { return limit_; }
    const std::vector<Show>& undoStack() const { return undoStack_; }
    const std::vector<Show>& redoStack() const { return redoStack_; }

    // Show Mode: no edits, no undo, no redo.
    bool isLocked = false;

private:
    std::vector<Show> undoStack_;
    std::vector<Show> redoStack_;
    int limit_;
};

} // namespace velarion
