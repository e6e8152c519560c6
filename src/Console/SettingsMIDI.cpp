// The MIDI tab: MIDI control on or off, the devices plugged in, what was
// heard last, and for each action its button with Learn and Clear. These
// settings belong to the computer, not to the show.

#include "Console/ConsoleTheme.h"
#include "Console/ConsoleText.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"

#include <QCheckBox>
#include <QDateTime>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace velarion::console {

namespace {

void setText(QLabel& label, const QString& text) {
    if (label.text() != text)
        label.setText(text);
    label.setVisible(!text.isEmpty());
}

} // namespace

MIDISettingsTab::MIDISettingsTab(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    enabled_ = new QCheckBox("Use MIDI control", this);
    layout->addWidget(enabled_);
    devices_ = new QLabel(this);
    devices_->setWordWrap(true);
    layout->addWidget(devices_);
    heard_ = new QLabel(this);
    heard_->setStyleSheet(QString("color: %1;").arg(colour::dimText.name()));
    layout->addWidget(heard_);
    error_ = new QLabel(this);
    error_->setWordWrap(true);
    error_->setStyleSheet(QString("color: %1;").arg(colour::warning.name()));
    layout->addWidget(error_);

    auto* grid = new QGridLayout;
    int row = 0;
    for (MIDIAction action :
         {MIDIAction::go, MIDIAction::stopAll, MIDIAction::panic, MIDIAction::pauseResume}) {
        auto* name =
            new QLabel("<b>" + qt(midiAction::name(action)).toHtmlEscaped() + "</b>", this);
        auto* explanation = new QLabel(qt(midiAction::explanation(action)), this);
        explanation->setWordWrap(true);
        explanation->setStyleSheet(QString("color: %1;").arg(colour::dimText.name()));
        Row made{new QLabel(this), new QPushButton("Learn", this), new QPushButton("Clear", this)};
        made.learn->setMinimumWidth(150);
        grid->addWidget(name, row, 0);
        grid->addWidget(made.trigger, row, 1);
        grid->addWidget(made.learn, row, 2);
        grid->addWidget(made.clear, row, 3);
        grid->addWidget(explanation, row + 1, 0, 1, 4);
        connect(made.learn, &QPushButton::clicked, this, [this, action] {
            // Pressed again while waiting: stop waiting.
            model_.midi().learn(model_.midi().learning() == action ? std::nullopt
                                                                   : std::optional(action));
        });
        connect(made.clear, &QPushButton::clicked, this,
                [this, action] { model_.midi().unbind(action); });
        rows_[action] = made;
        row += 2;
    }
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);
    layout->addStretch(1);

    connect(enabled_, &QCheckBox::toggled, this, [this](bool on) { model_.midi().setEnabled(on); });
}

void MIDISettingsTab::refresh() {
    MIDIControlCenter& midi = model_.midi();
    const MIDISettings& settings = midi.settings();
    {
        const QSignalBlocker quiet(enabled_);
        enabled_->setChecked(settings.isEnabled);
    }
    QStringList names;
    for (const MIDISourceInfo& source : midi.sources())
        names << qt(source.name);
    setText(*devices_, !settings.isEnabled ? "MIDI control is off."
                       : names.isEmpty()   ? "No MIDI device is plugged in."
                                           : "Devices: " + names.join(", "));
    QString heard;
    if (const auto& last = midi.lastHeard())
        heard = "Last heard: " + qt(last->message) + " at " +
                QDateTime::fromSecsSinceEpoch(qint64(last->wallSeconds)).toString("HH:mm:ss");
    setText(*heard_, heard);
    setText(*error_, midi.lastError() ? qt(*midi.lastError()) : QString());

    for (auto& [action, row] : rows_) {
        const auto trigger = settings.trigger(action);
        const QString shown = trigger ? qt(midiTrigger::description(*trigger)) : "Not set";
        if (row.trigger->text() != shown)
            row.trigger->setText(shown);
        const QString learn =
            midi.learning() == action ? qt(MIDIControlCenter::learningLabel) : "Learn";
        if (row.learn->text() != learn)
            row.learn->setText(learn);
        row.learn->setEnabled(settings.isEnabled);
        row.clear->setEnabled(trigger.has_value());
    }
}

} // namespace velarion::console
