#include "Console/ConsoleWindow.h"
#include "Console/ConsoleText.h"

#include "Console/ConsolePages.h"
#include "Console/ConsoleTheme.h"
#include "Console/Inspector.h"
#include "Console/LibraryPanel.h"
#include "Console/LiveRail.h"
#include "Console/OperatorKeys.h"
#include "Console/PresentView.h"
#include "Console/ProgramPreview.h"
#include "Console/ReadyView.h"
#include "Console/RunOfShowModel.h"
#include "Console/RunOfShowView.h"
#include "Console/SlideEditorWindow.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"
#include "Live/OperatorText.h"
#include "LiveModel/CueDescription.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDockWidget>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

namespace velarion::console {

ConsoleWindow::ConsoleWindow(AppModel& model, std::function<double()> now, Preferences* preferences)
    : model_(model), now_(std::move(now)), preferences_(preferences) {
    setWindowIcon(QApplication::windowIcon());
    rows_ = std::make_unique<RunOfShowModel>(model_);
    keys_ = std::make_unique<OperatorKeys>(model_, *this);
    slideEditors_ = std::make_unique<SlideEditorWindows>(model_, this);
    buildPanels();
    buildSettingsAndReady();
    buildMenus();

    status_ = new QLabel(this);
    statusBar()->addWidget(status_, 1);
    lock_ = new QLabel("SHOW MODE — editing is off", this);
    lock_->setObjectName("lock");
    statusBar()->addPermanentWidget(lock_);

    keys_->onSelectionMoved = [this] { runOfShow_->followSelection(); };
    qApp->installEventFilter(keys_.get());

    previousOnChange_ = model_.onChange;
    std::weak_ptr<int> life = life_;
    model_.onChange = [this, life] {
        if (previousOnChange_) previousOnChange_();
        if (!life.expired()) scheduleRefresh();
    };
    onQuit = [] { QApplication::quit(); };

    liveTimer_ = new QTimer(this);
    connect(liveTimer_, &QTimer::timeout, this, [this] { refreshLive(); });
    liveTimer_->start(liveRefreshMilliseconds);
    resize(1440, 900);
    showPage(Page::start);
    refresh();
}

ConsoleWindow::~ConsoleWindow() {
    qApp->removeEventFilter(keys_.get());
    model_.onChange = previousOnChange_;
}

void ConsoleWindow::buildPanels() {
    pages_ = new QStackedWidget(this);
    startPage_ = new StartPage(model_, [this] { openPanel(); }, pages_);
    pages_->addWidget(startPage_);

    showPage_ = new QWidget(pages_);
    auto* showLayout = new QVBoxLayout(showPage_);
    showLayout->setContentsMargins(0, 0, 0, 0);
    showLayout->setSpacing(0);
    showTitle_ = new QLabel(showPage_);
    showTitle_->setStyleSheet("font-size: 15pt; font-weight: bold; padding: 6px 10px;");
    showLayout->addWidget(showTitle_);
    splitter_ = new QSplitter(Qt::Horizontal, showPage_);
    centre_ = new QStackedWidget(splitter_);
    runOfShow_ = new RunOfShowView(model_, *rows_, centre_);
    library_ = new LibraryPanel(model_, this);
    present_ = new PresentView(model_, library_->pictures(), centre_);
    // The name renames in place; elsewhere on a slides cue, its slides open.
    connect(runOfShow_, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
        const auto cue = rows_->cueAt(index);
        if (cue && index.column() != RunOfShowModel::nameColumn && slideEditors_->deckOfCue(*cue))
            slideEditors_->editOrMake(cue);
    });
    centre_->addWidget(runOfShow_);
    centre_->addWidget(present_);
    auto* railColumn = new QWidget(splitter_);
    auto* railLayout = new QVBoxLayout(railColumn);
    railLayout->setContentsMargins(0, 0, 0, 0);
    preview_ = new ProgramPreview(model_, now_, railColumn);
    railLayout->addWidget(preview_);
    rail_ = new LiveRail(model_, now_, railColumn);
    auto* railScroll = new QScrollArea(railColumn);
    railScroll->setWidget(rail_);
    railScroll->setWidgetResizable(true);
    railScroll->setFrameShape(QFrame::NoFrame);
    railLayout->addWidget(railScroll, 1);
    splitter_->addWidget(centre_);
    splitter_->addWidget(railColumn);
    splitter_->setStretchFactor(0, 1);
    splitter_->setStretchFactor(1, 0);
    const int railWidth = preferences_ ? int(preferences_->value(preferenceKeys::railWidth)) : 440;
    splitter_->setSizes({1000, railWidth});
    showLayout->addWidget(splitter_, 1);
    pages_->addWidget(showPage_);
    setCentralWidget(pages_);

