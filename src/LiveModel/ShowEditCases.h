#pragma once
// Internal to the show edit functions: one handler per edit case, split over
// ShowEdit*.cpp, and the helpers they share. Each handler changes the copy
// it is given, calling Shared::edit() only on the sections and items it
// really changes, or throws ShowEditError.
//
// Thread: pure functions on values; any thread.

#include "LiveModel/ShowEdit.h"

#include <cstddef>
#include <optional>

namespace velarion::showEdit {

// Whether the handler reached its end, so that the group check follows, or
// returned the show as it was.
enum class Outcome { reachedEnd, unchanged };

[[noreturn]] void fail(ShowEditErrorCase reason);

std::optional<std::size_t> sectionIndex(const Show& show, const Uuid& id);
// An index limited to 0 ... count.
std::size_t clampedIndex(long long index, std::size_t count);
// Makes the "Run of show" section when the show has none.
void ensureSection(Show& show);

Outcome applyCase(const edit::SetTitle& edit, Show& show);
Outcome applyCase(const edit::AddSection& edit, Show& show);
Outcome applyCase(const edit::RenameSection& edit, Show& show);
Outcome applyCase(const edit::SetSectionSchedule& edit, Show& show);
Outcome applyCase(const edit::DeleteSection& edit, Show& show);
Outcome applyCase(const edit::MoveSection& edit, Show& show);
Outcome applyCase(const edit::InsertCue& edit, Show& show);
Outcome applyCase(const edit::InsertCues& edit, Show& show);
Outcome applyCase(const edit::UpdateCue& edit, Show& show);
Outcome applyCase(const edit::DeleteCue& edit, Show& show);
Outcome applyCase(const edit::MoveCue& edit, Show& show);
Outcome applyCase(const edit::MoveMoment& edit, Show& show);
Outcome applyCase(const edit::MoveMomentToSection& edit, Show& show);
Outcome applyCase(const edit::AddMedia& edit, Show& show);
Outcome applyCase(const edit::UpdateMedia& edit, Show& show);
Outcome applyCase(const edit::RemoveMedia& edit, Show& show);
Outcome applyCase(const edit::SetOutputs& edit, Show& show);
Outcome applyCase(const edit::SetAudio& edit, Show& show);
Outcome applyCase(const edit::SetHolding& edit, Show& show);
Outcome applyCase(const edit::SetSlideDissolve& edit, Show& show);
Outcome applyCase(const edit::CreateCueGroup& edit, Show& show);
Outcome applyCase(const edit::UpdateCueGroup& edit, Show& show);
Outcome applyCase(const edit::RemoveCueGroup& edit, Show& show);
Outcome applyCase(const edit::ResetVisualOverrides& edit, Show& show);
Outcome applyCase(const edit::ResetAudioOverrides& edit, Show& show);

} // namespace velarion::showEdit
