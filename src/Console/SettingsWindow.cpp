#include "Console/SettingsWindow.h"

#include "Live/AppModel.h"

#include <QScrollArea>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace velarion::console {

namespace {

constexpr int pollMilliseconds = 2000;

QWidget* scrolled(QWidget* page) {
    auto* area = new QScrollArea;
    area->setWidget(page);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    return area;
}

} // namespace

SettingsWindow::SettingsWindow(AppModel& model, QWidget* parent) : QWidget(parent, Qt::Window) {
    setWindowTitle("Settings");
    resize(1180, 640);
    auto* layout = new QVBoxLayout(this);
    tabs_ = new QTabWidget(this);
    screens_ = new ScreensSettings(model);
    sound_ = new SoundSettings(model);
    agent_ = new AgentSettings(model);
    midi_ = new MIDISettingsTab(model);
    music_ = new MusicSettings(model);
    general_ = new GeneralSettings(model);
    // In the order of Tab.
    tabs_->addTab(screens_, "Screens");
    tabs_->addTab(scrolled(sound_), "Sound");
    tabs_->addTab(scrolled(agent_), "Agent control");
    tabs_->addTab(scrolled(midi_), "MIDI");
    tabs_->addTab(scrolled(music_), "Music");
    tabs_->addTab(scrolled(general_), "General");
    layout->addWidget(tabs_);

    // The sound outputs and the music players come and go without the
    // model saying so; the players are looked at only while their tab shows.
    poll_ = new QTimer(this);
    connect(poll_, &QTimer::timeout, this, [this] {
        sound_->refresh();
        if (currentTab() == Tab::music) music_->refresh();
    });
    connect(tabs_, &QTabWidget::currentChanged, this, [this] { refresh(); });
}

void SettingsWindow::refresh() {
    screens_->refresh();
    sound_->refresh();
    agent_->refresh();
    midi_->refresh();
    music_->refresh();
    general_->refresh();
}

void SettingsWindow::showTab(Tab tab) {
    tabs_->setCurrentIndex(int(tab));
    refresh();
    show();
    raise();
    activateWindow();
}

SettingsWindow::Tab SettingsWindow::currentTab() const {
    return Tab(tabs_->currentIndex());
}

void SettingsWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    poll_->start(pollMilliseconds);
}

void SettingsWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    poll_->stop();
}

} // namespace velarion::console
