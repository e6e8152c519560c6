#include "Console/InspectorForm.h"
#include "Console/ConsoleText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <cmath>

namespace velarion::console {

namespace {

QDoubleSpinBox* makeSpin(const NumberFormat& format, QWidget* parent) {
    auto* spin = new QDoubleSpinBox(parent);
    spin->setRange(format.minimum * format.scale, format.maximum * format.scale);
    spin->setDecimals(format.decimals);
    spin->setSuffix(format.suffix);
    // One change when typing ends or an arrow steps, not one per key.
    spin->setKeyboardTracking(false);
    spin->setAccelerated(true);
    return spin;
}

void showValue(QDoubleSpinBox* spin, double value) {
    if (std::abs(spin->value() - value) > 1e-9) spin->setValue(value);
}

} // namespace

InspectorForm::InspectorForm(const QString& heading, std::function<void(CueChange)> commit, QWidget* parent)
    : QWidget(parent), commit_(std::move(commit)) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 6, 0, 6);
    outer->setSpacing(4);
    if (!heading.isEmpty()) {
        auto* title = new QLabel(heading, this);
        title->setObjectName("inspectorHeading");
        title->setStyleSheet("font-weight: bold; color: #808690; padding-top: 4px;");
        outer->addWidget(title);
    }
    layout_ = new QFormLayout;
    layout_->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout_->setHorizontalSpacing(10);
    layout_->setVerticalSpacing(5);
    outer->addLayout(layout_);
}

void InspectorForm::row(const QString& label, QWidget* widget, std::function<void(const Show&, const Cue&)> load) {
    widget->setAccessibleName(label);
    // One label width on every form, so the fields line up down the page.
    auto* words = new QLabel(label, this);
    words->setMinimumWidth(labelWidth);
    words->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout_->addRow(words, widget);
    loaders_.push_back(std::move(load));
}

void InspectorForm::setRowVisible(QWidget* field, bool visible) { layout_->setRowVisible(field, visible); }

void InspectorForm::load(const Show& show, const Cue& cue) {
    loading_ = true;
    for (const auto& loader : loaders_) loader(show, cue);
    loading_ = false;
}

QLineEdit* InspectorForm::text(const QString& label, std::function<std::string(const Cue&)> get,
                               std::function<void(Cue&, const std::string&)> set) {
    auto* field = new QLineEdit(this);
    connect(field, &QLineEdit::editingFinished, this, [this, field, set] {
        if (!field->isModified()) return;
        field->setModified(false);
        commit([set, value = field->text().toStdString()](Cue& cue) { set(cue, value); });
    });
    row(label, field, [field, get](const Show&, const Cue& cue) {
        const QString value = qt(get(cue));
        if (field->text() != value) field->setText(value);
        field->setModified(false);
    });
    return field;
}

QDoubleSpinBox* InspectorForm::number(const QString& label, std::function<double(const Cue&)> get,
                                      std::function<void(Cue&, double)> set, NumberFormat format) {
    auto* spin = makeSpin(format, this);
    connect(spin, &QDoubleSpinBox::valueChanged, this, [this, set, scale = format.scale](double shown) {
        if (!loading_) commit([set, value = shown / scale](Cue& cue) { set(cue, value); });
    });
    row(label, spin, [spin, get, scale = format.scale](const Show&, const Cue& cue) { showValue(spin, get(cue) * scale); });
    return spin;
}

QDoubleSpinBox* InspectorForm::optionalNumber(const QString& label,
                                              std::function<std::optional<double>(const Cue&)> get,
                                              std::function<void(Cue&, std::optional<double>)> set,
                                              NumberFormat format) {
    auto* holder = new QWidget(this);
    auto* line = new QHBoxLayout(holder);
    line->setContentsMargins(0, 0, 0, 0);
    auto* on = new QCheckBox(holder);
    auto* spin = makeSpin(format, holder);
    line->addWidget(on);
    line->addWidget(spin, 1);
    const double scale = format.scale;
    connect(on, &QCheckBox::clicked, this, [this, set, spin, scale](bool checked) {
        std::optional<double> value;
        if (checked) value = spin->value() / scale;
        commit([set, value](Cue& cue) { set(cue, value); });
    });
    connect(spin, &QDoubleSpinBox::valueChanged, this, [this, set, on, scale](double shown) {
        if (loading_ || !on->isChecked()) return;
        commit([set, value = shown / scale](Cue& cue) { set(cue, value); });
    });
    row(label, holder, [on, spin, get, scale](const Show&, const Cue& cue) {
        const std::optional<double> value = get(cue);
        if (on->isChecked() != value.has_value()) on->setChecked(value.has_value());
        spin->setEnabled(value.has_value());
        if (value) showValue(spin, *value * scale);
    });
    return spin;
}

QCheckBox* InspectorForm::toggle(const QString& label, std::function<bool(const Cue&)> get,
                                 std::function<void(Cue&, bool)> set) {
    auto* box = new QCheckBox(this);
    connect(box, &QCheckBox::clicked, this, [this, set](bool checked) {
        commit([set, checked](Cue& cue) { set(cue, checked); });
    });
    row(label, box, [box, get](const Show&, const Cue& cue) {
        if (box->isChecked() != get(cue)) box->setChecked(get(cue));
    });
    return box;
}

QComboBox* InspectorForm::choice(const QString& label, std::function<ChoiceItems(const Show&, const Cue&)> items,
                                 std::function<QString(const Cue&)> get, std::function<void(Cue&, const QString&)> set) {
    auto* combo = new QComboBox(this);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(8);
    connect(combo, &QComboBox::activated, this, [this, combo, set](int index) {
        commit([set, value = combo->itemData(index).toString()](Cue& cue) { set(cue, value); });
    });
    row(label, combo, [combo, items, get](const Show& show, const Cue& cue) {
        const ChoiceItems entries = items(show, cue);
        bool same = combo->count() == int(entries.size());
        for (int i = 0; same && i < combo->count(); ++i)
            same = combo->itemText(i) == entries[i].first && combo->itemData(i).toString() == entries[i].second;
        if (!same) {
            combo->clear();
            for (const auto& [words, value] : entries) combo->addItem(words, value);
        }
        const int index = combo->findData(get(cue));
        if (combo->currentIndex() != index) combo->setCurrentIndex(index);
    });
    return combo;
}

ChoiceItems fixedChoices(std::initializer_list<std::pair<const char*, const char*>> entries) {
    ChoiceItems items;
    for (const auto& [value, words] : entries) items.emplace_back(QString(words), QString(value));
    return items;
}

QString key(const Uuid& id) { return qt(id.text()); }

std::optional<Uuid> uuidOf(const QString& key) { return Uuid::parse(key.toStdString()); }

ChoiceItems mediaChoices(const Show& show, MediaKind kind, const std::optional<Uuid>& current) {
    ChoiceItems items;
    bool found = false;
    for (const MediaItem& item : show.library)
        if (item.kind == kind) {
            items.emplace_back(qt(item.name), key(item.id));
            found = found || (current && item.id == *current);
        }
    if (current && !found) items.emplace_back("Missing item", key(*current));
    return items;
}

} // namespace velarion::console
