#include "Console/SlideEditorCanvas.h"

#include "Console/ConsoleTheme.h"
#include "Platform/Pictures/SlideMaker.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace velarion::console {

namespace {

constexpr double pageAspect = 16.0 / 9.0;
constexpr double marginPixels = 16;
// The same dimming the drawn page puts over a picture under text.
constexpr double dimAlpha = 0.38;

QColor rgb(int packed) { return QColor((packed >> 16) & 0xFF, (packed >> 8) & 0xFF, packed & 0xFF); }

// A clear slide shows what is behind it: a quiet checker says so.
void paintClear(QPainter& painter, const QRectF& page) {
    painter.fillRect(page, QColor(0x26, 0x28, 0x2d));
    const double cell = std::max(6.0, page.height() / 12);
    for (int row = 0; row * cell < page.height(); ++row)
        for (int column = row % 2; column * cell < page.width(); column += 2)
            painter.fillRect(QRectF(page.left() + column * cell, page.top() + row * cell, cell, cell)
                                 .intersected(page),
                             QColor(0x30, 0x33, 0x39));
}

Qt::CursorShape cursorFor(int edges) {
    constexpr int leftOrRight = 1 | 2, topOrBottom = 4 | 8;
    if (edges & 16) return Qt::SizeAllCursor;
    const bool horizontal = edges & leftOrRight, vertical = edges & topOrBottom;
    if (horizontal && vertical) return ((edges & 1) == 0) == ((edges & 4) == 0) ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
    if (horizontal) return Qt::SizeHorCursor;
    if (vertical) return Qt::SizeVerCursor;
    return Qt::ArrowCursor;
}

} // namespace

SlideEditorCanvas::SlideEditorCanvas(QWidget* parent) : QWidget(parent) {
    setMouseTracking(true);
    setMinimumSize(320, 200);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void SlideEditorCanvas::setSlide(const std::optional<MadeSlide>& slide, const QImage& background) {
    // A drag in progress survives a refresh of the same slide.
    if (grip_ && (!slide || !slide_ || slide->id != slide_->id)) {
        grip_.reset();
        moving_.reset();
    }
    const bool sameBackground = background.cacheKey() == background_.cacheKey();
    if (slide == slide_ && sameBackground) return;
    slide_ = slide;
    background_ = background;
    // The choice stays while its box is away: a box just added arrives with
    // the redrawn slide, chosen.
    update();
}

void SlideEditorCanvas::selectBox(const std::optional<Uuid>& boxID) {
    if (selected_ == boxID) return;
    selected_ = boxID;
    update();
    if (onBoxSelected) onBoxSelected(selected_);
}

QRectF SlideEditorCanvas::pageRect() const {
    const QRectF area = QRectF(rect()).adjusted(marginPixels, marginPixels, -marginPixels, -marginPixels);
    double width = area.width(), height = width / pageAspect;
    if (height > area.height()) {
        height = area.height();
        width = height * pageAspect;
    }
    return QRectF(area.center().x() - width / 2, area.center().y() - height / 2, width, height);
}

QRectF SlideEditorCanvas::boxRect(const TextBox& box) const {
    const QRectF page = pageRect();
    return QRectF(page.left() + box.x * page.width(), page.top() + box.y * page.height(),
                  box.width * page.width(), box.height * page.height());
}

void SlideEditorCanvas::paintSlide(QPainter& painter, const QRectF& page, const MadeSlide& slide,
                                   const QImage& background) {
    painter.save();
    painter.setClipRect(page);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    const bool clear = slide.isClear.value_or(false);
    const std::vector<TextBox> boxes = slide.effectiveBoxes();
    const bool anyText = std::any_of(boxes.begin(), boxes.end(), [](const TextBox& box) { return !box.text.empty(); });
    if (clear) paintClear(painter, page);
    else painter.fillRect(page, rgb(slide.color));
    if (!clear && slide.imageID && !background.isNull()) {
        const QSizeF covering = QSizeF(background.size()).scaled(page.size(), Qt::KeepAspectRatioByExpanding);
        painter.drawImage(QRectF(page.center().x() - covering.width() / 2, page.center().y() - covering.height() / 2,
                                 covering.width(), covering.height()),
                          background);
        if (anyText) painter.fillRect(page, QColor::fromRgbF(0, 0, 0, dimAlpha));
    }
    painter.translate(page.topLeft());
    painter.scale(page.width() / SlideMaker::pageWidthPixels, page.height() / SlideMaker::pageHeightPixels);
    const QColor ink = clear || SlideMaker::usesLightText(slide) ? QColor(Qt::white) : QColor(0x12, 0x12, 0x12);
    for (const TextBox& box : boxes)
        if (!box.text.empty()) SlideMaker::drawBox(painter, box, ink, clear);
    painter.restore();
}

std::vector<TextBox> SlideEditorCanvas::shownBoxes() const {
    if (!slide_) return {};
    std::vector<TextBox> boxes = slide_->effectiveBoxes();
    if (moving_)
        for (TextBox& box : boxes)
            if (box.id == moving_->id) box = *moving_;
    return boxes;
}

void SlideEditorCanvas::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), colour::window);
    const QRectF page = pageRect();
    if (!slide_) {
        painter.setPen(QPen(colour::dimText, 1, Qt::DashLine));
        painter.drawRect(page);
        painter.drawText(page, Qt::AlignCenter, "No slide chosen");
        return;
    }
    MadeSlide shown = *slide_;
    shown.boxes = shownBoxes();
    paintSlide(painter, page, shown, background_);
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (const TextBox& box : *shown.boxes) {
        const QRectF frame = boxRect(box);
        const bool chosen = selected_ && box.id == *selected_;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(chosen ? QPen(colour::next, 2) : QPen(QColor(255, 255, 255, 90), 1, Qt::DashLine));
        painter.drawRect(frame);
        if (!chosen) continue;
        painter.setBrush(Qt::white);
        painter.setPen(QPen(colour::next, 1));
        const double half = handlePixels / 2;
        for (double x : {frame.left(), frame.center().x(), frame.right()})
            for (double y : {frame.top(), frame.center().y(), frame.bottom()})
                if (x != frame.center().x() || y != frame.center().y())
                    painter.drawRect(QRectF(x - half, y - half, handlePixels, handlePixels));
    }
}

