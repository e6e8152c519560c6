#include "Console/SlideEditorWindow.h"
#include "Console/ConsoleText.h"

#include "Console/SlideEditorCanvas.h"
#include "Console/SlideEditorSong.h"
#include "Live/AppModel.h"
#include "LiveModel/SlideTemplate.h"
#include "Platform/Pictures/SlideMaker.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace velarion::console {

namespace {

constexpr SlideTemplate templateList[] = {SlideTemplate::title,  SlideTemplate::titleAndText, SlideTemplate::statement,
                                          SlideTemplate::speakerIntro, SlideTemplate::agenda, SlideTemplate::thankYou,
                                          SlideTemplate::quote, SlideTemplate::solid};

int packed(const QColor& colour) { return (colour.red() << 16) | (colour.green() << 8) | colour.blue(); }

// What a slide's row says: its part, then its first words.
QString rowText(const MadeSlide& slide, int index) {
    QString words;
    for (const TextBox& box : slide.effectiveBoxes())
        if (!box.text.empty()) {
            words = qt(box.text).section('\n', 0, 0);
            break;
        }
    const auto names = slide.effectiveSectionNames();
    QString text = QString::number(index + 1);
    if (!names.empty()) text += "  " + qt(names.front());
    return text + "\n" + (words.isEmpty() ? QString("(no words)") : words);
}

std::optional<std::size_t> indexOf(const std::vector<MadeSlide>& slides, const std::optional<Uuid>& id) {
    if (!id) return std::nullopt;
    for (std::size_t i = 0; i < slides.size(); ++i)
        if (slides[i].id == *id) return i;
    return std::nullopt;
}

} // namespace

SlideEditorWindow::SlideEditorWindow(AppModel& model, const Uuid& itemID, QWidget* parent)
    : QWidget(parent, Qt::Window), model_(model), itemID_(itemID) {
    setObjectName("slideEditor");
    resize(1280, 760);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    auto* splitter = new QSplitter(Qt::Horizontal, this);
    layout->addWidget(splitter);

    auto* slideColumn = new QWidget(splitter);
    buildSlideColumn(slideColumn);
    auto* centre = new QWidget(splitter);
    auto* centreLayout = new QVBoxLayout(centre);
    centreLayout->setContentsMargins(0, 0, 0, 0);
    canvas_ = new SlideEditorCanvas(centre);
    centreLayout->addWidget(canvas_, 1);
    buildBoxRow(centre);
    songColumn_ = new QWidget(splitter);
    auto* songLayout = new QVBoxLayout(songColumn_);
    songLayout->setContentsMargins(0, 0, 0, 0);
    song_ = new SlideEditorSong(songColumn_);
    songLayout->addWidget(song_);
    splitter->addWidget(slideColumn);
    splitter->addWidget(centre);
    splitter->addWidget(songColumn_);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({thumbnailWidth + 180, 640, 360});

    song_->onCommit = [this](const Song& song) { return model_.updateSong(itemID_, song); };
    canvas_->onBoxSelected = [this](const std::optional<Uuid>&) {
        sendTyping();
        refreshBoxFields();
    };
    canvas_->onBoxChanged = [this](const TextBox& moved) {
        sendTyping();
        changeBox([&](TextBox& box) {
            box.x = moved.x;
            box.y = moved.y;
            box.width = moved.width;
            box.height = moved.height;
        });
    };
    connect(slides_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (filling_ || row < 0 || row >= int(shownSlides_.size())) return;
        sendTyping();
        model_.selectSlide(itemID_, shownSlides_[std::size_t(row)].id);
    });

    auto* undo = new QAction(this);
    undo->setShortcut(QKeySequence::Undo);
    connect(undo, &QAction::triggered, this, [this] { this->undo(); });
    auto* redo = new QAction(this);
    redo->setShortcut(QKeySequence("Ctrl+Shift+Z"));
    connect(redo, &QAction::triggered, this, [this] {
        sendTyping();
        model_.redo();
    });
    addActions({undo, redo});
    for (QPlainTextEdit* field : {&song_->lyrics(), boxText_}) {
        field->installEventFilter(this);
        // Typing not yet sent goes in before GO, as the inspector's does.
        connect(field, &QPlainTextEdit::textChanged, this, [this] {
            model_.setPendingEdit(this, [editor = QPointer<SlideEditorWindow>(this)] {
                if (editor) editor->sendTyping();
            });
        });
    }
    refresh();
}

