// The Music tab: which player `music` cues drive, as a preference read when
// Velarion starts, and how the music apps stood when last asked.

#include "Console/ConsoleTheme.h"
#include "Console/ConsoleText.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace velarion::console {

namespace {

QString presenceWords(const ReadyMusicApp& app) {
    switch (app.presence) {
    case ReadyMusicApp::Presence::unknown:
        return qt(app.name) + ": not asked yet";
    case ReadyMusicApp::Presence::notInstalled:
        return qt(app.name) + ": not installed";
    case ReadyMusicApp::Presence::notRunning:
        return qt(app.name) + ": not running";
    case ReadyMusicApp::Presence::running:
        return qt(app.name) + ": running";
    }
    return {};
}

// "org.mpris.MediaPlayer2.rhythmbox" as the operator types it: "rhythmbox".
QString playerWords(const std::string& busName) {
    static const std::string prefix = "org.mpris.MediaPlayer2.";
    return qt(busName.starts_with(prefix) ? busName.substr(prefix.size()) : busName);
}

} // namespace

MusicSettings::MusicSettings(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel("<b>Music player</b>", this));
    player_ = new QLineEdit(this);
    player_->setPlaceholderText("The first player running other than Spotify");
    layout->addWidget(player_);
    running_ = new QComboBox(this);
    layout->addWidget(running_);
    auto* help =
        new QLabel("The player that Music cues control: its MPRIS name, such as rhythmbox or "
                   "org.mpris.MediaPlayer2.rhythmbox. Spotify cues always use Spotify. "
                   "A new choice takes effect when Velarion next starts.",
                   this);
    help->setWordWrap(true);
    help->setStyleSheet(QString("color: %1;").arg(colour::dimText.name()));
    layout->addWidget(help);
    apps_ = new QLabel(this);
    layout->addWidget(apps_);
    layout->addStretch(1);

    const auto choose = [this](const std::string& chosen) {
        Preferences& preferences = model_.preferences();
        if (chosen == preferences.value(preferenceKeys::musicPlayer))
            return;
        if (!preferences.set(preferenceKeys::musicPlayer, chosen))
            model_.setStatus("The music player couldn't be saved: " + preferences.lastWriteError());
    };
    connect(player_, &QLineEdit::editingFinished, this,
            [this, choose] { choose(player_->text().trimmed().toStdString()); });
    connect(running_, &QComboBox::activated, this, [this, choose](int index) {
        if (index <= 0) return;
        player_->setText(running_->itemText(index));
        running_->setCurrentIndex(0);
        choose(player_->text().toStdString());
    });
}

void MusicSettings::refresh() {
    if (!player_->hasFocus()) {
        const QString stored = qt(model_.preferences().value(preferenceKeys::musicPlayer));
        if (player_->text() != stored)
            player_->setText(stored);
    }
    QStringList running;
    for (const std::string& player : model_.runningMusicPlayers()) running << playerWords(player);
    QStringList shown{running.isEmpty() ? "No other music player is running" : "Choose a running player…"};
    shown << running;
    QStringList listed;
    for (int index = 0; index < running_->count(); ++index) listed << running_->itemText(index);
    if (listed != shown) {
        running_->clear();
        running_->addItems(shown);
        running_->setEnabled(!running.isEmpty());
    }
    const ReadyCheckInputs inputs = model_.readyInputs();
    const QString apps = presenceWords(inputs.spotify) + "\n" + presenceWords(inputs.music);
    if (apps_->text() != apps)
        apps_->setText(apps);
}

} // namespace velarion::console
