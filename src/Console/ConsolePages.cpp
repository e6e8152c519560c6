#include "Console/ConsolePages.h"
#include "Console/ConsoleText.h"

#include "Console/ConsoleTheme.h"
#include "Live/AppModel.h"
#include "Live/OperatorText.h"
#include "LiveModel/ShowTemplate.h"

#include <QDateTime>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <filesystem>

namespace velarion::console {

namespace {

void openAt(AppModel& model, const std::filesystem::path& location) {
    try {
        model.openShow(location);
    } catch (const std::exception& error) {
        model.setStatus("Couldn't open " + displayName(location) + ": " + errorText(error));
    }
}

} // namespace

StartPage::StartPage(AppModel& model, std::function<void()> openPanel, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* outer = new QHBoxLayout(this);
    outer->setContentsMargins(40, 30, 40, 30);
    outer->setSpacing(40);

    auto* left = new QVBoxLayout;
    auto* title = new QLabel("Velarion", this);
    title->setStyleSheet("font-size: 28pt; font-weight: bold;");
    left->addWidget(title);
    left->addWidget(heading("RECENT SHOWS", this));
    recents_ = new QListWidget(this);
    connect(recents_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) { openRecent(recents_->row(item)); });
    left->addWidget(recents_, 3);
    noRecents_ = new QLabel("No recent shows", this);
    noRecents_->setStyleSheet("color: #808690;");
    left->addWidget(noRecents_);
    unsavedHeading_ = heading("NEVER SAVED TO A FILE", this);
    left->addWidget(unsavedHeading_);
    unsaved_ = new QListWidget(this);
    connect(unsaved_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        openAt(model_, item->data(Qt::UserRole).toString().toStdString());
    });
    left->addWidget(unsaved_, 1);
    left->addStretch(1);
    auto* open = new QPushButton("Open…", this);
    connect(open, &QPushButton::clicked, this, [openPanel] { openPanel(); });
    left->addWidget(open, 0, Qt::AlignLeft);
    outer->addLayout(left, 1);

    auto* right = new QVBoxLayout;
    right->addWidget(heading("NEW SHOW", this));
    for (ShowTemplate kind : {ShowTemplate::blank, ShowTemplate::presentation, ShowTemplate::conference,
                              ShowTemplate::panel, ShowTemplate::awards}) {
        auto* button = new QPushButton(this);
        // "&" would be read as a keyboard accelerator ("Q&A").
        QString words = qt(std::string(showTemplate::name(kind))) + "\n" + qt(std::string(showTemplate::summary(kind)));
        button->setText(words.replace('&', "&&"));
        button->setStyleSheet("text-align: left; padding: 10px;");
        button->setMinimumHeight(60);
        connect(button, &QPushButton::clicked, this, [this, kind] { model_.newShow(kind, ""); });
        right->addWidget(button);
    }
    right->addStretch(1);
    outer->addLayout(right, 1);
}

void StartPage::openRecent(int row) {
    const auto& recents = model_.recents();
    if (row >= 0 && row < int(recents.size())) openAt(model_, recents[std::size_t(row)]);
}

void StartPage::refresh() {
    QStringList shown;
    for (const auto& location : model_.recents())
        // A show that vanished since the start is not offered.
        if (std::filesystem::exists(location))
            shown << qt(displayName(location)) + "  —  " + qt(location.parent_path().string());
    QStringList current;
    for (int i = 0; i < recents_->count(); ++i) current << recents_->item(i)->text();
    if (current != shown) {
        recents_->clear();
        recents_->addItems(shown);
    }
    noRecents_->setVisible(shown.isEmpty());
    recents_->setVisible(!shown.isEmpty());
    unsaved_->clear();
    for (const UnsavedShow& show : model_.unsavedShows()) {
        auto* item = new QListWidgetItem(qt(show.title), unsaved_);
        item->setData(Qt::UserRole, qt(show.location.string()));
    }
    unsaved_->setVisible(unsaved_->count() > 0);
    unsavedHeading_->setVisible(unsaved_->count() > 0);
}

HistoryView::HistoryView(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(heading("HISTORY", this));
    list_ = new QListWidget(this);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setUniformItemSizes(true);
    layout->addWidget(list_);
}

void HistoryView::refresh() {
    const LiveEngine* engine = model_.engine();
    if (engine != engine_) {
        engine_ = engine;
        newest_.reset();
        list_->clear();
    }
    if (!engine || engine->history().empty() || engine->history().back().id == newest_) return;
    const auto& history = engine->history();
    // Only the lines since the last look; the log keeps its newest 400.
    auto from = history.begin();
    if (newest_)
        for (auto entry = history.begin(); entry != history.end(); ++entry)
            if (entry->id == *newest_) from = std::next(entry);
    const bool atBottom = list_->count() == 0 || list_->currentRow() == list_->count() - 1;
    for (auto entry = from; entry != history.end(); ++entry) {
        const QString time = QDateTime::fromMSecsSinceEpoch(qint64(entry->time * 1000)).toString("HH:mm:ss");
        auto* item = new QListWidgetItem(time + "   " + qt(entry->text), list_);
        if (entry->kind == HistoryEntry::Kind::warning) {
            item->setForeground(colour::warning);
            item->setBackground(QColor(0x3a, 0x2c, 0x14));
        } else if (entry->kind == HistoryEntry::Kind::panic) item->setForeground(colour::panic);
    }
    while (list_->count() > int(LiveEngine::historyLimit)) delete list_->takeItem(0);
    newest_ = history.back().id;
    if (atBottom) list_->scrollToBottom();
}

} // namespace velarion::console