SlideEditorWindow::~SlideEditorWindow() = default;

void SlideEditorWindow::buildSlideColumn(QWidget* column) {
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(heading("SLIDES", column));
    slides_ = new QListWidget(column);
    slides_->setIconSize(QSize(thumbnailWidth, thumbnailWidth * 9 / 16));
    slides_->setSpacing(2);
    slides_->setUniformItemSizes(true);
    slides_->setTextElideMode(Qt::ElideRight);
    slides_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    layout->addWidget(slides_, 1);
    templates_ = new QComboBox(column);
    for (SlideTemplate kind : templateList) templates_->addItem(qt(std::string(slideTemplate::name(kind))));
    templates_->setToolTip("The template of a slide added");
    auto* add = new QPushButton("Add Slide", column);
    connect(add, &QPushButton::clicked, this, [this] { addSlide(); });
    auto* addRow = new QHBoxLayout;
    addRow->addWidget(templates_, 1);
    addRow->addWidget(add);
    layout->addLayout(addRow);
    auto* row = new QHBoxLayout;
    auto* copy = new QPushButton("Copy", column);
    connect(copy, &QPushButton::clicked, this, [this] { copySlide(); });
    paste_ = new QPushButton("Paste", column);
    connect(paste_, &QPushButton::clicked, this, [this] { pasteSlide(); });
    auto* remove = new QPushButton("Delete", column);
    connect(remove, &QPushButton::clicked, this, [this] { removeSlide(); });
    for (QPushButton* button : {copy, paste_, remove}) row->addWidget(button);
    layout->addLayout(row);
    editing_ = {templates_, add, remove};
}

