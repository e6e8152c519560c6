#include "Console/LibraryPanel.h"
#include "Console/ConsoleText.h"

#include "Console/ConsoleTheme.h"
#include "Console/LibraryModel.h"
#include "Console/LibraryPictures.h"
#include "Live/AppModel.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace velarion::console {

namespace {

constexpr int rowHeight = 64;

// A row drawn straight: picture or waveform, name, and the detail line.
class ItemDelegate final : public QStyledItemDelegate {
public:
    ItemDelegate(const LibraryModel& items, const AppModel& model, QObject* parent)
        : QStyledItemDelegate(parent), items_(items), model_(model) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return {option.rect.width(), rowHeight};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const LibraryModel::Row& row = items_.row(index.row());
        const bool selected = option.state & QStyle::State_Selected;
        const bool missing = items_.isMissing(row);
        if (selected) painter->fillRect(option.rect, option.palette.color(QPalette::Highlight));
        if (missing) painter->fillRect(QRect(option.rect.left(), option.rect.top(), 4, option.rect.height()), colour::warning);

        const QSize size = LibraryModel::thumbnailSize;
        const QRect frame(option.rect.left() + 10, option.rect.top() + (option.rect.height() - size.height()) / 2,
                          size.width(), size.height());
        painter->fillRect(frame, QColor(0x0c, 0x0d, 0x10));
        if (const StillImage* still = items_.picture(row)) {
            const QImage picture = LibraryPictures::view(*still);
            const QSize fitted = picture.size().scaled(size, Qt::KeepAspectRatio);
            const QRect target(frame.left() + (size.width() - fitted.width()) / 2,
                               frame.top() + (size.height() - fitted.height()) / 2, fitted.width(), fitted.height());
            painter->setRenderHint(QPainter::SmoothPixmapTransform);
            painter->drawImage(target, picture);
        } else if (const std::vector<float>* peaks = items_.peaks(row); peaks && !peaks->empty()) {
            paintWaveform(painter, frame.adjusted(3, 6, -3, -6), *peaks);
        } else {
            painter->setPen(colour::dimText);
            painter->setFont(option.font);
            painter->drawText(frame, Qt::AlignCenter,
                              items_.isLoaded(row) || missing ? row.detail.section(" · ", 0, 0) : QStringLiteral("…"));
        }
        if (model_.previewedMediaID() == row.id) {
            // The item playing on Headphones.
            painter->setBrush(colour::go);
            painter->setPen(Qt::NoPen);
            const QPointF at(frame.left() + 8, frame.bottom() - 14);
            const QPointF triangle[] = {at, at + QPointF(0, 10), at + QPointF(9, 5)};
            painter->drawPolygon(triangle, 3);
        }

