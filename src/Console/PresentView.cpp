#include "Console/PresentView.h"
#include "Console/ConsoleText.h"

#include "Console/ConsoleTheme.h"
#include "Console/LibraryPictures.h"
#include "Live/AppModel.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace velarion::console {

namespace {

constexpr int gap = 12;
constexpr int captionHeight = 24;
constexpr int headingHeight = 34;

// The deck the page shows: the live one, else the selected slides cue's.
struct ShownDeck {
    const Cue* cue = nullptr;
    const MediaItem* item = nullptr;
    bool isLive = false;
};

ShownDeck shownDeck(const AppModel& model) {
    const auto& show = model.show();
    if (!show) return {};
    const EngineState* state = model.engineState();
    const auto deckOf = [&](const std::optional<Uuid>& cueID, bool live) -> ShownDeck {
        const Cue* cue = cueID ? show->cue(*cueID) : nullptr;
        const auto* slides = cue ? std::get_if<SlidesCue>(&cue->kind) : nullptr;
        const MediaItem* item = slides ? show->media(slides->deckID) : nullptr;
        if (!item || !item->deck) return {};
        return {cue, item, live};
    };
    if (state && state->activeDeckCueID)
        if (ShownDeck live = deckOf(state->activeDeckCueID, true); live.item) return live;
    return deckOf(model.selectedCueID(), false);
}

int lineCount(const std::string& text) {
    if (text.empty()) return 0;
    return int(std::count(text.begin(), text.end(), '\n')) + 1;
}

} // namespace

class PresentView::Grid final : public QWidget {
public:
    explicit Grid(PresentView& view) : QWidget(nullptr), view_(view) { setMouseTracking(false); }

