// The Stage Display picture: what the speaker sees, on 1280 by 720.

#include "Platform/Pictures/OutputPictures.h"

#include "LiveModel/TimeText.h"
#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFile.h"
#include "Platform/Pictures/PictureFonts.h"
#include "Platform/Pictures/TextBlock.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace velarion::OutputPictures {

namespace {

constexpr double height = stageHeightPixels;
constexpr double margin = 32;

const QColor systemRed(255, 59, 48);
const QColor systemOrange(255, 149, 0);
const QColor frameGrey(38, 38, 40);
// The largest size the stage shows a slide page at.
const QSize slideSize(740, 416);

QRectF box(double x, double y, double width, double heightPixels) {
    return fromBottom(x, y, width, heightPixels, height);
}

// A time figure as large as `points`, smaller when it wouldn't fit the box.
void figure(QPainter& painter, const QString& text, double points, const QColor& color,
            Qt::Alignment alignment, const QRectF& rect) {
    QFont font = houseFont(points, FaceWeight::heavy);
    const double width = QFontMetricsF(font, painter.device()).horizontalAdvance(text);
    if (width > rect.width()) font.setPointSizeF(points * rect.width() / width);
    drawLine(painter, text, font, color, alignment, rect);
}

void slideFrame(QPainter& painter, const std::optional<QImage>& picture, const QRectF& rect) {
    painter.fillRect(rect, frameGrey);
    if (!picture || picture->isNull()) return;
    const QSizeF fitted = QSizeF(picture->size()).scaled(rect.size(), Qt::KeepAspectRatio);
    painter.drawImage(QRectF(rect.center().x() - fitted.width() / 2,
                             rect.center().y() - fitted.height() / 2, fitted.width(), fitted.height()),
                      *picture);
}

QColor timerColor(const TimerState& timer) {
    if (timer.isOverrun) return systemRed;
    if (timer.isWarning) return systemOrange;
    return Qt::white;
}

QString timerText(const TimerState& timer) {
    return QString::fromStdString(
        TimeText::duration(TimeText::timerSeconds(timer.valueSeconds, timer.isCountUp)));
}

QString timerWord(const TimerState& timer) {
    if (timer.isPaused) return QStringLiteral("PAUSED");
    if (timer.isOverrun) return QStringLiteral("OVER TIME");
    if (timer.isCountUp) return QStringLiteral("ELAPSED");
    return QStringLiteral("REMAINING");
}

QString upper(const std::string& text) {
    return QString::fromStdString(text).toUpper();
}

void drawSlides(QPainter& painter, const StageInputs& inputs, const SlidePicture& slidePicture) {
    const ConfidenceState& confidence = inputs.confidence;
    QString counter = QStringLiteral("ON SCREEN ") + QString::number(*confidence.slideNumber);
    if (confidence.slideCount) counter += QStringLiteral(" / ") + QString::number(*confidence.slideCount);
    drawLine(painter, counter, houseFont(18, FaceWeight::bold), Qt::white, Qt::AlignLeft,
         box(margin, 602, 750, 28));
    auto picture = [&](const std::optional<std::string>& path) -> std::optional<QImage> {
        if (!path || !slidePicture) return std::nullopt;
        return slidePicture(*path);
    };
    slideFrame(painter, picture(confidence.currentSlide), box(margin, 164, 740, 416));
    drawLine(painter, QStringLiteral("NEXT"), houseFont(18, FaceWeight::bold), Qt::white, Qt::AlignLeft,
         box(808, 602, 440, 28));
    slideFrame(painter, picture(confidence.nextSlide), box(808, 345, 440, 247));
    if (!confidence.notes.empty()) {
        drawText(painter, QString::fromStdString(confidence.notes), TextStyle{houseFont(23)},
                 box(808, 110, 440, 216), VerticalPlacement::top);
    }
    if (inputs.timer) {
        figure(painter, timerText(*inputs.timer), 48, timerColor(*inputs.timer), Qt::AlignLeft,
               box(margin, 88, 740, 64));
    }
}

void drawTimer(QPainter& painter, const TimerState& timer) {
    drawLine(painter, upper(timer.name), houseFont(30, FaceWeight::bold), Qt::white, Qt::AlignHCenter,
         box(margin, 550, 1216, 56));
    figure(painter, timerText(timer), 210, timerColor(timer), Qt::AlignHCenter, box(24, 250, 1232, 254));
    drawLine(painter, timerWord(timer), houseFont(26, FaceWeight::bold), timerColor(timer),
         Qt::AlignHCenter, box(margin, 180, 1216, 56));
}

void drawStandby(QPainter& painter, const StageInputs& inputs, const QString& clock) {
    figure(painter, clock, 170, Qt::white, Qt::AlignHCenter, box(margin, 300, 1216, 220));
    drawLine(painter, QStringLiteral("UP NEXT"), houseFont(22, FaceWeight::bold), Qt::white,
         Qt::AlignHCenter, box(margin, 244, 1216, 42));
    const QString next = inputs.nextCueName ? QString::fromStdString(*inputs.nextCueName)
                                            : QStringLiteral("Standby");
    drawLine(painter, next, houseFont(42, FaceWeight::bold), Qt::white, Qt::AlignHCenter,
         box(margin, 154, 1216, 82));
}

} // namespace