        QRect text = option.rect.adjusted(frame.right() + 12 - option.rect.left(), 8, -8, -8);
        QFont bold = option.font;
        bold.setBold(true);
        painter->setFont(bold);
        painter->setPen(selected ? option.palette.color(QPalette::HighlightedText) : colour::text);
        const int line = painter->fontMetrics().height();
        painter->drawText(QRect(text.left(), text.top(), text.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(row.name, Qt::ElideRight, text.width()));
        painter->setFont(option.font);
        painter->setPen(missing ? colour::warning : colour::dimText);
        const QString detail = missing ? QStringLiteral("Missing — ") + row.detail : row.detail;
        painter->drawText(QRect(text.left(), text.top() + line + 4, text.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(detail, Qt::ElideRight, text.width()));
    }

private:
    static void paintWaveform(QPainter* painter, const QRect& area, const std::vector<float>& peaks) {
        const int bars = std::max(1, area.width() / 2);
        const int middle = area.center().y();
        painter->setPen(QColor(0x5f, 0xa8, 0xd8));
        for (int bar = 0; bar < bars; ++bar) {
            // The loudest peak of the bar's share, so short hits still show.
            const std::size_t from = std::size_t(bar) * peaks.size() / std::size_t(bars);
            const std::size_t to = std::max(from + 1, std::size_t(bar + 1) * peaks.size() / std::size_t(bars));
            const float peak = *std::max_element(peaks.begin() + long(from), peaks.begin() + long(std::min(to, peaks.size())));
            const int half = std::max(1, int(peak * float(area.height()) / 2));
            painter->drawLine(area.left() + bar * 2, middle - half, area.left() + bar * 2, middle + half);
        }
    }

    const LibraryModel& items_;
    const AppModel& model_;
};

} // namespace

LibraryPanel::LibraryPanel(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model), pictures_(std::make_unique<LibraryPictures>()),
      items_(std::make_unique<LibraryModel>(model, *pictures_)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(6, 4, 6, 0);
    import_ = new QPushButton("Import…", this);
    preview_ = new QPushButton("Preview", this);
    find_ = new QPushButton("Find…", this);
    for (QPushButton* button : {import_, preview_, find_}) {
        button->setFocusPolicy(Qt::NoFocus);
        buttons->addWidget(button);
    }
    buttons->addStretch(1);
    layout->addLayout(buttons);
    connect(import_, &QPushButton::clicked, this, [this] { importPanel(); });
    connect(preview_, &QPushButton::clicked, this, [this] { togglePreview(); });
    connect(find_, &QPushButton::clicked, this, [this] {
        if (model_.selectedMediaID()) findMissing(*model_.selectedMediaID());
    });

    importRow_ = new QWidget(this);
    auto* importLayout = new QVBoxLayout(importRow_);
    importLayout->setContentsMargins(6, 0, 6, 0);
    importText_ = new QLabel(importRow_);
    progress_ = new QProgressBar(importRow_);
    progress_->setRange(0, 1000);
    progress_->setTextVisible(false);
    progress_->setMaximumHeight(8);
    cancel_ = new QPushButton("Cancel", importRow_);
    cancel_->setFocusPolicy(Qt::NoFocus);
    connect(cancel_, &QPushButton::clicked, this, [this] { model_.cancelImport(); });
    auto* progressLine = new QHBoxLayout;
    progressLine->addWidget(progress_, 1);
    progressLine->addWidget(cancel_);
    importLayout->addWidget(importText_);
    importLayout->addLayout(progressLine);
    layout->addWidget(importRow_);

    alertBox_ = new QWidget(this);
    alertBox_->setStyleSheet("background: #3a2c14; border-radius: 4px;");
    auto* alertLayout = new QVBoxLayout(alertBox_);
    alertText_ = new QLabel(alertBox_);
    alertText_->setWordWrap(true);
    alertText_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* dismiss = new QPushButton("OK", alertBox_);
    dismiss->setFocusPolicy(Qt::NoFocus);
    connect(dismiss, &QPushButton::clicked, this, [this] { model_.dismissImportAlert(); });
    alertLayout->addWidget(alertText_);
    alertLayout->addWidget(dismiss, 0, Qt::AlignRight);
    layout->addWidget(alertBox_);

    list_ = new QListView(this);
    list_->setModel(items_.get());
    list_->setItemDelegate(new ItemDelegate(*items_, model_, list_));
    list_->setUniformItemSizes(true);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setDragEnabled(true);
    list_->setAcceptDrops(true);
    list_->setDropIndicatorShown(false);
    list_->setDragDropMode(QAbstractItemView::DragDrop);
    list_->setDefaultDropAction(Qt::CopyAction);
    list_->setFocusPolicy(Qt::NoFocus);
    list_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    layout->addWidget(list_, 1);
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& current) {
        if (following_) return;
        if (const auto id = items_->itemAt(current); id != model_.selectedMediaID()) model_.selectMedia(id);
    });
    connect(list_, &QListView::doubleClicked, this, [this](const QModelIndex& index) {
        const auto id = items_->itemAt(index);
        if (id && items_->isMissing(items_->row(index.row()))) findMissing(*id);
    });
    connect(items_.get(), &QAbstractItemModel::dataChanged, this, [this] { updateButtons(); });
    connect(list_->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] { preferVisiblePictures(); });

    previewTimer_ = new QTimer(this);
    connect(previewTimer_, &QTimer::timeout, this, [this] {
        model_.tickPreview();
        updateButtons();
        list_->viewport()->update();
    });

    chooseFiles = [this] {
        return QFileDialog::getOpenFileNames(this, "Import Media", QString(),
                                             "Media (*.mov *.mp4 *.m4v *.mkv *.webm *.avi *.png *.jpg *.jpeg *.gif "
                                             "*.bmp *.tif *.tiff *.heic *.webp *.mp3 *.wav *.aif *.aiff *.m4a *.flac "
                                             "*.ogg *.pdf *.key *.ppt *.pptx *.odp);;All files (*)");
    };
    chooseFile = [this](const QString& prompt) { return QFileDialog::getOpenFileName(this, prompt); };
    refresh();
}

