// The console's menu bar: every command with its shortcut, Ctrl where the
// command key stands elsewhere. Single keys (Space, Esc, arrows) are the
// operator keys' and only shown here.

#include "Console/ConsolePages.h"
#include "Console/ConsoleWindow.h"
#include "Console/OperatorKeys.h"
#include "Console/RunOfShowView.h"
#include "Console/ReadyView.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"

#include <QAction>
#include <QDockWidget>
#include <QListWidget>
#include <QMenuBar>
#include <QSplitter>

namespace velarion::console {

namespace {

const QKeySequence none;

} // namespace

void ConsoleWindow::addAction(QMenu& menu, const QString& words, const QKeySequence& keys, std::function<void()> run,
                              const QString& shownKey) {
    QAction* action = menu.addAction(shownKey.isEmpty() ? words : words + "\t" + shownKey);
    if (!keys.isEmpty()) action->setShortcut(keys);
    connect(action, &QAction::triggered, this, [run = std::move(run)] { run(); });
    QString key = words;
    key.remove(QStringLiteral("…"));
    actions_[key] = action;
}

QAction* ConsoleWindow::action(const QString& words) const {
    QString key = words;
    key.remove(QStringLiteral("…"));
    auto found = actions_.find(key);
    return found == actions_.end() ? nullptr : found->second;
}

void ConsoleWindow::moveSelected(bool up) {
    if (const auto& cue = model_.selectedCueID())
        model_.moveRundownCue(*cue, up ? CueMoveDirection::up : CueMoveDirection::down);
}

void ConsoleWindow::addCue(CueKind kind, const std::string& name) {
    Cue cue;
    cue.id = Uuid::random();
    cue.name = name;
    cue.kind = std::move(kind);
    model_.add(cue);
}

void ConsoleWindow::buildMenus() {
    QMenu& file = *menuBar()->addMenu("&File");
    addAction(file, "New Show", QKeySequence("Ctrl+N"), [this] { showPage(Page::start); });
    addAction(file, "Open Show…", QKeySequence("Ctrl+O"), [this] { openPanel(); });
    addAction(file, "Close Show", QKeySequence("Ctrl+W"), [this] { model_.close(); });
    file.addSeparator();
    addAction(file, "Save", QKeySequence("Ctrl+S"), [this] {
        if (model_.save() == SaveOutcome::needsLocation) saveAsPanel();
    });
    addAction(file, "Save As…", QKeySequence("Ctrl+Shift+S"), [this] { saveAsPanel(); });
    addAction(file, "Show in File Manager", QKeySequence("Ctrl+Alt+Shift+R"), [this] {
        if (model_.package()) model_.reveal(model_.package()->url());
    });
    file.addSeparator();
    addAction(file, "Import Media…", QKeySequence("Ctrl+I"), [] {});
    file.addSeparator();
    addAction(file, "Settings…", QKeySequence("Ctrl+,"), [this] { settings_->showTab(settings_->currentTab()); });
    file.addSeparator();
    addAction(file, "Quit", QKeySequence("Ctrl+Q"), [this] { close(); });

    QMenu& edit = *menuBar()->addMenu("&Edit");
    addAction(edit, "Undo", QKeySequence("Ctrl+Z"), [this] { model_.undo(); });
    addAction(edit, "Redo", QKeySequence("Ctrl+Shift+Z"), [this] { model_.redo(); });
    edit.addSeparator();
    addAction(edit, "Rename", none, [this] { runOfShow_->renameSelected(); }, "F2");
    addAction(edit, "Move Cue Up", QKeySequence("Ctrl+Up"), [this] { moveSelected(true); });
    addAction(edit, "Move Cue Down", QKeySequence("Ctrl+Down"), [this] { moveSelected(false); });
    addAction(edit, "Disable Cue", none, [this] {
        if (!model_.show() || !model_.selectedCueID()) return;
        if (const Cue* cue = model_.show()->cue(*model_.selectedCueID())) {
            Cue changed = *cue;
            changed.isEnabled = !changed.isEnabled;
            model_.edit(edit::UpdateCue{changed});
        }
    });
    addAction(edit, "Delete Cue", none, [this] {
        if (const auto& cue = model_.selectedCueID()) model_.edit(edit::DeleteCue{*cue});
    }, "Delete");
    // Delete works in the list only, so a text field keeps its own Delete.
    auto* deleteKey = new QAction(runOfShow_);
    deleteKey->setShortcut(QKeySequence::Delete);
    deleteKey->setShortcutContext(Qt::WidgetShortcut);
    connect(deleteKey, &QAction::triggered, actions_["Delete Cue"], &QAction::trigger);
    runOfShow_->addAction(deleteKey);
    QMenu& insert = *edit.addMenu("Insert Cue");
    addAction(insert, "Message", none, [this] { addCue(MessageCue{"Message", MessageTarget::stage, std::nullopt}, "Message"); });
    addAction(insert, "Lower Third", none, [this] { addCue(GraphicCue{"Name", "Role", 8.0}, "Lower third"); });
    addAction(insert, "Timer", none, [this] { addCue(TimerCue{}, "Timer"); });
    addAction(insert, "Clear Everything Cue", none, [this] { addCue(ClearCue{ClearTarget::everything, 1.0}, "Clear everything"); });

    QMenu& view = *menuBar()->addMenu("&View");
    addAction(view, "Cues", QKeySequence("Ctrl+1"), [this] { showPage(Page::cues); });
    addAction(view, "Slides", QKeySequence("Ctrl+2"), [this] { showPage(Page::slides); });
    view.addSeparator();
    const auto toggle = [this](QDockWidget* dock, const PreferenceKey<bool>& key) {
        const bool show = !dock->isVisible();
        if (preferences_) preferences_->set(key, show);
        dock->setVisible(show && page_ != Page::start);
        updateActions();
    };
    addAction(view, "Hide Library", QKeySequence("Ctrl+Alt+L"), [this, toggle] { toggle(libraryDock_, preferenceKeys::showLibrary); });
    addAction(view, "Hide Inspector", QKeySequence("Ctrl+Alt+I"), [this, toggle] { toggle(inspectorDock_, preferenceKeys::showInspector); });
    addAction(view, "History", QKeySequence("Ctrl+Y"), [this] {
        historyDock_->setVisible(!historyDock_->isVisible());
        if (historyDock_->isVisible()) history_->refresh();
    });
    addAction(view, "Reset Live Column", QKeySequence("Ctrl+0"), [this] {
        const int railWidth = int(preferenceKeys::railWidth.fallback);
        if (preferences_) preferences_->set(preferenceKeys::railWidth, double(railWidth));
        const int total = splitter_->width();
        splitter_->setSizes({std::max(0, total - railWidth), railWidth});
    });

    QMenu& showMenu = *menuBar()->addMenu("&Show");
    addAction(showMenu, "Enter Show Mode", QKeySequence("Ctrl+L"), [this] { model_.setLocked(!model_.isLocked()); });
    addAction(showMenu, "Ready Check", QKeySequence("Ctrl+Shift+R"), [this] { readyView_->present(); });
    addAction(showMenu, "Outputs and Sound…", QKeySequence("Ctrl+Shift+O"),
              [this] { settings_->showTab(SettingsWindow::Tab::screens); });
    addAction(showMenu, "Make Slides", QKeySequence("Ctrl+Shift+K"), [] {});

    QMenu& transport = *menuBar()->addMenu("&Transport");
    addAction(transport, "GO", none, [this] { keys_->perform(OperatorKeyAction::go, {}); }, "Space");
    addAction(transport, "Panic", none, [this] { keys_->perform(OperatorKeyAction::panic, {}); }, "Esc");
    addAction(transport, "Safe Slide", none, [this] { keys_->perform(OperatorKeyAction::toggleSafeSlide, {}); }, ".");
    transport.addSeparator();
    addAction(transport, "Pause All", QKeySequence("Ctrl+Shift+P"), [this] { model_.perform(command::PauseAll{}); });
    addAction(transport, "Resume All", QKeySequence("Ctrl+Alt+R"), [this] { model_.perform(command::ResumeAll{}); });
    addAction(transport, "Pause Follows", none, [this] { model_.perform(command::ToggleHold{}); });
    addAction(transport, "Talk Over", QKeySequence("Ctrl+T"), [this] {
        const EngineState* state = model_.engineState();
        model_.perform(command::SetTalkOver{!(state && state->isTalkingOver)});
    });
    transport.addSeparator();
    addAction(transport, "Clear Slides", none, [this] { model_.perform(command::Clear{ClearTarget::slides, 0}); });
    addAction(transport, "Fade Out All Sound", none, [this] { model_.perform(command::Clear{ClearTarget::music, 1.0}); });
    addAction(transport, "Clear Everything", none, [this] { model_.perform(command::Clear{ClearTarget::everything, 1.0}); });
}

void ConsoleWindow::updateActions() {
    const bool hasShow = model_.show().has_value();
    const bool locked = model_.isLocked();
    const auto& selected = model_.selectedCueID();
    const Cue* cue = hasShow && selected ? model_.show()->cue(*selected) : nullptr;
    const auto set = [this](const char* key, bool enabled, const QString& text = {}) {
        QAction* found = actions_.at(key);
        found->setEnabled(enabled);
        if (!text.isEmpty()) {
            const QString shown = found->text().contains('\t') ? text + found->text().mid(found->text().indexOf('\t')) : text;
            if (found->text() != shown) found->setText(shown);
        }
    };
    for (const char* key : {"Close Show", "Save", "Save As", "Show in File Manager", "Cues", "Slides", "History",
                            "Ready Check", "Enter Show Mode", "GO", "Panic", "Safe Slide", "Pause All",
                            "Resume All", "Pause Follows", "Talk Over", "Clear Slides", "Fade Out All Sound",
                            "Clear Everything", "Reset Live Column"})
        set(key, hasShow);
    // Built by the media import and slide editor work still to come.
    for (const char* key : {"Import Media", "Make Slides"}) set(key, false);
    set("Show in File Manager", hasShow && model_.package() && !model_.package()->isScratch());
    set("Undo", model_.history().canUndo());
    set("Redo", model_.history().canRedo());
    set("Rename", cue && !locked);
    set("Move Cue Up", cue && model_.canMoveRundownCue(cue->id, CueMoveDirection::up));
    set("Move Cue Down", cue && model_.canMoveRundownCue(cue->id, CueMoveDirection::down));
    set("Disable Cue", cue && !locked, cue && !cue->isEnabled ? "Enable Cue" : "Disable Cue");
    set("Delete Cue", cue && !locked);
    for (const char* key : {"Message", "Lower Third", "Timer", "Clear Everything Cue"}) set(key, hasShow && !locked);
    set("Enter Show Mode", hasShow, locked ? "Return to Edit" : "Enter Show Mode");
    set("Hide Library", true, libraryDock_->isVisible() ? "Hide Library" : "Show Library");
    set("Hide Inspector", true, inspectorDock_->isVisible() ? "Hide Inspector" : "Show Inspector");
    const EngineState* state = model_.engineState();
    set("Talk Over", hasShow, state && state->isTalkingOver ? "End Talk Over" : "Talk Over");
    set("Pause Follows", hasShow, state && state->isHeld ? "Resume Follows" : "Pause Follows");
}

} // namespace velarion::console
