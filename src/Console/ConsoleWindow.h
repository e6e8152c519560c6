#pragma once
// ConsoleWindow: the operator's main window. The start page when no show is
// open; otherwise the run of show (or the live deck's slides) beside the
// live rail and the program preview, with the library, inspector and
// History as panels. The title bar names the show and its save state; the
// status bar is the model's one status line, with the Show Mode lock beside
// it. Menus carry every command with its shortcut; single keys go through
// OperatorKeys.
//
// Contract: main thread, after the QApplication. The AppModel (and the
// preferences, when given) outlive the window. The window chains itself onto
// `AppModel::onChange` (keeping what was set before) and restores it on
// destruction. `now` is the Scheduler's clock.

#include "Live/OperatorViewFollow.h"
#include "LiveModel/CueKind.h"

#include <QMainWindow>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

class QDockWidget;
class QLabel;
class QSplitter;
class QStackedWidget;
class QTimer;

namespace velarion {
class AppModel;
class Preferences;
} // namespace velarion

namespace velarion::console {

class HistoryView;
class Inspector;
class LibraryPanel;
class LiveRail;
class OperatorKeys;
class ProgramPreview;
class ReadyView;
class RunOfShowModel;
class RunOfShowView;
class PresentView;
class SlideEditorWindows;
class SettingsWindow;
class StartPage;

class ConsoleWindow final : public QMainWindow {
public:
    enum class Page { start, cues, slides };
    static constexpr int liveRefreshMilliseconds = 50;

    ConsoleWindow(AppModel& model, std::function<double()> now, Preferences* preferences = nullptr);
    ~ConsoleWindow() override;

    // Everything read again from the model now (also done after each
    // change, on the next turn of the main loop).
    void refresh();
    // The engine's state: rail, rows, History, slides and the view follow.
    void refreshLive();

    Page page() const { return page_; }
    void showPage(Page page);
    bool historyIsVisible() const;

    // By the words of its menu entry, without the "…": for tests and tools.
    QAction* action(const QString& words) const;
    RunOfShowModel& rows() { return *rows_; }
    RunOfShowView& runOfShow() { return *runOfShow_; }
    LiveRail& rail() { return *rail_; }
    ProgramPreview& preview() { return *preview_; }
    StartPage& startPage() { return *startPage_; }
    HistoryView& history() { return *history_; }
    Inspector& inspector() { return *inspector_; }
    LibraryPanel& library() { return *library_; }
    PresentView& present() { return *present_; }
    OperatorKeys& keys() { return *keys_; }
    QLabel& lockBadge() { return *lock_; }
    SlideEditorWindows& slideEditors() { return *slideEditors_; }
    ReadyView& readyView() { return *readyView_; }
    SettingsWindow& settings() { return *settings_; }

    // Asks before closing while cues run: "Keep Running" keeps the window.
    std::function<bool()> confirmQuit;
    // Where "Save As…" writes, asked with the file dialog by default; empty
    // when cancelled. Replaceable for tests and tools.
    std::function<QString(const QString& suggestedName)> chooseSaveLocation;
    // What closing the window does once allowed; by default quits the
    // application.
    std::function<void()> onQuit;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildPanels();
    void addAction(QMenu& menu, const QString& words, const QKeySequence& keys, std::function<void()> run,
                   const QString& shownKey = {});
    void updateActions();
    void updateTitle();
    void updateDocks();
    void openPanel();
    void saveAsPanel();
    void followLiveView();
    void scheduleRefresh();
    void moveSelected(bool up);
    void addCue(CueKind kind, const std::string& name);
    void buildSettingsAndReady();

    AppModel& model_;
    std::function<double()> now_;
    Preferences* preferences_;
    std::function<void()> previousOnChange_;
    std::unique_ptr<RunOfShowModel> rows_;
    std::unique_ptr<OperatorKeys> keys_;
    std::unique_ptr<SlideEditorWindows> slideEditors_;
    QStackedWidget* pages_ = nullptr;
    QStackedWidget* centre_ = nullptr;
    StartPage* startPage_ = nullptr;
    QWidget* showPage_ = nullptr;
    RunOfShowView* runOfShow_ = nullptr;
    PresentView* present_ = nullptr;
    LiveRail* rail_ = nullptr;
    ProgramPreview* preview_ = nullptr;
    QSplitter* splitter_ = nullptr;
    HistoryView* history_ = nullptr;
    QDockWidget* historyDock_ = nullptr;
    QDockWidget* libraryDock_ = nullptr;
    LibraryPanel* library_ = nullptr;
    QDockWidget* inspectorDock_ = nullptr;
    Inspector* inspector_ = nullptr;
    ReadyView* readyView_ = nullptr;
    SettingsWindow* settings_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* lock_ = nullptr;
    QLabel* showTitle_ = nullptr;
    QTimer* liveTimer_ = nullptr;
    std::map<QString, QAction*> actions_;
    Page page_ = Page::start;
    OperatorViewFollow follow_;
    const void* followedEngine_ = nullptr;
    std::optional<Uuid> loadedShow_;
    bool refreshQueued_ = false;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion::console
