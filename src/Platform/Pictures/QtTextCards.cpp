#include "Platform/Pictures/QtTextCards.h"

#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFonts.h"
#include "Platform/Pictures/TextBlock.h"

#include <QFontMetricsF>

#include <algorithm>

namespace velarion {

namespace {

constexpr double canvasHeight = QtTextCards::heightPixels;

// The plates' dark grey.
QColor plate(double alpha) {
    return QColor::fromRgbF(0.04f, 0.04f, 0.04f, static_cast<float>(alpha));
}

QColor white(double alpha = 1) {
    return QColor::fromRgbF(1, 1, 1, static_cast<float>(alpha));
}

// The accent bar of the lower third.
const QColor accentColor(10, 132, 255);

QRectF box(double x, double y, double width, double height) {
    return fromBottom(x, y, width, height, canvasHeight);
}

QPainter& prepare(QPainter& painter) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    return painter;
}

QString single(const std::string& text) {
    // Cards hold one line each; a line feed is a space here.
    return QString::fromStdString(text).simplified();
}

} // namespace

void centeredTime(QPainter& painter, const QString& text, double points, QPointF center,
                  double maxWidthPixels) {
    QFont font = houseFont(points, FaceWeight::heavy);
    QFontMetricsF metrics(font, painter.device());
    const double width = metrics.horizontalAdvance(text);
    if (width > maxWidthPixels && width > 0) {
        font.setPointSizeF(points * maxWidthPixels / width);
        metrics = QFontMetricsF(font, painter.device());
    }
    const double drawnWidth = metrics.horizontalAdvance(text);
    const double height = metrics.height();
    const QPointF baseline(center.x() - drawnWidth / 2, center.y() - height / 2 + metrics.ascent());
    painter.setFont(font);
    painter.setPen(white());
    painter.drawText(baseline, text);
}

QImage QtTextCards::drawBanner(const QString& text) {
    QImage canvas = makeCanvas(widthPixels, heightPixels);
    QPainter painter(&canvas);
    prepare(painter);
    painter.fillRect(box(0, 0, 1920, 150), plate(0.9));
    drawLine(painter, text, houseFont(58), white(), Qt::AlignHCenter,
             box(96, 42, 1920 - 2 * 96, 150 - 2 * 42));
    return canvas;
}

QImage QtTextCards::drawLowerThird(const QString& title, const QString& subtitle) {
    QImage canvas = makeCanvas(widthPixels, heightPixels);
    QPainter painter(&canvas);
    prepare(painter);
    const double left = 96, bottom = 96, width = 1100;
    const double height = subtitle.isEmpty() ? 120 : 176;
    const double top = bottom + height;
    painter.fillRect(box(left, bottom, width, height), plate(0.86));
    painter.fillRect(box(left, bottom, 10, height), accentColor);
    drawLine(painter, title, houseFont(64, FaceWeight::black, true), white(), Qt::AlignLeft,
             box(left + 44, top - 100, width - 70, 80));
    if (!subtitle.isEmpty()) {
        drawLine(painter, subtitle, houseFont(38), white(0.82), Qt::AlignLeft,
                 box(left + 44, bottom + 30, width - 70, 50));
    }
    return canvas;
}

QImage QtTextCards::drawCountdown(const QString& label, const QString& value) {
    QImage canvas = makeCanvas(widthPixels, heightPixels);
    QPainter painter(&canvas);
    prepare(painter);
    const double left = 1304, bottom = 96, width = 520, height = 210;
    const double top = bottom + height;
    painter.fillRect(box(left, bottom, width, height), plate(0.86));
    if (!label.isEmpty()) {
        drawLine(painter, label, houseFont(30), white(0.78), Qt::AlignHCenter,
                 box(left + 36, top - 70, width - 72, 40));
    }
    // The figure sits in the plate's lower part, centred in the inner width.
    const QRectF timeBox = box(left + 36, bottom + 75, width - 72, 0);
    centeredTime(painter, value, 118, QPointF(timeBox.center().x(), timeBox.top()), width - 72);
    return canvas;
}

QImage QtTextCards::drawCountdownFull(const QString& label, const QString& value, const QImage& logo) {
    QImage canvas = makeCanvas(widthPixels, heightPixels);
    QPainter painter(&canvas);
    prepare(painter);
    const bool hasLogo = !logo.isNull() && logo.width() > 0 && logo.height() > 0;
    if (hasLogo) {
        const double scale = std::min(520.0 / logo.width(), 180.0 / logo.height());
        const double width = logo.width() * scale, height = logo.height() * scale;
        painter.drawImage(QRectF(960 - width / 2, canvasHeight - 960, width, height), logo);
    }
    if (!label.isEmpty()) {
        drawLine(painter, label, houseFont(44, FaceWeight::heavy), white(0.85), Qt::AlignHCenter,
                 box(96, 700, 1728, 60));
    }
    const double centerY = (hasLogo || !label.isEmpty()) ? 470 : 540;
    centeredTime(painter, value, 380, QPointF(960, canvasHeight - centerY), 1728);
    return canvas;
}

QImage QtTextCards::drawHolding(const QString& title, const QString& subtitle) {
    QImage canvas = makeCanvas(widthPixels, heightPixels, Qt::black);
    QPainter painter(&canvas);
    prepare(painter);
    drawLine(painter, title, houseFont(150, FaceWeight::black, true), white(), Qt::AlignHCenter,
             box(120, 470, 1680, 180));
    if (!subtitle.isEmpty()) {
        drawLine(painter, subtitle, houseFont(48, FaceWeight::medium), white(0.72),
                 Qt::AlignHCenter, box(120, 380, 1680, 70));
    }
    return canvas;
}

std::optional<StillImage> QtTextCards::banner(const std::string& text) {
    return toStill(drawBanner(single(text)));
}

std::optional<StillImage> QtTextCards::lowerThird(const std::string& title,
                                                  const std::string& subtitle) {
    return toStill(drawLowerThird(single(title), single(subtitle)));
}

std::optional<StillImage> QtTextCards::countdown(const std::string& label,
                                                 const std::string& value) {
    return toStill(drawCountdown(single(label), single(value)));
}

std::optional<StillImage> QtTextCards::countdownFull(const std::string& label,
                                                     const std::string& value,
                                                     const std::optional<StillImage>& logo) {
    return toStill(drawCountdownFull(single(label), single(value), logo ? toQImage(*logo) : QImage()));
}

std::optional<StillImage> QtTextCards::holding(const std::string& title,
                                               const std::string& subtitle) {
    return toStill(drawHolding(single(title), single(subtitle)));
}

} // namespace velarion
