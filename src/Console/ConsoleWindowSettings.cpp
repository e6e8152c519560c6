// The console window's Settings and Ready check windows, and the places the
// Ready check's buttons lead to in the console.

#include "Console/ConsoleWindow.h"
#include "Console/ReadyView.h"
#include "Console/RunOfShowView.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"

#include <QDockWidget>
#include <QFileDialog>

namespace velarion::console {

void ConsoleWindow::buildSettingsAndReady() {
    settings_ = new SettingsWindow(model_, this);
    settings_->general().onPanelsChanged = [this] {
        updateDocks();
        updateActions();
    };
    readyView_ = new ReadyView(model_, this);
    ReadyPlaces& places = readyView_->places;
    const auto tab = [this](SettingsWindow::Tab tab) {
        return [this, tab] { settings_->showTab(tab); };
    };
    places.openScreens = tab(SettingsWindow::Tab::screens);
    places.openSound = tab(SettingsWindow::Tab::sound);
    places.openMIDI = tab(SettingsWindow::Tab::midi);
    places.openMusic = tab(SettingsWindow::Tab::music);
    places.showLibrary = [this] {
        if (preferences_)
            preferences_->set(preferenceKeys::showLibrary, true);
        if (page_ == Page::start)
            return;
        libraryDock_->show();
        libraryDock_->raise();
        updateActions();
        raise();
        activateWindow();
    };
    places.showCue = [this] {
        showPage(Page::cues);
        runOfShow_->followSelection();
        raise();
        activateWindow();
    };
    places.chooseFile = [this](const MediaItem& item) -> std::optional<std::filesystem::path> {
        const QString chosen = QFileDialog::getOpenFileName(
            readyView_, QString::fromStdString(AppModel::findMissingPrompt(item)));
        if (chosen.isEmpty())
            return std::nullopt;
        return std::filesystem::path(chosen.toStdString());
    };
}

} // namespace velarion::console