    // Places the cells for a width; the height they need.
    int place(int width) {
        const int columns = std::max(1, (width - gap) / (tileWidth + gap));
        int x = 0, y = gap;
        const auto newLine = [&] {
            if (x > 0) y += tileHeight + captionHeight + gap;
            x = 0;
        };
        for (Cell& cell : view_.cells_) {
            if (cell.kind == Cell::Kind::heading) {
                newLine();
                cell.rect = QRect(gap, y, width - 2 * gap, headingHeight);
                y += headingHeight + 4;
                continue;
            }
            if (x == columns) newLine();
            cell.rect = QRect(gap + x * (tileWidth + gap), y, tileWidth, tileHeight + captionHeight);
            ++x;
        }
        newLine();
        return y;
    }

protected:
    void resizeEvent(QResizeEvent*) override {
        const int needed = place(width());
        if (minimumHeight() != needed) setMinimumHeight(needed);
    }

    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) return;
        for (const Cell& cell : view_.cells_)
            if (cell.rect.contains(event->position().toPoint())) return view_.clicked(cell);
    }

    void paintEvent(QPaintEvent* event) override {
        QPainter painter(this);
        painter.fillRect(event->rect(), colour::window);
        const auto& slideImages = view_.model_.caches().slideImages;
        const QFont base = font();
        QFont bold = base;
        bold.setBold(true);
        for (const Cell& cell : view_.cells_) {
            if (!cell.rect.intersects(event->rect())) continue;
            if (cell.kind == Cell::Kind::heading) {
                painter.fillRect(cell.rect, colour::section);
                painter.setFont(bold);
                painter.setPen(colour::text);
                painter.drawText(cell.rect.adjusted(12, 0, -60, 0), Qt::AlignVCenter | Qt::AlignLeft, cell.text);
                if (!cell.key.isEmpty()) {
                    // The key that jumps here, as a keycap.
                    const QRect cap(cell.rect.right() - 40, cell.rect.top() + 5, 28, cell.rect.height() - 10);
                    painter.setPen(colour::dimText);
                    painter.setBrush(colour::raised);
                    painter.drawRoundedRect(cap, 4, 4);
                    painter.setPen(colour::text);
                    painter.drawText(cap, Qt::AlignCenter, cell.key);
                }
                continue;
            }
            const bool onAir = cell.kind == Cell::Kind::background ? view_.backgroundOnAir_
                                                                   : view_.onAir_ == cell.slide;
            const QRect picture(cell.rect.left(), cell.rect.top(), tileWidth, tileHeight);
            painter.fillRect(picture, QColor(0x0c, 0x0d, 0x10));
            const auto found = cell.page.empty() ? slideImages.end() : slideImages.find(cell.page);
            if (found != slideImages.end()) {
                const QImage image = LibraryPictures::view(found->second);
                const QSize fitted = image.size().scaled(picture.size(), Qt::KeepAspectRatio);
                painter.setRenderHint(QPainter::SmoothPixmapTransform);
                painter.drawImage(QRect(picture.left() + (picture.width() - fitted.width()) / 2,
                                        picture.top() + (picture.height() - fitted.height()) / 2, fitted.width(),
                                        fitted.height()),
                                  image);
            } else {
                painter.setFont(base);
                painter.setPen(colour::dimText);
                painter.drawText(picture.adjusted(10, 8, -10, -8), Qt::AlignCenter | Qt::TextWordWrap,
                                 cell.kind == Cell::Kind::background ? QStringLiteral("Background") : cell.text);
            }
            painter.setPen(QPen(onAir ? colour::panic : colour::raised, onAir ? 4 : 1));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(picture.adjusted(onAir ? 1 : 0, onAir ? 1 : 0, onAir ? -2 : -1, onAir ? -2 : -1));
            if (onAir) {
                const QRect badge(picture.right() - 46, picture.top() + 6, 40, 18);
                painter.fillRect(badge, colour::panic);
                painter.setFont(bold);
                painter.setPen(Qt::white);
                painter.drawText(badge, Qt::AlignCenter, "LIVE");
            }
            const QRect caption(cell.rect.left(), picture.bottom() + 1, tileWidth, captionHeight);
            painter.setFont(onAir ? bold : base);
            painter.setPen(onAir ? colour::text : colour::dimText);
            QString words = cell.kind == Cell::Kind::background ? QStringLiteral("Background")
                                                                : QString::number(cell.slide + 1) + "  " + cell.text;
            if (cell.parts > 1) {
                const QString parts = QString::number(cell.parts) + " parts";
                painter.drawText(caption, Qt::AlignVCenter | Qt::AlignRight, parts);
                words = painter.fontMetrics().elidedText(words, Qt::ElideRight,
                                                         tileWidth - painter.fontMetrics().horizontalAdvance(parts) - 8);
            } else words = painter.fontMetrics().elidedText(words, Qt::ElideRight, tileWidth);
            painter.drawText(caption, Qt::AlignVCenter | Qt::AlignLeft, words);
        }
    }

private:
    PresentView& view_;
};

PresentView::PresentView(AppModel& model, LibraryPictures& pictures, QWidget* parent)
    : QWidget(parent), model_(model), pictures_(pictures) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    title_ = new QLabel(this);
    title_->setStyleSheet("font-size: 15pt; font-weight: bold; padding: 8px 12px;");
    layout->addWidget(title_);
    grid_ = new Grid(*this);
    scroll_ = new QScrollArea(this);
    scroll_->setWidget(grid_);
    scroll_->setWidgetResizable(true);
    scroll_->setFrameShape(QFrame::NoFrame);
    layout->addWidget(scroll_, 1);
    status_ = new QLabel(helpLine, this);
    status_->setStyleSheet("color: #808690; padding: 6px 12px;");
    layout->addWidget(status_);
    setFocusPolicy(Qt::NoFocus);
}

void PresentView::refresh() {
    const ShownDeck shown = shownDeck(model_);
    if (!shown.item) {
        if (deckShown_ || deckCue_ || title_->text().isEmpty()) {
            deckCue_.reset();
            deckShown_ = nullptr;
            onAir_.reset();
            backgroundOnAir_ = false;
            title_->setText("No slides are live");
            rebuild(nullptr);
        }
        return;
    }
    if (shown.item != deckShown_ || deckCue_ != shown.cue->id || isLive_ != shown.isLive) {
        deckShown_ = shown.item;
        deckCue_ = shown.cue->id;
        isLive_ = shown.isLive;
        title_->setText(qt(shown.cue->name) + (shown.isLive ? "" : "  —  not live"));
        rebuild(shown.item);
    }
    requestPages(*shown.item);
    const EngineState* state = model_.engineState();
    std::optional<int> onAir;
    bool background = false;
    if (shown.isLive && state) {
        background = state->isDeckBackgroundOnly;
        if (!background) onAir = state->activeSlide;
    }
    if (onAir != onAir_ || background != backgroundOnAir_) {
        onAir_ = onAir;
        backgroundOnAir_ = background;
        if (onAir_) scroll_->ensureVisible(0, slideRect(*onAir_).center().y(), 0, tileHeight);
        grid_->update();
    }
}

