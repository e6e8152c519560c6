// Pictures that help the operator find and check a screen: identification
// and the test patterns.

#include "Platform/Pictures/OutputPictures.h"

#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFonts.h"
#include "Platform/Pictures/TextBlock.h"

#include <QPainter>

namespace velarion::OutputPictures {

namespace {

// Identification is laid out on 1280 by 720 and drawn half as large again.
constexpr double identifyScale = 1.5;
constexpr double layoutHeight = 720;

// Pitch of the grid pattern: 32 by 18 cells, with lines through the centre.
constexpr int gridPitchPixels = 40;

QColor roleColor(ScreenRole role) {
    switch (role) {
    case ScreenRole::audience:
        return QColor(0, 94, 214);
    case ScreenRole::stage:
        return QColor(214, 72, 0);
    case ScreenRole::stream:
        return QColor(124, 46, 196);
    case ScreenRole::lobby:
        return QColor(18, 138, 74);
    }
    return QColor(0, 94, 214);
}

QRectF box(double x, double y, double width, double height) {
    return fromBottom(x, y, width, height, layoutHeight);
}

void drawGrid(QPainter& painter) {
    const int width = patternWidthPixels, height = patternHeightPixels;
    painter.setPen(QPen(QColor(150, 150, 150), 1));
    for (int x = gridPitchPixels; x < width; x += gridPitchPixels)
        painter.drawLine(QPointF(x + 0.5, 0), QPointF(x + 0.5, height));
    for (int y = gridPitchPixels; y < height; y += gridPitchPixels)
        painter.drawLine(QPointF(0, y + 0.5), QPointF(width, y + 0.5));
    painter.setPen(QPen(Qt::white, 3));
    painter.drawLine(QPointF(width / 2.0, 0), QPointF(width / 2.0, height));
    painter.drawLine(QPointF(0, height / 2.0), QPointF(width, height / 2.0));
    painter.drawRect(QRectF(1.5, 1.5, width - 3, height - 3));
    const double radius = height / 2.0 - gridPitchPixels;
    painter.drawEllipse(QPointF(width / 2.0, height / 2.0), radius, radius);
}

void drawColorBars(QPainter& painter) {
    // Bars at 75 percent: white, yellow, cyan, green, magenta, red, blue.
    static const QColor bars[] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                                  {191, 0, 191},   {191, 0, 0},   {0, 0, 191}};
    constexpr int count = static_cast<int>(std::size(bars));
    for (int i = 0; i < count; ++i) {
        // Whole-pixel edges that end exactly at the right border.
        const int left = patternWidthPixels * i / count;
        const int right = patternWidthPixels * (i + 1) / count;
        painter.fillRect(QRect(left, 0, right - left, patternHeightPixels), bars[i]);
    }
}

} // namespace

QImage identify(const std::string& name, ScreenRole role) {
    QImage canvas = makeCanvas(identifyWidthPixels, identifyHeightPixels, roleColor(role));
    QPainter painter(&canvas);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.scale(identifyScale, identifyScale);
    drawLine(painter, QStringLiteral("Identify \u00B7 5 sec"), houseFont(22, FaceWeight::bold),
         QColor(255, 255, 255, 200), Qt::AlignRight, box(48, 620, 1184, 50));
    drawLine(painter, QString::fromUtf8(toString(role).data(), static_cast<qsizetype>(toString(role).size())),
         houseFont(40, FaceWeight::medium), Qt::white, Qt::AlignLeft, box(48, 470, 1184, 90));
    drawLine(painter, QString::fromStdString(name), houseFont(90, FaceWeight::black), Qt::white,
         Qt::AlignLeft, box(48, 250, 1184, 190));
    drawLine(painter, QStringLiteral("Velarion \u00B7 Screen identification"), houseFont(26),
         QColor(255, 255, 255, 220), Qt::AlignLeft, box(48, 105, 1184, 62));
    return canvas;
}

QImage pattern(OutputTestPattern pattern) {
    switch (pattern) {
    case OutputTestPattern::white:
        return makeCanvas(patternWidthPixels, patternHeightPixels, Qt::white);
    case OutputTestPattern::black:
        return makeCanvas(patternWidthPixels, patternHeightPixels, Qt::black);
    case OutputTestPattern::grid: {
        QImage canvas = makeCanvas(patternWidthPixels, patternHeightPixels, Qt::black);
        QPainter painter(&canvas);
        painter.setRenderHint(QPainter::Antialiasing);
        drawGrid(painter);
        return canvas;
    }
    case OutputTestPattern::colorBars: {
        QImage canvas = makeCanvas(patternWidthPixels, patternHeightPixels, Qt::black);
        QPainter painter(&canvas);
        drawColorBars(painter);
        return canvas;
    }
    }
    return makeCanvas(patternWidthPixels, patternHeightPixels, Qt::black);
}

} // namespace velarion::OutputPictures