    history_ = new HistoryView(model_, this);
    historyDock_ = new QDockWidget("History", this);
    historyDock_->setObjectName("history");
    historyDock_->setWidget(history_);
    addDockWidget(Qt::BottomDockWidgetArea, historyDock_);
    historyDock_->hide();

    libraryDock_ = new QDockWidget("Library", this);
    libraryDock_->setObjectName("library");
    libraryDock_->setWidget(library_);
    addDockWidget(Qt::LeftDockWidgetArea, libraryDock_);
    inspector_ = new Inspector(model_, this);
    inspector_->selectedCues = [this] { return runOfShow_->selectedCueIDs(); };
    inspector_->selectedSection = [this] { return runOfShow_->selectedSectionID(); };
    runOfShow_->onSelectionChanged = [this] { inspector_->refresh(); };
    inspectorDock_ = new QDockWidget("Inspector", this);
    inspectorDock_->setObjectName("inspector");
    inspectorDock_->setWidget(inspector_);
    addDockWidget(Qt::LeftDockWidgetArea, inspectorDock_);
    if (preferences_) {
        libraryDock_->setVisible(preferences_->value(preferenceKeys::showLibrary));
        inspectorDock_->setVisible(preferences_->value(preferenceKeys::showInspector));
    }
}

void ConsoleWindow::scheduleRefresh() {
    if (refreshQueued_) return;
    refreshQueued_ = true;
    QTimer::singleShot(0, this, [this] {
        refreshQueued_ = false;
        refresh();
    });
}

void ConsoleWindow::refresh() {
    const bool hasShow = model_.show().has_value();
    // A show that comes (opened, new, reopened) brings its run of show up.
    const std::optional<Uuid> showID = hasShow ? std::optional<Uuid>(model_.show()->id) : std::nullopt;
    if (showID != loadedShow_) {
        loadedShow_ = showID;
        showPage(hasShow ? Page::cues : Page::start);
    }
    if (!hasShow) startPage_->refresh();

    const int scroll = runOfShow_->verticalScrollBar()->value();
    if (rows_->updateShow()) {
        runOfShow_->rowsRebuilt(scroll);
    } else runOfShow_->followSelection();
    library_->refresh();

    if (status_->text() != qt(model_.status())) status_->setText(qt(model_.status()));
    lock_->setVisible(hasShow && model_.isLocked());
    // The lock is seen at a glance: the run of show's frame turns amber too.
    runOfShow_->setStyleSheet(model_.isLocked() ? "QTreeView { border: 2px solid #d89a28; }" : "");

    inspector_->refresh();
    if (settings_->isVisible()) settings_->refresh();
    readyView_->refresh();
    updateTitle();
    updateActions();
    slideEditors_->refresh();
    refreshLive();
}

void ConsoleWindow::refreshLive() {
    rows_->updateState();
    rail_->refresh();
    if (historyDock_->isVisible()) history_->refresh();
    if (page_ == Page::slides) present_->refresh();
    preview_->refresh();
    readyView_->refreshLive();
    followLiveView();
}

