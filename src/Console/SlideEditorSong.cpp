#include "Console/SlideEditorSong.h"
#include "Console/ConsoleText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <unordered_map>

namespace velarion::console {

namespace {

void setText(QTreeWidgetItem& item, int column, const QString& text) {
    if (item.text(column) != text) item.setText(column, text);
}

QString counted(int count, const char* one, const char* many) {
    return QString::number(count) + " " + (count == 1 ? one : many);
}

constexpr LyricLook looks[] = {LyricLook::overBackground, LyricLook::lowerThird, LyricLook::onBlack};

} // namespace

SlideEditorSong::SlideEditorSong(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(heading("LYRICS", this));
    lyrics_ = new QPlainTextEdit(this);
    lyrics_->setObjectName("lyrics");
    lyrics_->setPlaceholderText("Paste or type the lyrics. [Verse 1], [Chorus] and [Bridge] headings make "
                                "sections; a blank line starts a new slide; Title:, Author:, Copyright: "
                                "and CCLI: lines fill the credits.");
    // Undo belongs to the show's history, so that one Ctrl+Z means one thing.
    lyrics_->setUndoRedoEnabled(false);
    lyrics_->setTabChangesFocus(true);
    layout->addWidget(lyrics_, 3);

    auto* form = new QFormLayout;
    look_ = new QComboBox(this);
    for (const char* words : {"Over the background", "Lower third", "On black"}) look_->addItem(words);
    form->addRow("Look", look_);
    linesPerSlide_ = new QSpinBox(this);
    linesPerSlide_->setRange(Song::minLinesPerSlide, Song::maxLinesPerSlide);
    form->addRow("Lines per slide", linesPerSlide_);
    credits_ = new QCheckBox("Credits on the first slide", this);
    form->addRow("", credits_);
    order_ = new QLineEdit(this);
    order_->setPlaceholderText("V1 C V2 C B C");
    form->addRow("Sung order", order_);
    layout->addLayout(form);
    orderProblem_ = new QLabel(this);
    orderProblem_->setStyleSheet("color: #e0a030;");
    orderProblem_->setWordWrap(true);
    orderProblem_->hide();
    layout->addWidget(orderProblem_);

    layout->addWidget(heading("SECTIONS AND SLIDES", this));
    sections_ = new QTreeWidget(this);
    sections_->setColumnCount(3);
    sections_->setHeaderHidden(true);
    sections_->setRootIsDecorated(true);
    sections_->setFocusPolicy(Qt::NoFocus);
    sections_->setUniformRowHeights(true);
    sections_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    sections_->header()->setSectionResizeMode(1, QHeaderView::Stretch);
    sections_->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    sections_->header()->setStretchLastSection(false);
    layout->addWidget(sections_, 2);
    summary_ = new QLabel(this);
    summary_->setStyleSheet("color: #808690;");
    layout->addWidget(summary_);

    sendTimer_ = new QTimer(this);
    sendTimer_->setSingleShot(true);
    sendTimer_->setInterval(sendAfterMilliseconds);
    connect(sendTimer_, &QTimer::timeout, this, [this] { commit(); });
    connect(lyrics_, &QPlainTextEdit::textChanged, this, [this] { lyricsEdited(); });
    connect(order_, &QLineEdit::editingFinished, this, [this] { orderEdited(); });
    const auto settingChanged = [this] {
        if (settingText_) return;
        parsed_ = Song::parsing(lyrics_->toPlainText().toStdString(), looks[look_->currentIndex()],
                                linesPerSlide_->value());
        showParsed();
        typing_ = true;
        commit();
    };
    connect(look_, &QComboBox::currentIndexChanged, this, settingChanged);
    connect(linesPerSlide_, &QSpinBox::valueChanged, this, settingChanged);
    connect(credits_, &QCheckBox::toggled, this, settingChanged);
}

void SlideEditorSong::setSong(const Song& song, bool drawing) {
    shown_ = song;
    if (typing_ || drawing) return;
    settingText_ = true;
    if (look_->currentIndex() != int(song.look)) look_->setCurrentIndex(int(song.look));
    if (linesPerSlide_->value() != song.linesPerSlide) linesPerSlide_->setValue(song.linesPerSlide);
    if (credits_->isChecked() != song.showsCredits) credits_->setChecked(song.showsCredits);
    settingText_ = false;
    // The operator's own layout of the text stays while it means this song.
    const Song reading = Song::parsing(lyrics_->toPlainText().toStdString(), song.look, song.linesPerSlide);
    if (reading.text() != song.text()) showText(song.text());
    else if (parsed_.linesPerSlide != song.linesPerSlide || parsed_.text() != reading.text()) {
        parsed_ = reading;
        showParsed();
    }
}

void SlideEditorSong::showText(const std::string& text) {
    settingText_ = true;
    lyrics_->setPlainText(qt(text));
    settingText_ = false;
    parsed_ = Song::parsing(text, looks[look_->currentIndex()], linesPerSlide_->value());
    showParsed();
}

void SlideEditorSong::setReadOnly(bool readOnly) {
    lyrics_->setReadOnly(readOnly);
    order_->setReadOnly(readOnly);
    look_->setEnabled(!readOnly);
    linesPerSlide_->setEnabled(!readOnly);
    credits_->setEnabled(!readOnly);
}

void SlideEditorSong::lyricsEdited() {
    if (settingText_) return;
    parsed_ = Song::parsing(lyrics_->toPlainText().toStdString(), looks[look_->currentIndex()],
                            linesPerSlide_->value());
    showParsed();
    typing_ = true;
    sendTimer_->start();
}

Song SlideEditorSong::songToSend() const {
    Song song = parsed_;
    song.showsCredits = credits_->isChecked();
    return song;
}

bool SlideEditorSong::commit() {
    sendTimer_->stop();
    if (!typing_) return false;
    if (!onCommit || !onCommit(songToSend())) return false;
    typing_ = false;
    return true;
}

bool SlideEditorSong::discardTyping() {
    sendTimer_->stop();
    if (!typing_) return false;
    typing_ = false;
    setSong(shown_, false);
    return true;
}

void SlideEditorSong::orderEdited() {
    if (lyrics_->isReadOnly()) return;
    Song song = parsed_;
    const std::vector<std::string> unknown = song.setOrder(order_->text().toStdString());
    QStringList words;
    for (const std::string& word : unknown) words << qt(word);
    orderProblem_->setText("Not in this song: " + words.join(", "));
    orderProblem_->setVisible(!unknown.empty());
    if (song.order == parsed_.order) return;
    // The text carries the order, so the lyrics are written out anew.
    showText(song.text());
    typing_ = true;
    commit();
}

void SlideEditorSong::showParsed() {
    const auto codes = parsed_.codes();
    std::unordered_map<Uuid, int> sung;
    for (const Uuid& id : parsed_.order) ++sung[id];
    const int sectionCount = int(parsed_.sections.size());
    while (sections_->topLevelItemCount() > sectionCount) delete sections_->takeTopLevelItem(sectionCount);
    while (sections_->topLevelItemCount() < sectionCount) {
        auto* item = new QTreeWidgetItem;
        sections_->addTopLevelItem(item);
        item->setExpanded(true);
    }
    int slideCount = 0;
    for (int i = 0; i < sectionCount; ++i) {
        const SongSection& section = parsed_.sections[std::size_t(i)];
        const std::vector<std::string> slides = section.slides(parsed_.linesPerSlide);
        const auto code = codes.find(section.id);
        const int times = sung.contains(section.id) ? sung.at(section.id) : 0;
        slideCount += times * int(slides.size());
        QTreeWidgetItem& item = *sections_->topLevelItem(i);
        setText(item, 0, code == codes.end() ? QString() : qt(code->second));
        setText(item, 1, qt(section.name));
        QString detail = counted(int(slides.size()), "slide", "slides");
        if (times != 1) detail += times == 0 ? ", not sung" : ", sung " + QString::number(times) + " times";
        setText(item, 2, detail);
        const int children = int(slides.size());
        while (item.childCount() > children) delete item.takeChild(children);
        while (item.childCount() < children) item.addChild(new QTreeWidgetItem);
        for (int page = 0; page < children; ++page)
            setText(*item.child(page), 1, qt(slides[std::size_t(page)]).replace('\n', "  /  "));
    }
    const QString summary = counted(sectionCount, "section", "sections") + " · " +
                            counted(slideCount, "slide", "slides");
    if (summary_->text() != summary) summary_->setText(summary);
    const QString order = qt(parsed_.orderText());
    if (!order_->hasFocus() && order_->text() != order) order_->setText(order);
}

} // namespace velarion::console