void SlideEditorWindow::buildBoxRow(QWidget* column) {
    auto* layout = static_cast<QVBoxLayout*>(column->layout());
    layout->addWidget(heading("TEXT BOX", column));
    auto* boxRow = new QHBoxLayout;
    boxText_ = new QPlainTextEdit(column);
    boxText_->setObjectName("boxText");
    boxText_->setUndoRedoEnabled(false);
    boxText_->setTabChangesFocus(true);
    boxText_->setFixedHeight(72);
    boxRow->addWidget(boxText_, 1);
    auto* settings = new QVBoxLayout;
    boxSize_ = new QDoubleSpinBox(column);
    boxSize_->setRange(8, 400);
    boxSize_->setDecimals(0);
    boxSize_->setSuffix(" pt");
    boxBold_ = new QCheckBox("Bold", column);
    boxAlign_ = new QComboBox(column);
    boxAlign_->addItems({"Left", "Center", "Right"});
    auto* sizeRow = new QHBoxLayout;
    sizeRow->addWidget(boxSize_);
    sizeRow->addWidget(boxBold_);
    settings->addLayout(sizeRow);
    settings->addWidget(boxAlign_);
    boxRow->addLayout(settings);
    auto* boxButtons = new QVBoxLayout;
    auto* addBox = new QPushButton("Add Text Box", column);
    auto* removeBox = new QPushButton("Remove Box", column);
    auto* ink = new QPushButton("Text Colour…", column);
    for (QPushButton* button : {addBox, removeBox, ink}) boxButtons->addWidget(button);
    boxRow->addLayout(boxButtons);
    layout->addLayout(boxRow);

    auto* backgroundRow = new QHBoxLayout;
    backgroundRow->addWidget(new QLabel("Background", column));
    background_ = new QComboBox(column);
    background_->addItems({"Colour", "Clear — what is behind shows through"});
    backgroundRow->addWidget(background_, 1);
    colour_ = new QPushButton("Colour…", column);
    backgroundRow->addWidget(colour_);
    layout->addLayout(backgroundRow);
    auto* deckRow = new QHBoxLayout;
    deckRow->addWidget(new QLabel("Behind every slide", column));
    deckBackground_ = new QComboBox(column);
    deckRow->addWidget(deckBackground_, 1);
    covering_ = new QLabel(column);
    covering_->setStyleSheet("color: #e0a030;");
    deckRow->addWidget(covering_);
    layout->addLayout(deckRow);
    editing_.insert(editing_.end(), {boxSize_, boxBold_, boxAlign_, addBox, removeBox, ink, background_, colour_});
    connect(deckBackground_, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!filling_) deckBackgroundChosen(index);
    });

    boxTimer_ = new QTimer(this);
    boxTimer_->setSingleShot(true);
    boxTimer_->setInterval(sendAfterMilliseconds);
    connect(boxTimer_, &QTimer::timeout, this, [this] { sendTyping(); });
    connect(boxText_, &QPlainTextEdit::textChanged, this, [this] {
        const auto slide = chosenSlideID();
        if (filling_ || !slide || !canvas_->selectedBox()) return;
        boxTyping_ = std::pair(*slide, *canvas_->selectedBox());
        boxTimer_->start();
    });
    connect(boxSize_, &QDoubleSpinBox::valueChanged, this, [this](double size) {
        if (!filling_) changeBox([size](TextBox& box) { box.size = size; });
    });
    connect(boxBold_, &QCheckBox::toggled, this, [this](bool bold) {
        if (!filling_) changeBox([bold](TextBox& box) { box.bold = bold; });
    });
    connect(boxAlign_, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!filling_) changeBox([index](TextBox& box) { box.align = TextAlign(index); });
    });
    connect(addBox, &QPushButton::clicked, this, [this] {
        TextBox box;
        box.id = Uuid::random();
        box.text = "Text";
        box.x = 0.1, box.y = 0.4, box.width = 0.8, box.height = 0.2;
        canvas_->selectBox(box.id);
        if (const auto slide = chosenSlideID())
            model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
                for (MadeSlide& each : slides)
                    if (each.id == *slide) {
                        if (!each.boxes) each.boxes = each.effectiveBoxes();
                        each.boxes->push_back(box);
                    }
            });
    });
    connect(removeBox, &QPushButton::clicked, this, [this] {
        const auto slide = chosenSlideID();
        const auto boxID = canvas_->selectedBox();
        if (!slide || !boxID) return;
        boxTyping_.reset();
        model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
            for (MadeSlide& each : slides)
                if (each.id == *slide) {
                    if (!each.boxes) each.boxes = each.effectiveBoxes();
                    std::erase_if(*each.boxes, [&](const TextBox& box) { return box.id == *boxID; });
                }
        });
    });
    connect(ink, &QPushButton::clicked, this, [this] {
        const QColor chosen = QColorDialog::getColor(Qt::white, this, "Text Colour");
        if (chosen.isValid()) changeBox([&](TextBox& box) { box.color = packed(chosen); });
    });
    connect(background_, &QComboBox::currentIndexChanged, this, [this](int index) {
        if (!filling_) backgroundChosen(index);
    });
    connect(colour_, &QPushButton::clicked, this, [this] {
        const MadeSlide* slide = chosenSlide();
        if (!slide) return;
        const QColor chosen = QColorDialog::getColor(QColor(QRgb(slide->color)), this, "Slide Colour");
        if (!chosen.isValid()) return;
        changeSlide([&](MadeSlide& each) {
            each.color = packed(chosen);
            each.imageID.reset();
            if (each.isClear) each.isClear = false;
        });
    });
}

const MediaItem* SlideEditorWindow::item() const {
    const auto& show = model_.show();
    const MediaItem* found = show ? show->media(itemID_) : nullptr;
    return found && found->deck && found->deck->made ? found : nullptr;
}

std::optional<Uuid> SlideEditorWindow::chosenSlideID() const {
    const auto editor = model_.slideEditors().find(itemID_);
    return editor == model_.slideEditors().end() ? std::nullopt : editor->second.selection;
}

const MadeSlide* SlideEditorWindow::chosenSlide() const {
    const MediaItem* deck = item();
    const auto index = deck ? indexOf(*deck->deck->made, chosenSlideID()) : std::nullopt;
    return index ? &(*deck->deck->made)[*index] : nullptr;
}

