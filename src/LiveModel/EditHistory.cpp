#include "LiveModel/EditHistory.h"

#include <algorithm>

namespace velarion {

EditHistory::EditHistory(int limit) : limit_(std::max(limit, 1)) {}

Show EditHistory::apply(const ShowEdit& edit, const Show& to) { return apply(std::vector<ShowEdit>{edit}, to); }

Show EditHistory::apply(const std::vector<ShowEdit>& edits, const Show& to) {
    if (isLocked) throw ShowEditError(editError::Locked{});
    Show result = to;
    for (const ShowEdit& edit : edits) result = velarion::apply(edit, result);
    if (result == to) return result;
    undoStack_.push_back(to);
    if (undoStack_.size() > static_cast<std::size_t>(limit_)) undoStack_.erase(undoStack_.begin());
    redoStack_.clear();
    return result;
}

std::optional<Show> EditHistory::undo(const Show& from) {
    if (isLocked || undoStack_.empty()) return std::nullopt;
    Show previous = std::move(undoStack_.back());
    undoStack_.pop_back();
    redoStack_.push_back(from);
    return previous;
}

std::optional<Show> EditHistory::redo(const Show& from) {
    if (isLocked || redoStack_.empty()) return std::nullopt;
    Show next = std::move(redoStack_.back());
    redoStack_.pop_back();
    undoStack_.push_back(from);
    return next;
}

} // namespace velarion
