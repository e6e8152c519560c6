#pragma once
// InspectorForm: one group of the inspector's fields. Each field reads its
// value from the cue on show and turns the operator's change into a change
// of a cue value, which the inspector applies to every selected cue of the
// kind as one edit; the field then shows what the show took, limits
// applied. Loading changes only the fields whose value differs and never
// counts as the operator's change.
//
// Contract: main thread; the form is given the show and cue to read at each
// `load`, and keeps no pointer to them past it.

#include "LiveModel/Show.h"

#include <QString>
#include <QWidget>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

namespace velarion::console {

using CueChange = std::function<void(Cue&)>;
// A choice's entries: the words shown and the key stored.
using ChoiceItems = std::vector<std::pair<QString, QString>>;

// Spin box settings for a number field. `scale` turns the stored value into
// the shown one (100 for a level shown in percent).
struct NumberFormat {
    double minimum = 0;
    double maximum = 3600;
    int decimals = 1;
    QString suffix = " s";
    double scale = 1;
};

class InspectorForm : public QWidget {
public:
    static constexpr int labelWidth = 165;

    InspectorForm(const QString& heading, std::function<void(CueChange)> commit, QWidget* parent = nullptr);

    QLineEdit* text(const QString& label, std::function<std::string(const Cue&)> get,
                    std::function<void(Cue&, const std::string&)> set);
    QDoubleSpinBox* number(const QString& label, std::function<double(const Cue&)> get,
                           std::function<void(Cue&, double)> set, NumberFormat format = {});
    // A number that may be absent: the box beside it says "Off" when it is.
    QDoubleSpinBox* optionalNumber(const QString& label, std::function<std::optional<double>(const Cue&)> get,
                                   std::function<void(Cue&, std::optional<double>)> set, NumberFormat format = {});
    QCheckBox* toggle(const QString& label, std::function<bool(const Cue&)> get, std::function<void(Cue&, bool)> set);
    // Entries are asked for at each load, so lists of media or screens stay
    // current.
    QComboBox* choice(const QString& label, std::function<ChoiceItems(const Show&, const Cue&)> items,
                      std::function<QString(const Cue&)> get, std::function<void(Cue&, const QString&)> set);
    // A row of the caller's own widget, refreshed by `load`.
    void row(const QString& label, QWidget* widget, std::function<void(const Show&, const Cue&)> load);

    // Runs at each load after the fields above it, for what depends on
    // several of them.
    void onLoad(std::function<void(const Show&, const Cue&)> load) { loaders_.push_back(std::move(load)); }
    // Hides or shows the row of a field made here.
    void setRowVisible(QWidget* field, bool visible);

    void load(const Show& show, const Cue& cue);
    void commit(CueChange change) { commit_(std::move(change)); }
    // True while `load` sets the fields: their signals are not the operator's.
    bool isLoading() const { return loading_; }

private:
    QFormLayout* layout_;
    std::function<void(CueChange)> commit_;
    std::vector<std::function<void(const Show&, const Cue&)>> loaders_;
    bool loading_ = false;
};

// Fixed entries from an enum's stored names and the operator's words.
ChoiceItems fixedChoices(std::initializer_list<std::pair<const char*, const char*>> entries);
// Library items of one kind, by name, keyed by id; a missing one stays
// listed as "Missing item" so the field never lies.
ChoiceItems mediaChoices(const Show& show, MediaKind kind, const std::optional<Uuid>& current);
QString key(const Uuid& id);
std::optional<Uuid> uuidOf(const QString& key);

} // namespace velarion::console