LibraryPanel::~LibraryPanel() {
    // The items go before QWidget deletes the list, which would still hold
    // them (and its delegate paints from them).
    list_->setModel(nullptr);
}

void LibraryPanel::refresh() {
    if (items_->update()) preferVisiblePictures();
    const auto& selected = model_.selectedMediaID();
    const QModelIndex index = selected ? items_->indexOfItem(*selected) : QModelIndex();
    if (index != list_->currentIndex()) {
        following_ = true;
        if (index.isValid()) list_->setCurrentIndex(index);
        else list_->clearSelection();
        following_ = false;
    }
    // A preview whose item or show went stops with it.
    if (model_.previewedMediaID() && (!model_.show() || !model_.show()->media(*model_.previewedMediaID())))
        model_.stopPreview();
    if (model_.previewedMediaID() && !previewTimer_->isActive()) previewTimer_->start(previewTickMilliseconds);
    updateImport();
    updateButtons();
}

void LibraryPanel::preferVisiblePictures() {
    if (pictures_->pending() == 0) return;
    const QRect area = list_->viewport()->rect();
    const QModelIndex top = list_->indexAt(area.topLeft());
    if (!top.isValid()) return;
    const QModelIndex bottom = list_->indexAt(QPoint(area.left(), area.bottom()));
    const int last = bottom.isValid() ? bottom.row() : items_->rowCount() - 1;
    std::vector<std::string> keys;
    for (int row = top.row(); row <= last; ++row)
        if (!items_->row(row).key.empty()) keys.push_back(items_->row(row).key);
    pictures_->prefer(keys);
}

void LibraryPanel::updateImport() {
    const auto& progress = model_.importProgress();
    importRow_->setVisible(model_.isImporting());
    if (model_.isImporting()) {
        const QString words = progress && !progress->currentFile.empty()
                                  ? "Importing " + qt(progress->currentFile) + " (" + QString::number(progress->filesDone + 1) +
                                        " of " + QString::number(progress->fileCount) + ")"
                                  : qt(model_.status());
        if (importText_->text() != words) importText_->setText(words);
        const int value = progress ? int(progress->fraction() * 1000) : 0;
        if (progress_->value() != value) progress_->setValue(value);
    }
    const auto& alert = model_.importAlert();
    alertBox_->setVisible(alert.has_value());
    if (alert) {
        const QString words = "<b>" + qt(alert->title).toHtmlEscaped() + "</b><br>" +
                              qt(alert->text).toHtmlEscaped().replace("\n", "<br>");
        if (alertText_->text() != words) alertText_->setText(words);
    }
}

void LibraryPanel::updateButtons() {
    const auto& show = model_.show();
    const auto& selected = model_.selectedMediaID();
    const MediaItem* item = show && selected ? show->media(*selected) : nullptr;
    const QModelIndex index = selected ? items_->indexOfItem(*selected) : QModelIndex();
    const bool missing = index.isValid() && items_->isMissing(items_->row(index.row()));
    const bool editable = show && !model_.isLocked();
    import_->setEnabled(editable && !model_.isImporting());
    find_->setEnabled(editable && item && missing && !item->deck);
    const bool previewing = selected && model_.previewedMediaID() == selected;
    preview_->setText(previewing ? "Stop Preview" : "Preview");
    preview_->setEnabled(previewing || (item && !item->deck && !item->ndiSource && !missing));
    if (!model_.previewedMediaID()) previewTimer_->stop();
}

void LibraryPanel::togglePreview() {
    const auto& selected = model_.selectedMediaID();
    if (!selected) return;
    if (model_.previewedMediaID() == selected) model_.stopPreview();
    else if (model_.previewMedia(*selected)) previewTimer_->start(previewTickMilliseconds);
    updateButtons();
    list_->viewport()->update();
}

void LibraryPanel::importPanel() {
    if (!model_.show()) return;
    const QStringList files = chooseFiles ? chooseFiles() : QStringList();
    std::vector<std::filesystem::path> paths;
    for (const QString& file : files) paths.emplace_back(file.toStdString());
    model_.importFiles(paths, false);
}

void LibraryPanel::findMissing(const Uuid& itemID) {
    const MediaItem* item = model_.show() ? model_.show()->media(itemID) : nullptr;
    if (!item || !chooseFile) return;
    const QString chosen = chooseFile(qt(AppModel::findMissingPrompt(*item)));
    if (!chosen.isEmpty()) model_.findMissing(itemID, chosen.toStdString());
}

} // namespace velarion::console
