#include "Console/RunOfShowView.h"

#include "Console/ConsoleTheme.h"
#include "Console/RunOfShowModel.h"
#include "Live/AppModel.h"

#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace velarion::console {

namespace {

const QColor groupColours[] = {QColor(0x8a, 0x8f, 0xd9), QColor(0xd9, 0x7b, 0x4f), QColor(0x4f, 0xb3, 0xb3),
                               QColor(0xd9, 0x5b, 0xa0)};

class RowDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // One line of text with its icon, drawn straight: the style's general
    // item layout (word wrap, several passes) costs most of a scroll.
    static void paintCell(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index, int marks) {
        const bool selected = option.state & QStyle::State_Selected;
        if (selected) painter->fillRect(option.rect, option.palette.color(QPalette::Highlight));
        QRect area = option.rect.adjusted(6, 0, -4, 0);
        if (index.column() == RunOfShowModel::numberColumn && (marks >> 8) > 0) area.adjust(8, 0, 0, 0);
        const QVariant icon = index.data(Qt::DecorationRole);
        if (icon.isValid()) {
            const int side = 18;
            const QRect iconRect(area.left(), area.top() + (area.height() - side) / 2, side, side);
            qvariant_cast<QIcon>(icon).paint(painter, iconRect);
            area.setLeft(iconRect.right() + 6);
        }
        const QVariant font = index.data(Qt::FontRole);
        if (font.isValid()) painter->setFont(qvariant_cast<QFont>(font));
        else painter->setFont(option.font);
        const QVariant colour = index.data(Qt::ForegroundRole);
        painter->setPen(selected ? option.palette.color(QPalette::HighlightedText)
                        : colour.isValid() ? qvariant_cast<QColor>(colour)
                                           : option.palette.color(QPalette::Text));
        const QString text = index.data(Qt::DisplayRole).toString();
        painter->drawText(area, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                          painter->fontMetrics().elidedText(text, Qt::ElideRight, area.width()));
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const int marks = index.data(RunOfShowModel::marksRole).toInt();
        if (marks & RunOfShowModel::sectionMark) painter->fillRect(option.rect, colour::section);
        const bool isNext = marks & RunOfShowModel::nextMark;
        if (isNext) painter->fillRect(option.rect, QColor(0x22, 0x33, 0x4a));
        if (marks & RunOfShowModel::runningMark) {
            QRect filled = option.rect;
            const double progress = index.data(RunOfShowModel::progressRole).toDouble();
            QColor fill = colour::running;
            fill.setAlpha(70);
            if (progress >= 0) {
                // The whole row is one bar: each column fills its share.
                const auto* view = static_cast<const QTreeView*>(option.widget);
                const int total = view ? view->viewport()->width() : option.rect.width();
                const int edge = int(progress * total);
                filled.setRight(std::min(filled.right(), edge));
                if (filled.left() <= edge) painter->fillRect(filled, fill);
            } else painter->fillRect(filled, fill);
        }
        paintCell(painter, option, index, marks);
        if (index.column() != RunOfShowModel::numberColumn) return;
        if (isNext) painter->fillRect(QRect(option.rect.left(), option.rect.top(), 5, option.rect.height()), colour::next);
        const int group = (marks >> 8) - 1;
        if (group >= 0) {
            const bool first = marks & RunOfShowModel::groupStartMark;
            const bool last = marks & RunOfShowModel::groupEndMark;
            const QRect stripe(option.rect.left() + 8, option.rect.top() + (first ? 4 : 0), 3,
                               option.rect.height() - (first ? 4 : 0) - (last ? 4 : 0));
            painter->fillRect(stripe, groupColours[group % 4]);
        }
    }
};

} // namespace

RunOfShowView::RunOfShowView(AppModel& model, RunOfShowModel& rows, QWidget* parent)
    : QTreeView(parent), model_(model), rows_(rows) {
    setModel(&rows);
    setItemDelegate(new RowDelegate(this));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setAlternatingRowColors(false);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Interactive);
    header()->setSectionResizeMode(RunOfShowModel::descriptionColumn, QHeaderView::Stretch);
    setColumnWidth(RunOfShowModel::numberColumn, 52);
    setColumnWidth(RunOfShowModel::nameColumn, 260);
    setColumnWidth(RunOfShowModel::lengthColumn, 90);
    setColumnWidth(RunOfShowModel::followColumn, 110);
    setColumnWidth(RunOfShowModel::targetsColumn, 120);
}

void RunOfShowView::rowsRebuilt(int scrollValue) {
    for (int row = 0; row < rows_.rowCount(); ++row)
        if (rows_.isSectionRow(row)) setFirstColumnSpanned(row, {}, true);
    verticalScrollBar()->setValue(scrollValue);
    followSelection();
}

void RunOfShowView::followSelection() {
    const auto& selected = model_.selectedCueID();
    const QModelIndex index = selected ? rows_.indexOfCue(*selected, 0) : QModelIndex();
    if (index == currentIndex()) return;
    following_ = true;
    if (index.isValid()) {
        setCurrentIndex(index);
        scrollTo(index);
    } else clearSelection();
    following_ = false;
}

void RunOfShowView::renameSelected() {
    const QModelIndex current = currentIndex();
    if (current.isValid()) edit(rows_.index(current.row(), RunOfShowModel::nameColumn));
}

void RunOfShowView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    if (!following_) {
        const QModelIndexList rows = selectionModel()->selectedRows();
        const QModelIndex current = currentIndex();
        const bool currentIsSelected = current.isValid() && selectionModel()->isRowSelected(current.row(), {});
        std::optional<Uuid> cue = currentIsSelected ? rows_.cueAt(current) : std::nullopt;
        if (!cue && !currentIsSelected && !rows.isEmpty()) cue = rows_.cueAt(rows.front());
        if (cue && cue != model_.selectedCueID()) model_.selectCue(cue);
    }
    if (onSelectionChanged) onSelectionChanged();
}

std::vector<Uuid> RunOfShowView::selectedCueIDs() const {
    QModelIndexList rows = selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, &QModelIndex::row);
    std::vector<Uuid> ids;
    for (const QModelIndex& row : rows)
        if (auto cue = rows_.cueAt(row)) ids.push_back(*cue);
    return ids;
}

std::optional<Uuid> RunOfShowView::selectedSectionID() const {
    const QModelIndex current = currentIndex();
    if (!rows_.isSectionRow(current.row()) || !selectionModel()->isRowSelected(current.row(), {})) return std::nullopt;
    return rows_.sectionAt(current);
}

} // namespace velarion::console