void SlideEditorWindow::refresh() {
    const MediaItem* deck = item();
    if (!deck) return;
    if (const auto editor = model_.slideEditors().find(itemID_); editor != model_.slideEditors().end())
        if (windowTitle() != qt(editor->second.title)) setWindowTitle(qt(editor->second.title));
    const bool locked = model_.isLocked();
    for (QWidget* widget : editing_) widget->setEnabled(!locked);
    paste_->setEnabled(!locked && model_.copiedSlide().has_value());
    songColumn_->setVisible(deck->song.has_value());
    if (deck->song) {
        song_->setReadOnly(locked);
        song_->setSong(*deck->song, model_.isDrawingPages());
    }
    refreshSlides(*deck->deck->made);
    const MadeSlide* chosen = chosenSlide();
    // While pages are drawn the show still has the slide as it was: a box
    // just let go stays where it was put until the change is in.
    const bool waiting = model_.isDrawingPages() && chosen && canvas_->slide() && canvas_->slide()->id == chosen->id;
    if (!waiting)
        canvas_->setSlide(chosen ? std::optional<MadeSlide>(*chosen) : std::nullopt,
                          chosen ? picture(chosen->imageID) : QImage());
    refreshBoxFields();
    refreshBackgrounds();
    refreshDeckBackground(*deck);
}

void SlideEditorWindow::refreshSlides(const std::vector<MadeSlide>& slides) {
    filling_ = true;
    if (slides != shownSlides_) {
        while (slides_->count() > int(slides.size())) delete slides_->takeItem(slides_->count() - 1);
        while (slides_->count() < int(slides.size())) slides_->addItem(new QListWidgetItem);
        for (std::size_t i = 0; i < slides.size(); ++i) {
            QListWidgetItem& row = *slides_->item(int(i));
            const QString text = rowText(slides[i], int(i));
            if (row.text() != text) row.setText(text);
            if (i >= shownSlides_.size() || shownSlides_[i] != slides[i]) row.setIcon(thumbnail(slides[i]));
        }
        shownSlides_ = slides;
        std::erase_if(thumbnails_, [&](const auto& entry) { return !indexOf(slides, entry.first); });
    }
    const auto index = indexOf(slides, chosenSlideID());
    const int row = index ? int(*index) : -1;
    if (slides_->currentRow() != row) slides_->setCurrentRow(row);
    filling_ = false;
}

QIcon SlideEditorWindow::thumbnail(const MadeSlide& slide) {
    const auto cached = thumbnails_.find(slide.id);
    if (cached != thumbnails_.end() && cached->second.first == slide) return cached->second.second;
    const QImage background = picture(slide.imageID);
    QPixmap pixmap(thumbnailWidth, thumbnailWidth * 9 / 16);
    pixmap.fill(Qt::black);
    QPainter painter(&pixmap);
    SlideEditorCanvas::paintSlide(painter, QRectF(pixmap.rect()), slide, background);
    painter.end();
    QIcon icon(pixmap);
    thumbnails_[slide.id] = {slide, icon};
    return icon;
}

void SlideEditorWindow::refreshBoxFields() {
    const MadeSlide* slide = chosenSlide();
    std::optional<TextBox> box;
    if (slide && canvas_->selectedBox())
        for (const TextBox& each : slide->effectiveBoxes())
            if (each.id == *canvas_->selectedBox()) box = each;
    const bool editable = box && !model_.isLocked();
    for (QWidget* field : {static_cast<QWidget*>(boxSize_), static_cast<QWidget*>(boxBold_),
                           static_cast<QWidget*>(boxAlign_)})
        field->setEnabled(editable);
    boxText_->setReadOnly(!editable);
    if (!box) boxText_->setPlaceholderText("Choose a text box on the slide to change its words.");
    filling_ = true;
    const bool typingHere = box && boxTyping_ && boxTyping_->first == slide->id && boxTyping_->second == box->id;
    const QString words = box ? qt(box->text) : QString();
    if (!typingHere && boxText_->toPlainText() != words) boxText_->setPlainText(words);
    if (box) {
        if (boxSize_->value() != box->size) boxSize_->setValue(box->size);
        if (boxBold_->isChecked() != box->bold) boxBold_->setChecked(box->bold);
        if (boxAlign_->currentIndex() != int(box->align)) boxAlign_->setCurrentIndex(int(box->align));
    }
    filling_ = false;
}

