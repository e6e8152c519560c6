#include "Console/ReadyView.h"
#include "Console/ConsoleText.h"

#include "Console/ConsoleTheme.h"
#include "Live/AppModel.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

namespace velarion::console {

namespace {

QString mark(ReadyStatus status) {
    switch (status) {
    case ReadyStatus::ready:
        return "<span style='color:" + colour::running.name() + "'>✓</span>";
    case ReadyStatus::attention:
        return "<span style='color:" + colour::warning.name() + "'>!</span>";
    case ReadyStatus::optional:
        return "<span style='color:" + colour::dimText.name() + "'>○</span>";
    }
    return {};
}

QWidget* itemRow(const ReadyItem& item, QWidget* parent, QPushButton** fix) {
    auto* row = new QFrame(parent);
    row->setObjectName("readyRow");
    row->setStyleSheet(
        QString("#readyRow { background: %1; border-radius: 4px; }").arg(colour::panel.name()));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(10, 6, 10, 6);
    auto* status = new QLabel(mark(item.status), row);
    status->setStyleSheet("font-size: 15pt; font-weight: bold;");
    status->setFixedWidth(22);
    status->setAlignment(Qt::AlignCenter);
    layout->addWidget(status);
    auto* words = new QLabel(row);
    words->setWordWrap(true);
    words->setText("<b>" + qt(item.title).toHtmlEscaped() + "</b>" +
                   (item.detail.empty() ? QString()
                                        : "<br><span style='color:" + colour::dimText.name() +
                                              "'>" + qt(item.detail).toHtmlEscaped() + "</span>"));
    layout->addWidget(words, 1);
    *fix = nullptr;
    if (item.fix) {
        *fix = new QPushButton(item.fixLabel ? qt(*item.fixLabel) : "Fix", row);
        (*fix)->setObjectName(qt(item.id()));
        layout->addWidget(*fix, 0, Qt::AlignVCenter);
    }
    return row;
}

template <class... Ts> struct Visitor : Ts... { using Ts::operator()...; };
template <class... Ts> Visitor(Ts...) -> Visitor<Ts...>;

void run(const std::function<void()>& place) {
    if (place)
        place();
}

} // namespace

ReadyView::ReadyView(AppModel& model, QWidget* parent)
    : QWidget(parent, Qt::Window), model_(model) {
    setWindowTitle("Ready Check");
    resize(640, 720);
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    summary_ = new QLabel(this);
    summary_->setStyleSheet("font-size: 14pt; font-weight: bold;");
    top->addWidget(summary_, 1);
    auto* again = new QPushButton("Check Again", this);
    connect(again, &QPushButton::clicked, this, [this] { refresh(); });
    top->addWidget(again);
    layout->addLayout(top);

    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    list_ = new QWidget(scroll);
    rows_ = new QVBoxLayout(list_);
    rows_->setSpacing(4);
    scroll->setWidget(list_);
    layout->addWidget(scroll, 1);
}

void ReadyView::present() {
    show();
    raise();
    activateWindow();
    refresh();
}

void ReadyView::refresh() {
    if (!isVisible())
        return;
    if (const EngineState* state = model_.engineState())
        outputsSeen_ = state->outputs;
    std::vector<ReadyItem> items = model_.readyItems();
    if (built_ && items == items_)
        return;
    items_ = std::move(items);
    built_ = true;
    rebuild();
}

void ReadyView::refreshLive() {
    if (!isVisible())
        return;
    const EngineState* state = model_.engineState();
    if (state && state->outputs != outputsSeen_)
        refresh();
}

void ReadyView::rebuild() {
    // Later, not now: the button that asked may still be in its click.
    while (QLayoutItem* old = rows_->takeAt(0)) {
        if (QWidget* widget = old->widget()) {
            widget->hide();
            widget->setParent(nullptr);
            widget->deleteLater();
        }
        delete old;
    }
    const auto attention = std::count_if(items_.begin(), items_.end(), [](const ReadyItem& item) {
        return item.status == ReadyStatus::attention;
    });
    if (!model_.show())
        summary_->setText("Open a show to check it.");
    else if (attention == 0)
        summary_->setText("Ready for doors: nothing needs attention.");
    else
        summary_->setText(attention == 1 ? "1 item needs attention"
                                         : QString("%1 items need attention").arg(attention));

    std::optional<ReadyGroup> group;
    for (const ReadyItem& item : items_) {
        if (item.group != group) {
            group = item.group;
            auto* title = new QLabel(qt(heading(item.group)), list_);
            title->setStyleSheet(QString("font-weight: bold; color: %1; padding-top: 10px;")
                                     .arg(colour::dimText.name()));
            rows_->addWidget(title);
        }
        QPushButton* fix = nullptr;
        rows_->addWidget(itemRow(item, list_, &fix));
        if (fix)
            connect(fix, &QPushButton::clicked, this,
                    [this, chosen = *item.fix] { apply(chosen); });
    }
    rows_->addStretch(1);
}

QPushButton* ReadyView::fixButton(const std::string& itemID) const {
    return list_->findChild<QPushButton*>(qt(itemID));
}

void ReadyView::apply(const ReadyFix& fix) {
    std::visit(Visitor{
                   [this](const readyFix::OpenApp& app) { openApp(app.app); },
                   [this](const readyFix::FindMedia& media) {
                       const MediaItem* item =
                           model_.show() ? model_.show()->media(media.mediaID) : nullptr;
                       if (!item)
                           return;
                       const MediaItem missing = *item;
                       std::optional<std::filesystem::path> chosen;
                       if (places.chooseFile)
                           chosen = places.chooseFile(missing);
                       if (chosen && model_.findMissing(missing.id, *chosen))
                           refresh();
                   },
                   [this](const readyFix::EditCue& cue) {
                       model_.selectCue(cue.cueID);
                       run(places.showCue);
                   },
                   [this](const readyFix::OpenOutputs&) { run(places.openScreens); },
                   [this](const readyFix::OpenAudio&) { run(places.openSound); },
                   [this](const readyFix::ShowLibrary&) { run(places.showLibrary); },
                   [this](const readyFix::OpenMIDI&) { run(places.openMIDI); },
               },
               fix);
}

void ReadyView::openApp(StreamApp app) {
    // Spotify is the `spotify` program; the music player is the one chosen
    // in the Music settings, which is where to go when none is.
    QString program = "spotify";
    if (app != StreamApp::spotify) {
        const std::string player = model_.preferences().value(preferenceKeys::musicPlayer);
        if (player.empty()) {
            run(places.openMusic);
            return;
        }
        program = qt(player).section('.', -1);
    }
    if (!QProcess::startDetached(program, {}))
        model_.setStatus("Couldn't open " + program.toStdString() +
                         ". Start it from the desktop's menu.");
}

} // namespace velarion::console