std::optional<SlideEditorCanvas::Grip> SlideEditorCanvas::gripAt(const QPointF& at) const {
    const std::vector<TextBox> boxes = shownBoxes();
    // The chosen box's edges first, so a handle wins over a box beneath.
    for (const TextBox& box : boxes) {
        if (!selected_ || box.id != *selected_) continue;
        const QRectF frame = boxRect(box);
        const double reach = handlePixels;
        if (!frame.adjusted(-reach, -reach, reach, reach).contains(at)) break;
        int edges = none;
        if (std::abs(at.x() - frame.left()) <= reach) edges |= left;
        else if (std::abs(at.x() - frame.right()) <= reach) edges |= right;
        if (std::abs(at.y() - frame.top()) <= reach) edges |= top;
        else if (std::abs(at.y() - frame.bottom()) <= reach) edges |= bottom;
        if (edges != none) return Grip{box, edges};
    }
    for (auto box = boxes.rbegin(); box != boxes.rend(); ++box)
        if (boxRect(*box).contains(at)) return Grip{*box, body};
    return std::nullopt;
}

TextBox SlideEditorCanvas::dragged(const QPointF& to) const {
    const QRectF page = pageRect();
    const double dx = (to.x() - pressedAt_.x()) / page.width();
    const double dy = (to.y() - pressedAt_.y()) / page.height();
    TextBox box = grip_->box;
    if (grip_->edges & body) {
        box.x += dx;
        box.y += dy;
        return box.clamped();
    }
    if (grip_->edges & left) {
        box.x += dx;
        box.width -= dx;
    }
    if (grip_->edges & right) box.width += dx;
    if (grip_->edges & top) {
        box.y += dy;
        box.height -= dy;
    }
    if (grip_->edges & bottom) box.height += dy;
    // A left or top edge dragged past the other stops at the smallest box.
    if (box.width < 0.05 && (grip_->edges & left)) box.x = grip_->box.x + grip_->box.width - 0.05;
    if (box.height < 0.04 && (grip_->edges & top)) box.y = grip_->box.y + grip_->box.height - 0.04;
    return box.clamped();
}

void SlideEditorCanvas::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !slide_) return;
    grip_ = gripAt(event->position());
    pressedAt_ = event->position();
    moving_.reset();
    const std::optional<Uuid> chosen = grip_ ? std::optional<Uuid>(grip_->box.id) : std::nullopt;
    if (chosen != selected_) {
        selected_ = chosen;
        update();
        if (onBoxSelected) onBoxSelected(selected_);
    }
}

void SlideEditorCanvas::mouseMoveEvent(QMouseEvent* event) {
    if (!grip_) {
        const auto hover = gripAt(event->position());
        setCursor(cursorFor(hover ? hover->edges : none));
        return;
    }
    moving_ = dragged(event->position());
    update();
}

void SlideEditorCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !grip_) return;
    const TextBox before = grip_->box;
    const TextBox after = dragged(event->position());
    grip_.reset();
    if (after == before) {
        moving_.reset();
        return;
    }
    // Shown where it was let go until the slide comes back from the model.
    if (slide_) {
        slide_->boxes = slide_->effectiveBoxes();
        for (TextBox& box : *slide_->boxes)
            if (box.id == after.id) box = after;
    }
    moving_.reset();
    update();
    if (onBoxChanged) onBoxChanged(after);
}

void SlideEditorCanvas::resizeEvent(QResizeEvent*) { update(); }

} // namespace velarion::console