SpeakerLayout speakerLayout(const ConfidenceState& confidence, const std::optional<TimerState>& timer) {
    if (confidence.slideNumber) return SpeakerLayout::slides;
    if (timer) return SpeakerLayout::timer;
    return SpeakerLayout::standby;
}

std::string wallClockText(double wallSeconds, const Calendar& calendar) {
    const double local = std::floor(wallSeconds) + static_cast<double>(calendar.utcOffsetSeconds(wallSeconds));
    const auto secondOfDay = static_cast<long long>(local - 86400 * std::floor(local / 86400));
    const long long hour = secondOfDay / 3600, minute = secondOfDay / 60 % 60, second = secondOfDay % 60;
    const long long hour12 = hour % 12 == 0 ? 12 : hour % 12;
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld %s", hour12, minute, second, hour < 12 ? "AM" : "PM");
    return text;
}

QImage stage(const StageInputs& inputs, const Calendar& calendar, const SlidePicture& slidePicture) {
    QImage canvas = makeCanvas(stageWidthPixels, stageHeightPixels, Qt::black);
    QPainter painter(&canvas);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    const QString clock = QString::fromStdString(wallClockText(inputs.wallSeconds, calendar));
    drawLine(painter, upper(inputs.confidence.sectionName), houseFont(25, FaceWeight::bold), Qt::white,
         Qt::AlignLeft, box(margin, 648, 780, 40));
    drawLine(painter, clock, houseFont(30, FaceWeight::medium), Qt::white, Qt::AlignRight,
         box(1000, 644, 248, 48));

    switch (speakerLayout(inputs.confidence, inputs.timer)) {
    case SpeakerLayout::slides:
        drawSlides(painter, inputs, slidePicture);
        break;
    case SpeakerLayout::timer:
        drawTimer(painter, *inputs.timer);
        break;
    case SpeakerLayout::standby:
        drawStandby(painter, inputs, clock);
        break;
    }

    if (inputs.confidence.stageMessage) {
        painter.fillRect(box(0, 0, stageWidthPixels, 78), systemOrange);
        drawLine(painter, QString::fromStdString(*inputs.confidence.stageMessage),
             houseFont(32, FaceWeight::bold), Qt::black, Qt::AlignHCenter, box(margin, 15, 1216, 56));
    }
    return canvas;
}

std::optional<QImage> StageSlidePictures::operator()(const std::string& path) {
    for (auto it = recent_.begin(); it != recent_.end(); ++it) {
        if (it->first != path) continue;
        recent_.splice(recent_.begin(), recent_, it);
        return recent_.front().second;
    }
    // A page that can't be read now may be written a moment later: only
    // pictures are kept.
    std::optional<QImage> picture = readPicture(path).picture;
    if (!picture) return std::nullopt;
    if ((picture->width() > slideSize.width() || picture->height() > slideSize.height()))
        picture = picture->scaled(slideSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    recent_.emplace_front(path, picture);
    if (recent_.size() > capacity) recent_.pop_back();
    return picture;
}

} // namespace velarion::OutputPictures
