#include "Console/KindIcons.h"

#include "Console/ConsoleTheme.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace velarion::console {

namespace {

struct KindLook {
    QColor colour;
    QChar letter;
};

KindLook lookOf(CueKindCase kind) {
    switch (kind) {
    case CueKindCase::slides: return {QColor(0x5b, 0x8d, 0xd9), 'S'};
    case CueKindCase::video: return {QColor(0xb0, 0x5b, 0xd9), 'V'};
    case CueKindCase::image: return {QColor(0x4f, 0xb3, 0xb3), 'I'};
    case CueKindCase::audio: return {QColor(0x4f, 0xb3, 0x6a), 'A'};
    case CueKindCase::playlist: return {QColor(0x3f, 0x9a, 0x5a), 'P'};
    case CueKindCase::spotifyTrack:
    case CueKindCase::spotifyPlaylist: return {QColor(0x1d, 0xb9, 0x54), 'M'};
    case CueKindCase::musicTrack: return {QColor(0xe0, 0x4f, 0x6a), 'M'};
    case CueKindCase::timer: return {QColor(0xd8, 0x9a, 0x28), 'T'};
    case CueKindCase::message: return {QColor(0xd9, 0x7b, 0x4f), 'B'};
    case CueKindCase::graphic: return {QColor(0x8a, 0x8f, 0xd9), 'L'};
    case CueKindCase::clear: return {QColor(0x80, 0x86, 0x90), 'X'};
    }
    return {Qt::gray, '?'};
}

} // namespace

std::vector<QIcon> makeKindIcons(int sizePixels) {
    std::vector<QIcon> icons;
    for (int kind = 0; kind <= static_cast<int>(CueKindCase::clear); ++kind) {
        const KindLook look = lookOf(static_cast<CueKindCase>(kind));
        QPixmap pixmap(sizePixels, sizePixels);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.colour);
        painter.drawRoundedRect(QRectF(0.5, 0.5, sizePixels - 1, sizePixels - 1), 4, 4);
        QFont font = painter.font();
        font.setPixelSize(sizePixels * 2 / 3);
        font.setBold(true);
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.drawText(QRect(0, 0, sizePixels, sizePixels), Qt::AlignCenter, QString(look.letter));
        painter.end();
        icons.emplace_back(pixmap);
    }
    return icons;
}

QImage drawAppIcon(int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double s = size;
    // A dark rounded tile with a green GO triangle under a stage light's arc.
    QLinearGradient tile(0, 0, 0, s);
    tile.setColorAt(0, QColor(0x2a, 0x2e, 0x36));
    tile.setColorAt(1, QColor(0x12, 0x14, 0x18));
    painter.setPen(Qt::NoPen);
    painter.setBrush(tile);
    painter.drawRoundedRect(QRectF(s * 0.04, s * 0.04, s * 0.92, s * 0.92), s * 0.2, s * 0.2);
    QPainterPath triangle;
    triangle.moveTo(s * 0.36, s * 0.30);
    triangle.lineTo(s * 0.74, s * 0.52);
    triangle.lineTo(s * 0.36, s * 0.74);
    triangle.closeSubpath();
    painter.setBrush(colour::go);
    painter.drawPath(triangle);
    QPen arc(colour::safe, std::max(1.0, s * 0.05), Qt::SolidLine, Qt::RoundCap);
    painter.setPen(arc);
    painter.setBrush(Qt::NoBrush);
    painter.drawArc(QRectF(s * 0.18, s * 0.16, s * 0.64, s * 0.64), 30 * 16, 120 * 16);
    return image;
}

} // namespace velarion::console
