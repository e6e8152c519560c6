#pragma once
// Inspector: the settings of the selected cue, one page per kind with every
// field of its payload, or of the selected section. Each change is a
// ShowEdit through AppModel; with several cues of one kind selected, a field
// changes them all in one undo step. After each change the fields show what
// the show took, so limits and refusals are seen where they were typed.
//
// Contract: main thread; the AppModel outlives it. `refresh` reads the model
// and changes only what differs; the window calls it after each change.

#include "LiveModel/Show.h"

#include <QScrollArea>

#include <array>
#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QLineEdit;
class QCheckBox;
class QSpinBox;
class QTimeEdit;

namespace velarion {
class AppModel;
}

namespace velarion::console {

class InspectorForm;

class Inspector final : public QScrollArea {
public:
    static constexpr const char* nothingSelected = "Select a cue to see its settings.";

    explicit Inspector(AppModel& model, QWidget* parent = nullptr);

    // The run of show's selection: its cues in order, and the section whose
    // heading is chosen. Without them the model's selected cue alone.
    std::function<std::vector<Uuid>()> selectedCues;
    std::function<std::optional<Uuid>()> selectedSection;

    void refresh();

    // The page of each kind, the fields every cue has, and the section's.
    InspectorForm& page(CueKindCase kind) { return *pages_[std::size_t(kind)]; }
    InspectorForm& identity() { return *identity_; }
    InspectorForm& starting() { return *starting_; }
    InspectorForm& placement() { return *placement_; }
    QLineEdit& sectionTitle() { return *sectionTitle_; }
    QLabel& heading() { return *heading_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The cues a change of the shown cue's fields reaches: the selected cues
    // of its kind, or with `alone` that cue only.
    std::vector<const Cue*> targets(const Cue& shown, bool alone) const;
    void apply(const std::function<void(Cue&)>& change, bool alone);
    void buildSection(QWidget* parent);
    void loadSection(const Section& section);
    void commitSchedule();

    AppModel& model_;
    QLabel* heading_ = nullptr;
    QLabel* empty_ = nullptr;
    InspectorForm* identity_ = nullptr;
    InspectorForm* starting_ = nullptr;
    InspectorForm* placement_ = nullptr;
    InspectorForm* musicOut_ = nullptr;
    std::array<InspectorForm*, 12> pages_{};
    QWidget* section_ = nullptr;
    QLineEdit* sectionTitle_ = nullptr;
    QCheckBox* hasStart_ = nullptr;
    QTimeEdit* start_ = nullptr;
    QCheckBox* hasLength_ = nullptr;
    QSpinBox* length_ = nullptr;
    std::optional<Uuid> shownCue_;
    std::optional<Uuid> shownSection_;
};

} // namespace velarion::console
