// The General tab: which panels the show page keeps, and where the
// preferences live (and whether that file could be read).

#include "Console/ConsoleTheme.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"

#include <QCheckBox>
#include <QLabel>
#include <QVBoxLayout>

namespace velarion::console {

GeneralSettings::GeneralSettings(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel("<b>Panels</b>", this));
    library_ = new QCheckBox("Show the Library beside the run of show", this);
    inspector_ = new QCheckBox("Show the Inspector beside the run of show", this);
    layout->addWidget(library_);
    layout->addWidget(inspector_);
    layout->addSpacing(12);
    layout->addWidget(new QLabel("<b>Preferences file</b>", this));
    file_ = new QLabel(this);
    file_->setWordWrap(true);
    file_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(file_);
    layout->addStretch(1);

    const auto store = [this](const PreferenceKey<bool>& key, bool on) {
        Preferences& preferences = model_.preferences();
        if (!preferences.set(key, on))
            model_.setStatus("The preference couldn't be saved: " + preferences.lastWriteError());
        if (onPanelsChanged)
            onPanelsChanged();
    };
    connect(library_, &QCheckBox::toggled, this,
            [store](bool on) { store(preferenceKeys::showLibrary, on); });
    connect(inspector_, &QCheckBox::toggled, this,
            [store](bool on) { store(preferenceKeys::showInspector, on); });
}

void GeneralSettings::refresh() {
    const Preferences& preferences = model_.preferences();
    for (auto [box, key] : std::initializer_list<std::pair<QCheckBox*, const PreferenceKey<bool>*>>{
             {library_, &preferenceKeys::showLibrary},
             {inspector_, &preferenceKeys::showInspector}}) {
        const QSignalBlocker quiet(box);
        box->setChecked(preferences.value(*key));
    }
    QString text = QString::fromStdString(preferences.file().string());
    if (preferences.wasDamaged())
        text += "<br><span style='color:" + colour::warning.name() +
                "'>This file couldn't be read, so Velarion started with the defaults. "
                "It is replaced at the next change.</span>";
    if (!preferences.lastWriteError().empty())
        text += "<br><span style='color:" + colour::warning.name() +
                "'>The last change couldn't be saved: " +
                QString::fromStdString(preferences.lastWriteError()).toHtmlEscaped() + "</span>";
    if (file_->text() != text)
        file_->setText(text);
}

} // namespace velarion::console
