#pragma once
// RunOfShowView: the run of show's list. Section headings span the row; Next
// has a blue bar, running cues fill with their progress, cue groups are
// joined by a coloured stripe at the left. The selection is the model's
// selected cue; renaming happens in place (double click or F2).
//
// Contract: main thread; the AppModel and the RunOfShowModel outlive it.

#include <QTreeView>

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

protected:
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    AppModel& model_;
    RunOfShowModel& rows_;
    bool following_ = false;
};

} // namespace velarion::console
