// The Sound tab: the device of each bus, chosen from the computer's outputs,
// the test tone that says which output that is, and the house level now.

#include "Console/ConsoleTheme.h"
#include "Console/ConsoleText.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

namespace velarion::console {

SoundSettings::SoundSettings(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    auto* grid = new QGridLayout;
    house_ = new QComboBox(this);
    headphones_ = new QComboBox(this);
    houseTone_ = new QPushButton("Test Tone", this);
    headphonesTone_ = new QPushButton("Test Tone", this);
    grid->addWidget(new QLabel("<b>House</b>", this), 0, 0);
    grid->addWidget(house_, 0, 1);
    grid->addWidget(houseTone_, 0, 2);
    auto* houseHelp = new QLabel("What the room hears: every cue sent to the house.", this);
    grid->addWidget(houseHelp, 1, 1, 1, 2);
    grid->addWidget(new QLabel("<b>Headphones</b>", this), 2, 0);
    grid->addWidget(headphones_, 2, 1);
    grid->addWidget(headphonesTone_, 2, 2);
    auto* headphonesHelp = new QLabel(
        "For listening privately: cues sent to Headphones, previews and auditions.", this);
    grid->addWidget(headphonesHelp, 3, 1, 1, 2);
    for (QLabel* help : {houseHelp, headphonesHelp})
        help->setStyleSheet(QString("color: %1;").arg(colour::dimText.name()));
    grid->addWidget(new QLabel("<b>House level</b>", this), 4, 0);
    auto* levelRow = new QHBoxLayout;
    level_ = new QSlider(Qt::Horizontal, this);
    level_->setRange(0, 100);
    levelText_ = new QLabel(this);
    levelText_->setMinimumWidth(48);
    mute_ = new QCheckBox("Mute", this);
    levelRow->addWidget(level_, 1);
    levelRow->addWidget(levelText_);
    levelRow->addWidget(mute_);
    grid->addLayout(levelRow, 4, 1, 1, 2);
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);
    note_ = new QLabel(this);
    note_->setWordWrap(true);
    note_->setStyleSheet(QString("color: %1;").arg(colour::warning.name()));
    layout->addWidget(note_);
    layout->addStretch(1);

    connect(house_, &QComboBox::currentIndexChanged, this,
            [this](int) { choose(AudioBus::house, *house_); });
    connect(headphones_, &QComboBox::currentIndexChanged, this,
            [this](int) { choose(AudioBus::headphones, *headphones_); });
    // The running show's level: what the room hears now, not what the show stores.
    connect(level_, &QSlider::valueChanged, this, [this](int percent) {
        levelText_->setText(QString("%1%").arg(percent));
        model_.perform(command::SetMasterLevel{percent / 100.0});
    });
    connect(mute_, &QCheckBox::toggled, this,
            [this](bool on) { model_.perform(command::SetMuted{on}); });
    connect(houseTone_, &QPushButton::clicked, this,
            [this] { model_.playTestTone(AudioBus::house); });
    connect(headphonesTone_, &QPushButton::clicked, this,
            [this] { model_.playTestTone(AudioBus::headphones); });
}

void SoundSettings::fill(QComboBox& box, const std::optional<std::string>& chosen,
                         const std::vector<AudioDevice>& outputs, const QString& noneWords) {
    const QSignalBlocker quiet(&box);
    box.clear();
    box.addItem(noneWords, QString());
    for (const AudioDevice& device : outputs)
        box.addItem(qt(device.name) + (device.isDefault ? " (system default)" : ""), qt(device.id));
    if (chosen && box.findData(qt(*chosen)) < 0)
        box.addItem(qt(*chosen) + " (not connected)", qt(*chosen));
    box.setCurrentIndex(chosen ? box.findData(qt(*chosen)) : 0);
}

void SoundSettings::refresh() {
    const bool hasShow = model_.show().has_value();
    const AudioSetup audio = hasShow ? model_.show()->audio : AudioSetup{};
    auto seen = std::make_pair(audio, model_.soundOutputs());
    for (QWidget* widget : std::initializer_list<QWidget*>{house_, headphones_, houseTone_,
                                                           headphonesTone_, level_, mute_})
        widget->setEnabled(hasShow);
    if (const EngineState* state = model_.engineState(); state && !level_->isSliderDown()) {
        const QSignalBlocker quietLevel(level_);
        const QSignalBlocker quietMute(mute_);
        level_->setValue(int(std::lround(state->masterLevel * 100)));
        levelText_->setText(QString("%1%").arg(level_->value()));
        mute_->setChecked(state->isMuted);
    }
    note_->setText(
        !hasShow ? "Open a show to choose its sound outputs."
        : seen.second.empty()
            ? "No sound outputs were found on this computer: cues play on the system output."
            : "");
    if (seen_ && *seen_ == seen)
        return;
    fill(*house_, audio.houseDeviceID, seen.second, "System output");
    fill(*headphones_, audio.headphonesDeviceID, seen.second,
         "Not chosen · plays through the house");
    seen_ = std::move(seen);
}

void SoundSettings::choose(AudioBus bus, const QComboBox& box) {
    if (!model_.show())
        return;
    const QString key = box.currentData().toString();
    const std::optional<std::string> device =
        key.isEmpty() ? std::nullopt : std::optional<std::string>(key.toStdString());
    AudioSetup audio = model_.show()->audio;
    (bus == AudioBus::house ? audio.houseDeviceID : audio.headphonesDeviceID) = device;
    if (!model_.edit(edit::SetAudio{audio})) {
        // Refused (Show Mode): the chooser goes back to what the show has.
        seen_.reset();
        refresh();
    }
}

} // namespace velarion::console
