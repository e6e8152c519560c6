#include "Platform/Pictures/TextBlock.h"

#include <QFontMetricsF>
#include <QTextOption>

#include <cmath>

namespace velarion {

namespace {

// A line "fits" with this much slack, against rounding in the metrics.
constexpr double fitSlackPixels = 0.5;

QTextOption optionFor(const TextStyle& style) {
    QTextOption option(style.alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

} // namespace

TextBlock::TextBlock(const QString& text, TextStyle style, double widthPixels, QPaintDevice* device)
    : paragraphs_(text.split(QLatin1Char('\n'))), style_(std::move(style)),
      width_(widthPixels), device_(device) {
    const QTextOption option = optionFor(style_);
    double y = 0;
    for (int p = 0; p < paragraphs_.size(); ++p) {
        auto layout = std::make_unique<QTextLayout>(paragraphs_[p], style_.font, device_);
        layout->setTextOption(option);
        layout->setCacheEnabled(true);
        layout->beginLayout();
        for (int l = 0;; ++l) {
            QTextLine line = layout->createLine();
            if (!line.isValid()) break;
            line.setLineWidth(width_);
            if (!lines_.empty()) y += style_.lineSpacingPoints;
            line.setPosition(QPointF(0, 0));
            lines_.push_back({p, l, y, line.height()});
            naturalWidth_ = std::max(naturalWidth_, line.naturalTextWidth());
            y += line.height();
        }
        layout->endLayout();
        layouts_.push_back(std::move(layout));
    }
    height_ = y;
}

QString TextBlock::remainderFrom(const Line& line) const {
    const QTextLine textLine = layouts_[line.paragraph]->lineAt(line.lineInParagraph);
    QString rest = paragraphs_[line.paragraph].mid(textLine.textStart());
    for (int p = line.paragraph + 1; p < paragraphs_.size(); ++p)
        rest += QLatin1Char(' ') + paragraphs_[p];
    return rest.simplified();
}

void TextBlock::draw(QPainter& painter, const QRectF& rect) const {
    std::size_t visible = 0;
    while (visible < lines_.size() &&
           lines_[visible].top + lines_[visible].height <= rect.height() + fitSlackPixels)
        ++visible;
    if (visible == 0 && !lines_.empty()) visible = 1;

    painter.save();
    painter.setPen(style_.color);
    painter.setFont(style_.font);
    for (std::size_t i = 0; i < visible; ++i) {
        const Line& line = lines_[i];
        const QPointF origin(rect.left(), rect.top() + line.top);
        if (i + 1 == visible && visible < lines_.size()) {
            // The last line that fits stands for everything after it.
            const QFontMetricsF metrics(style_.font, device_);
            const QString elided = metrics.elidedText(remainderFrom(line) + QChar(0x2026),
                                                      Qt::ElideRight, width_);
            QTextLayout last(elided, style_.font, device_);
            last.setTextOption(optionFor(style_));
            last.beginLayout();
            QTextLine only = last.createLine();
            only.setLineWidth(width_);
            only.setPosition(QPointF(0, 0));
            last.endLayout();
            last.draw(&painter, origin);
        } else {
            layouts_[line.paragraph]->lineAt(line.lineInParagraph).draw(&painter, origin);
        }
    }
    painter.restore();
}

void drawLine(QPainter& painter, const QString& text, const QFont& font, const QColor& color,
              Qt::Alignment alignment, const QRectF& box) {
    const QFontMetricsF metrics(font, painter.device());
    painter.save();
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(box, static_cast<int>(alignment | Qt::AlignVCenter | Qt::TextSingleLine),
                     metrics.elidedText(text, Qt::ElideRight, box.width()));
    painter.restore();
}

void drawText(QPainter& painter, const QString& text, const TextStyle& style, const QRectF& box,
              VerticalPlacement placement) {
    const TextBlock block(text, style, box.width(), painter.device());
    QRectF rect = box;
    if (placement == VerticalPlacement::centered) {
        const double height = std::min(std::ceil(block.heightPixels()), box.height());
        rect = QRectF(box.left(), box.center().y() - height / 2, box.width(), height);
    }
    block.draw(painter, rect);
}

} // namespace velarion
