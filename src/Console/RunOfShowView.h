#pragma once
// RunOfShowView: the run of show's list. Section headings span the row; Next
// has a blue bar, running cues fill with their progress, cue groups are
// joined by a coloured stripe at the left. The current row is the model's
// selected cue; more cues join the selection with Ctrl and Shift, for the
// inspector to change together. Renaming happens in place (double click or
// F2).
//
// Contract: main thread; the AppModel and the RunOfShowModel outlive it.

#include "Identity/Uuid.h"

#include <QTreeView>

#include <functional>
#include <optional>
#include <vector>

namespace velarion {
class AppModel;
}

namespace velarion::console {

class RunOfShowModel;

class RunOfShowView final : public QTreeView {
public:
    RunOfShowView(AppModel& model, RunOfShowModel& rows, QWidget* parent = nullptr);

    // After the rows were rebuilt: headings span again, the scroll position
    // and the selection come back.
    void rowsRebuilt(int scrollValue);
    // Selects and shows the model's selected cue.
    void followSelection();
    // Opens the rename field on the selected cue.
    void renameSelected();
    // Every selected cue, in show order; the section whose heading is the
    // current row, if selected.
    std::vector<Uuid> selectedCueIDs() const;
    std::optional<Uuid> selectedSectionID() const;
    // After any change of the selection, the operator's or the model's.
    std::function<void()> onSelectionChanged;

protected:
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    AppModel& model_;
    RunOfShowModel& rows_;
    bool following_ = false;
};

} // namespace velarion::console