void SlideEditorWindow::changeSlide(const std::function<void(MadeSlide&)>& change) {
    const auto slideID = chosenSlideID();
    if (!slideID) return;
    model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
        for (MadeSlide& slide : slides)
            if (slide.id == *slideID) change(slide);
    });
}

void SlideEditorWindow::changeBox(const std::function<void(TextBox&)>& change) {
    const auto boxID = canvas_->selectedBox();
    if (!boxID) return;
    changeSlide([&](MadeSlide& slide) {
        if (!slide.boxes) slide.boxes = slide.effectiveBoxes();
        for (TextBox& box : *slide.boxes)
            if (box.id == *boxID) {
                change(box);
                box = box.clamped();
            }
    });
}

void SlideEditorWindow::sendTyping() {
    song_->commit();
    boxTimer_->stop();
    if (!boxTyping_) return;
    const auto [slideID, boxID] = *boxTyping_;
    const std::string words = boxText_->toPlainText().toStdString();
    boxTyping_.reset();
    model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
        for (MadeSlide& slide : slides) {
            if (slide.id != slideID) continue;
            if (!slide.boxes) slide.boxes = slide.effectiveBoxes();
            for (TextBox& box : *slide.boxes)
                if (box.id == boxID) box.text = words;
        }
    });
}

void SlideEditorWindow::undo() {
    if (song_->discardTyping()) return;
    if (boxTyping_) {
        boxTyping_.reset();
        boxTimer_->stop();
        refreshBoxFields();
        return;
    }
    model_.undo();
}

void SlideEditorWindow::addSlide() {
    const int chosen = std::clamp(templates_->currentIndex(), 0, int(std::size(templateList)) - 1);
    MadeSlide slide = slideTemplate::makeSlide(templateList[chosen], "", "");
    const auto after = chosenSlideID();
    model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
        const auto index = indexOf(slides, after);
        slides.insert(index ? slides.begin() + std::ptrdiff_t(*index) + 1 : slides.end(), slide);
    });
    model_.selectSlide(itemID_, slide.id);
}

void SlideEditorWindow::removeSlide() {
    const auto slideID = chosenSlideID();
    if (!slideID) return;
    model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
        std::erase_if(slides, [&](const MadeSlide& slide) { return slide.id == *slideID; });
    });
}

void SlideEditorWindow::copySlide() {
    if (const MadeSlide* slide = chosenSlide()) model_.setCopiedSlide(*slide);
    paste_->setEnabled(!model_.isLocked() && model_.copiedSlide().has_value());
}

void SlideEditorWindow::pasteSlide() {
    if (!model_.copiedSlide()) return;
    // A pasted slide is the operator's own: no lyric source ties it to a
    // part of the song.
    MadeSlide slide = *model_.copiedSlide();
    slide.id = Uuid::random();
    slide.lyricSource.reset();
    const auto after = chosenSlideID();
    model_.updateSlides(itemID_, [&](std::vector<MadeSlide>& slides) {
        const auto index = indexOf(slides, after);
        slides.insert(index ? slides.begin() + std::ptrdiff_t(*index) + 1 : slides.end(), slide);
    });
    model_.selectSlide(itemID_, slide.id);
}

void SlideEditorWindow::closeEvent(QCloseEvent* event) {
    sendTyping();
    event->accept();
    model_.closeSlideEditor(itemID_);
}

bool SlideEditorWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) sendTyping();
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Undo)) {
            undo();
            return true;
        }
        const QKeyCombination shiftZ(Qt::ControlModifier | Qt::ShiftModifier, Qt::Key_Z);
        if (key->matches(QKeySequence::Redo) || key->keyCombination() == shiftZ) {
            sendTyping();
            model_.redo();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace velarion::console