void ConsoleWindow::followLiveView() {
    const LiveEngine* engine = model_.engine();
    if (engine != followedEngine_) {
        followedEngine_ = engine;
        follow_ = {};
    }
    if (!engine || !model_.show()) return;
    const EngineState& state = engine->state();
    std::set<Uuid> runningIDs;
    std::optional<CueOperatorView> requested;
    for (const RunningCue& running : state.running) {
        runningIDs.insert(running.id);
        if (state.programRunID && running.id == *state.programRunID)
            if (const Cue* cue = model_.show()->cue(running.cueID)) requested = cue->operatorView;
    }
    const auto view = follow_.update(state.programRunID, runningIDs, requested);
    if (view && model_.operatorViewFollowsLive())
        showPage(*view == CueOperatorView::slides ? Page::slides : Page::cues);
}

void ConsoleWindow::showPage(Page page) {
    page_ = page;
    const bool start = page == Page::start;
    pages_->setCurrentWidget(start ? static_cast<QWidget*>(startPage_) : showPage_);
    if (start) startPage_->refresh();
    else centre_->setCurrentWidget(page == Page::slides ? static_cast<QWidget*>(present_) : runOfShow_);
    if (page == Page::slides) present_->refresh();
    if (page == Page::cues) runOfShow_->setFocus();
    updateDocks();
}

void ConsoleWindow::updateDocks() {
    const bool inShow = page_ != Page::start;
    const bool library = preferences_ ? preferences_->value(preferenceKeys::showLibrary) : libraryDock_->isVisible();
    const bool inspector = preferences_ ? preferences_->value(preferenceKeys::showInspector) : inspectorDock_->isVisible();
    libraryDock_->setVisible(inShow && library);
    inspectorDock_->setVisible(inShow && inspector);
}

bool ConsoleWindow::historyIsVisible() const { return historyDock_->isVisible(); }

void ConsoleWindow::updateTitle() {
    QString title = "Velarion";
    if (const auto& show = model_.show()) {
        QString state;
        if (model_.isDirty()) state = "Edited";
        else if (model_.package() && model_.package()->isScratch()) state = "Not saved to a file";
        else if (model_.lastSavedWallSeconds())
            state = "Saved " + QDateTime::fromSecsSinceEpoch(qint64(*model_.lastSavedWallSeconds())).toString("HH:mm");
        else state = "Saved";
        title = qt(show->title) + " — " + state + " — Velarion";
        const QString heading = qt(show->title) + (show->subtitle.empty() ? "" : "  ·  " + qt(show->subtitle));
        if (showTitle_->text() != heading) showTitle_->setText(heading);
    }
    if (windowTitle() != title) setWindowTitle(title);
}

void ConsoleWindow::openPanel() {
    const QString folder = QFileDialog::getExistingDirectory(this, "Open Show", QString(),
                                                             QFileDialog::ShowDirsOnly);
    if (folder.isEmpty()) return;
    try {
        model_.openShow(folder.toStdString());
    } catch (const std::exception& error) {
        model_.setStatus("Couldn't open " + displayName(folder.toStdString()) + ": " + errorText(error));
    }
}

void ConsoleWindow::saveAsPanel() {
    if (!model_.show()) return;
    if (model_.isImporting()) {
        model_.setStatus(SaveAsError().what());
        return;
    }
    const QString suggested = qt(model_.show()->title) + ".velarion";
    QString path = chooseSaveLocation
                       ? chooseSaveLocation(suggested)
                       : QFileDialog::getSaveFileName(this, "Save As", suggested, "Velarion shows (*.velarion)");
    if (path.isEmpty()) return;
    if (!path.endsWith(".velarion")) path += ".velarion";
    model_.saveAsFromPanel(path.toStdString());
}

void ConsoleWindow::closeEvent(QCloseEvent* event) {
    if (confirmQuit && !confirmQuit()) {
        event->ignore();
        return;
    }
    if (preferences_) preferences_->set(preferenceKeys::railWidth, double(splitter_->sizes().value(1, 440)));
    event->accept();
    if (onQuit) onQuit();
}

} // namespace velarion::console
