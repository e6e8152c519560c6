#include "GoldenPicture.h"

#include <QDir>
#include <QImageReader>
#include <QLinearGradient>
#include <QPainter>

#include <cstdlib>
#include <cstring>

namespace velarion::testing {

namespace {

// A pixel differs when a channel is off by more than this much...
constexpr int channelTolerance = 24;
// ...and a picture differs when more than this share of pixels do.
constexpr double differingShareTolerance = 0.001;

QString goldenPath(const std::string& name, const char* suffix) {
    return QDir(QStringLiteral(VELARION_GOLDEN_DIR)).filePath(QString::fromStdString(name) + suffix);
}

bool updating() {
    const char* flag = std::getenv("VELARION_UPDATE_GOLDEN");
    return flag != nullptr && std::strcmp(flag, "1") == 0;
}

} // namespace

int channelDifference(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
}

::testing::AssertionResult matchesGolden(const QImage& actualImage, const std::string& name) {
    const QImage actual = actualImage.convertToFormat(QImage::Format_ARGB32);
    const QString expectedPath = goldenPath(name, ".png");
    const QString actualPath = goldenPath(name, ".actual.png");
    if (updating()) {
        if (!actual.save(expectedPath, "png", 0)) {
            return ::testing::AssertionFailure() << "couldn't write " << expectedPath.toStdString();
        }
        QFile::remove(actualPath);
        return ::testing::AssertionSuccess();
    }
    const QImage expected = QImage(expectedPath).convertToFormat(QImage::Format_ARGB32);
    auto failure = [&] {
        actual.save(actualPath, "png");
        return ::testing::AssertionFailure();
    };
    if (expected.isNull())
        return failure() << "no golden picture " << expectedPath.toStdString()
                         << " (VELARION_UPDATE_GOLDEN=1 makes it)";
    if (expected.size() != actual.size())
        return failure() << name << " is " << actual.width() << "x" << actual.height()
                         << ", the golden " << expected.width() << "x" << expected.height();
    long long differing = 0;
    int worst = 0;
    for (int y = 0; y < actual.height(); ++y) {
        const auto* a = reinterpret_cast<const QRgb*>(actual.constScanLine(y));
        const auto* e = reinterpret_cast<const QRgb*>(expected.constScanLine(y));
        for (int x = 0; x < actual.width(); ++x) {
            const int difference = channelDifference(a[x], e[x]);
            worst = std::max(worst, difference);
            if (difference > channelTolerance) ++differing;
        }
    }
    const double share = static_cast<double>(differing) / (actual.width() * static_cast<double>(actual.height()));
    if (share > differingShareTolerance)
        return failure() << name << ": " << differing << " pixels differ (worst by " << worst
                         << "); see " << actualPath.toStdString();
    QFile::remove(actualPath);
    return ::testing::AssertionSuccess();
}

QImage generatedPhoto(int width, int height) {
    QImage photo(width, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&photo);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, width, height);
    sky.setColorAt(0, QColor(250, 190, 90));
    sky.setColorAt(1, QColor(40, 50, 120));
    painter.fillRect(photo.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(30, 60, 40));
    painter.drawEllipse(QPointF(width * 0.25, height * 1.1), width * 0.5, height * 0.45);
    painter.setBrush(QColor(255, 250, 220));
    painter.drawEllipse(QPointF(width * 0.7, height * 0.3), height * 0.1, height * 0.1);
    return photo;
}

QRect inkBounds(const QImage& pictureImage, QRgb background, int threshold) {
    const QImage picture = pictureImage.convertToFormat(QImage::Format_ARGB32);
    QRect bounds;
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x)
            if (channelDifference(row[x], background) > threshold) bounds |= QRect(x, y, 1, 1);
    }
    return bounds;
}

} // namespace velarion::testing
