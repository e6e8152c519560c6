#include "Platform/Pictures/SlideMaker.h"

#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFonts.h"
#include "Platform/Pictures/TextBlock.h"
#include "Platform/Pictures/TextShadow.h"

#include <QFontDatabase>

#include <algorithm>
#include <cmath>

namespace velarion::SlideMaker {

namespace {

// Photographs under text are darkened so the text reads.
constexpr double dimAlpha = 0.38;
// Default ink on a light slide: a near-black grey.
constexpr double darkInkGrey = 0.07;
// Below this luminance a slide takes white text.
constexpr double lightTextLuminance = 0.55;

// Lyrics over video: a soft shadow under white text.
const Shadow clearSlideShadow{QPointF(0, 3), 14, QColor::fromRgbF(0, 0, 0, 0.85f)};

// Room around the boxes of a clear slide for overflowing text.
constexpr int shadowRoomPixels = 120;

QRectF boxRect(const TextBox& box) {
    return QRectF(box.x * pageWidthPixels, box.y * pageHeightPixels, box.width * pageWidthPixels,
                  box.height * pageHeightPixels);
}

bool hasText(const TextBox& box) {
    return !box.text.empty();
}

Qt::Alignment alignment(TextAlign align) {
    switch (align) {
    case TextAlign::left:
        return Qt::AlignLeft;
    case TextAlign::center:
        return Qt::AlignHCenter;
    case TextAlign::right:
        return Qt::AlignRight;
    }
    return Qt::AlignLeft;
}

// Each non-empty line trimmed and marked as a bullet point.
QString bulleted(const QString& text) {
    QStringList lines;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty()) lines << QStringLiteral("\u2022 ") + trimmed;
    }
    return lines.join(QLatin1Char('\n'));
}

// The picture scaled to cover the page, centred, its overflow cut off.
void drawCovering(QPainter& painter, const QImage& picture) {
    if (picture.isNull()) return;
    const QSizeF page(pageWidthPixels, pageHeightPixels);
    const QSizeF covering = QSizeF(picture.size()).scaled(page, Qt::KeepAspectRatioByExpanding);
    const QRectF target((page.width() - covering.width()) / 2,
                        (page.height() - covering.height()) / 2, covering.width(),
                        covering.height());
    painter.drawImage(target, picture);
}

// Alternative designs of the house face, by the names the document uses.
std::optional<QString> designFamily(const std::string& name) {
    if (name == "New York") return QStringLiteral("Noto Serif");
    if (name == "SF Rounded") return QStringLiteral("Quicksand");
    if (name == "SF Mono") return QStringLiteral("Noto Sans Mono");
    return std::nullopt;
}

} // namespace

bool usesLightText(const MadeSlide& slide) {
    if (slide.imageID) return true;
    const double red = ((slide.color >> 16) & 0xFF) / 255.0;
    const double green = ((slide.color >> 8) & 0xFF) / 255.0;
    const double blue = (slide.color & 0xFF) / 255.0;
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue < lightTextLuminance;
}

QFont font(const std::optional<std::string>& name, double size, bool bold) {
    const FaceWeight weight = bold ? FaceWeight::bold : FaceWeight::regular;
    if (!name) return houseFont(size, weight);
    const QString family =
        designFamily(*name).value_or(QString::fromStdString(*name));
    if (!QFontDatabase::hasFamily(family)) return houseFont(size, weight);
    return pictureFont(family, size, bold ? QFont::Bold : QFont::Normal);
}

void drawBox(QPainter& painter, const TextBox& box, const QColor& ink, bool overrideColor) {
    const QRectF rect = boxRect(box);
    TextStyle style;
    style.font = font(box.font, box.size, box.bold);
    style.color = (box.color && !overrideColor) ? colorFromRGB(*box.color) : ink;
    style.alignment = alignment(box.align);
    QString text = QString::fromStdString(box.text);
    if (box.bullets) {
        style.lineSpacingPoints = 0.3 * box.size;
        text = bulleted(text);
    }
    drawText(painter, text, style, rect,
             box.bullets ? VerticalPlacement::top : VerticalPlacement::centered);
}

QImage render(const MadeSlide& slide, const std::optional<QImage>& background) {
    const std::vector<TextBox> boxes = slide.effectiveBoxes();
    const bool anyText = std::any_of(boxes.begin(), boxes.end(), hasText);

    if (slide.isClear.value_or(false)) {
        QImage page = makeCanvas(pageWidthPixels, pageHeightPixels);
        QPainter painter(&page);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        if (anyText) {
            // Text may run a little past its box (a first line taller than
            // the box is still drawn); the shadow's layer leaves room.
            QRect area;
            for (const TextBox& box : boxes)
                if (hasText(box)) area |= boxRect(box).toAlignedRect();
            area.adjust(-shadowRoomPixels, -shadowRoomPixels, shadowRoomPixels, shadowRoomPixels);
            drawWithShadow(painter, clearSlideShadow, area, [&](QPainter& layer) {
                for (const TextBox& box : boxes)
                    if (hasText(box)) drawBox(layer, box, Qt::white, true);
            });
        }
        return page;
    }

    QImage page = makeCanvas(pageWidthPixels, pageHeightPixels, colorFromRGB(slide.color));
    QPainter painter(&page);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    if (background) {
        drawCovering(painter, *background);
        if (anyText) painter.fillRect(page.rect(), QColor::fromRgbF(0, 0, 0, dimAlpha));
    }
    const QColor ink = usesLightText(slide)
                           ? QColor(Qt::white)
                           : QColor::fromRgbF(darkInkGrey, darkInkGrey, darkInkGrey);
    for (const TextBox& box : boxes)
        if (hasText(box)) drawBox(painter, box, ink);
    return page;
}

} // namespace velarion::SlideMaker
