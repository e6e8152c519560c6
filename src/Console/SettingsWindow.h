#pragma once
// SettingsWindow: the operator's settings in one window of tabs. Screens
// (logical screens, their displays, looks and tests, NDI feeds, what the
// program view follows), Sound (the House and Headphones devices and the
// test tone), Agent control (the two grants, where an agent connects, what
// agents did lately), MIDI (devices and Learn for each action), Music (the
// chosen player) and General (the panels and the preferences file).
//
// Contract: main thread; the AppModel outlives the window. Every change to
// the show goes through `AppModel::edit`, so Show Mode and undo hold here as
// everywhere; grants, MIDI and preferences go through the model. `refresh`
// reads the model and rebuilds only what differs; the owner calls it after
// the model changed. A tab showing things the model doesn't announce (the
// sound outputs) looks again every two seconds while the window is shown.

#include "LiveEngine/DisplayInfo.h"
#include "LiveEngine/OutputHealth.h"
#include "LiveEngine/ports/AudioDevices.h"
#include "LiveModel/CueKind.h"
#include "LiveModel/MIDIControl.h"
#include "LiveModel/OutputSetup.h"
#include "LiveModel/OutputTestPattern.h"
#include "LiveModel/Show.h"

#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSlider;
class QTabWidget;
class QTableWidget;
class QTimer;

namespace velarion {
class AppModel;
}

namespace velarion::console {

class ScreensSettings final : public QWidget {
public:
    // Columns of the screens table.
    enum Column {
        nameColumn,
        roleColumn,
        connectionColumn,
        looksColumn,
        statusColumn,
        testsColumn,
        columnCount
    };

    ScreensSettings(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    QTableWidget& screenTable() { return *screens_; }
    QTableWidget& feedTable() { return *feeds_; }
    // The connection chooser of a screen's row; null past the end.
    QComboBox* connectionBox(int row) const;
    QComboBox& programBox() { return *program_; }

private:
    struct Seen {
        OutputSetup setup;
        std::vector<DisplayInfo> displays;
        std::vector<OutputHealth> health;
        std::map<std::string, bool> testWindows;
        std::optional<std::string> programSelection;
        bool hasShow = false;
        bool operator==(const Seen&) const = default;
    };
    Seen look() const;
    void rebuildScreens(const Seen& seen);
    void rebuildFeeds(const Seen& seen);
    void rebuildProgram(const Seen& seen);
    QWidget* testsCell(const LogicalScreen& screen, bool isTestWindow, bool testWindowShown);
    void change(const std::function<void(OutputSetup&)>& edit);

    AppModel& model_;
    QLabel* empty_ = nullptr;
    QTableWidget* screens_ = nullptr;
    QTableWidget* feeds_ = nullptr;
    QLabel* feedNote_ = nullptr;
    QComboBox* program_ = nullptr;
    QPushButton* addScreen_ = nullptr;
    QPushButton* addFeed_ = nullptr;
    QComboBox* savedLooks_ = nullptr;
    QPushButton* removeLook_ = nullptr;
    std::optional<Seen> seen_;
    // The pattern each screen shows, as the operator last chose it here.
    std::map<std::string, OutputTestPattern> patterns_;
};

class SoundSettings final : public QWidget {
public:
    SoundSettings(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    QComboBox& houseBox() { return *house_; }
    QComboBox& headphonesBox() { return *headphones_; }
    QSlider& levelSlider() { return *level_; }
    QCheckBox& muteBox() { return *mute_; }

private:
    void fill(QComboBox& box, const std::optional<std::string>& chosen,
              const std::vector<AudioDevice>& outputs, const QString& noneWords);
    void choose(AudioBus bus, const QComboBox& box);

    AppModel& model_;
    QComboBox* house_ = nullptr;
    QComboBox* headphones_ = nullptr;
    QPushButton* houseTone_ = nullptr;
    QPushButton* headphonesTone_ = nullptr;
    QSlider* level_ = nullptr;
    QLabel* levelText_ = nullptr;
    QCheckBox* mute_ = nullptr;
    QLabel* note_ = nullptr;
    std::optional<std::pair<AudioSetup, std::vector<AudioDevice>>> seen_;
};

class AgentSettings final : public QWidget {
public:
    AgentSettings(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    QCheckBox& runBox() { return *run_; }
    QCheckBox& editBox() { return *edit_; }
    QLineEdit& socketField() { return *socket_; }
    QLineEdit& bridgeField() { return *bridge_; }
    QListWidget& activityList() { return *activity_; }

    static constexpr int activityLimit = 30;
    // Where the `velarion-mcp` bridge is: beside this program, else on the
    // PATH; empty when neither has it.
    static QString bridgePath();

private:
    AppModel& model_;
    QCheckBox* run_ = nullptr;
    QCheckBox* edit_ = nullptr;
    QLabel* connection_ = nullptr;
    QLineEdit* socket_ = nullptr;
    QLineEdit* bridge_ = nullptr;
    QListWidget* activity_ = nullptr;
    std::optional<Uuid> newestActivity_;
};

class MIDISettingsTab final : public QWidget {
public:
    MIDISettingsTab(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    QCheckBox& enabledBox() { return *enabled_; }
    QPushButton& learnButton(MIDIAction action) { return *rows_.at(action).learn; }
    QLabel& triggerLabel(MIDIAction action) { return *rows_.at(action).trigger; }

private:
    struct Row {
        QLabel* trigger = nullptr;
        QPushButton* learn = nullptr;
        QPushButton* clear = nullptr;
    };
    AppModel& model_;
    QCheckBox* enabled_ = nullptr;
    QLabel* devices_ = nullptr;
    QLabel* heard_ = nullptr;
    QLabel* error_ = nullptr;
    std::map<MIDIAction, Row> rows_;
};

class MusicSettings final : public QWidget {
public:
    MusicSettings(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    QLineEdit& playerField() { return *player_; }
    // The players running now, to pick from; the first row is a prompt.
    QComboBox& runningPlayers() { return *running_; }

private:
    AppModel& model_;
    QLineEdit* player_ = nullptr;
    QComboBox* running_ = nullptr;
    QLabel* apps_ = nullptr;
};

class GeneralSettings final : public QWidget {
public:
    GeneralSettings(AppModel& model, QWidget* parent = nullptr);
    void refresh();
    // Runs after a panel preference changed, for the window to follow.
    std::function<void()> onPanelsChanged;

private:
    AppModel& model_;
    QCheckBox* library_ = nullptr;
    QCheckBox* inspector_ = nullptr;
    QLabel* file_ = nullptr;
};

class SettingsWindow final : public QWidget {
public:
    enum class Tab { screens, sound, agent, midi, music, general };

    explicit SettingsWindow(AppModel& model, QWidget* parent = nullptr);

    void refresh();
    // Shows the window, raised, at `tab`.
    void showTab(Tab tab);
    Tab currentTab() const;

    ScreensSettings& screens() { return *screens_; }
    SoundSettings& sound() { return *sound_; }
    AgentSettings& agent() { return *agent_; }
    MIDISettingsTab& midi() { return *midi_; }
    MusicSettings& music() { return *music_; }
    GeneralSettings& general() { return *general_; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QTabWidget* tabs_ = nullptr;
    ScreensSettings* screens_ = nullptr;
    SoundSettings* sound_ = nullptr;
    AgentSettings* agent_ = nullptr;
    MIDISettingsTab* midi_ = nullptr;
    MusicSettings* music_ = nullptr;
    GeneralSettings* general_ = nullptr;
    QTimer* poll_ = nullptr;
};

} // namespace velarion::console