void PresentView::rebuild(const MediaItem* item) {
    cells_.clear();
    if (item && item->deck) {
        const DeckInfo& deck = *item->deck;
        if (deck.background) cells_.push_back({Cell::Kind::background, -1, "Background", {}, 1, {}, {}});
        int limit = 0;
        if (const auto& show = model_.show())
            for (const auto& [screen, lines] : show->outputs.lyricLineLimits())
                if (lines > 0 && (limit == 0 || lines < limit)) limit = lines;
        const int count = int(deck.made ? deck.made->size() : deck.pages.size());
        QString lastHeading;
        for (int slide = 0; slide < count; ++slide) {
            for (const DeckGroup& group : deck.groups) {
                // A section's slides each name it: one heading per run of them.
                if (group.firstSlide != slide || group.name.empty() || qt(group.name) == lastHeading) continue;
                lastHeading = qt(group.name);
                cells_.push_back({Cell::Kind::heading, slide, lastHeading, lastHeading.left(1).toUpper(), 1, {}, {}});
            }
            Cell tile{Cell::Kind::slide, slide, {}, {}, 1, {}, {}};
            if (slide < int(deck.pages.size())) tile.page = deck.pages[std::size_t(slide)];
            if (deck.made) {
                const MadeSlide& made = (*deck.made)[std::size_t(slide)];
                std::string words = made.title.empty() ? made.text : made.title;
                for (const TextBox& box : made.effectiveBoxes())
                    if (words.empty()) words = box.text;
                tile.text = qt(words).replace('\n', " / ");
                const int lines = lineCount(made.text.empty() ? words : made.text);
                if (made.lyricSource && limit > 0 && lines > limit) tile.parts = (lines + limit - 1) / limit;
            } else tile.text = "Page " + QString::number(slide + 1);
            cells_.push_back(std::move(tile));
        }
    }
    const int needed = grid_->place(std::max(grid_->width(), scroll_->viewport()->width()));
    grid_->setMinimumHeight(needed);
    grid_->update();
}

void PresentView::requestPages(const MediaItem& item) {
    const auto& show = model_.show();
    if (!model_.package() || !show) return;
    if (picturesShow_ != show->id || pictures_.generation() != picturesGeneration_) {
        picturesShow_ = show->id;
        picturesGeneration_ = pictures_.generation();
        requested_.clear();
    }
    auto& slideImages = model_.caches().slideImages;
    for (const std::string& page : item.deck->pages) {
        if (slideImages.count(page) || !requested_.insert(page).second) continue;
        LibraryPictures::Request request;
        request.key = page;
        request.files = {model_.package()->mediaURL(page)};
        request.look = LibraryPictures::Look::picture;
        request.fit = QSize(tileWidth, tileHeight) * 2;
        pictures_.request(std::move(request), [this](LibraryPictures::Answer answer) {
            if (!answer.picture) return;
            model_.caches().slideImages.insert_or_assign(answer.key, *answer.picture);
            for (const Cell& cell : cells_)
                if (cell.page == answer.key) grid_->update(cell.rect);
        });
    }
}

void PresentView::clicked(const Cell& cell) {
    if (!deckCue_) return;
    if (cell.kind == Cell::Kind::background) model_.perform(command::ShowDeckBackground{*deckCue_});
    else model_.perform(command::GoToDeckSlide{*deckCue_, cell.slide});
}

QWidget& PresentView::grid() { return *grid_; }

QRect PresentView::slideRect(int slide) const {
    for (const Cell& cell : cells_)
        if (cell.kind == Cell::Kind::slide && cell.slide == slide) return cell.rect;
    return {};
}

} // namespace velarion::console
