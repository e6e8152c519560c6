#include "OutputsTestSupport.h"

#include <QDir>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace velarion::testing {

QImage toImage(const RasterImage& raster) {
    return QImage(raster.bgra.data(), raster.width, raster.height, raster.width * 4,
                  QImage::Format_ARGB32_Premultiplied)
        .copy();
}

PictureDifference difference(const QImage& a, const QImage& b, int levels) {
    const QImage left = a.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage right = b.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    PictureDifference result;
    for (int y = 0; y < left.height(); ++y) {
        const auto* p = reinterpret_cast<const std::uint8_t*>(left.constScanLine(y));
        const auto* q = reinterpret_cast<const std::uint8_t*>(right.constScanLine(y));
        for (int x = 0; x < left.width() * 4; x += 4) {
            int worst = 0;
            for (int c = 0; c < 4; ++c) worst = std::max(worst, std::abs(p[x + c] - q[x + c]));
            result.worst = std::max(result.worst, worst);
            if (worst > levels && result.differing++ == 0) result.first = QPoint(x / 4, y);
        }
    }
    return result;
}

::testing::AssertionResult matchesGolden(const QImage& actual, const std::string& name) {
    const QDir folder(QStringLiteral(VELARION_OUTPUTS_GOLDEN_DIR));
    const QString expectedPath = folder.filePath(QString::fromStdString(name) + ".png");
    const QString actualPath = folder.filePath(QString::fromStdString(name) + ".actual.png");
    const char* update = std::getenv("VELARION_UPDATE_GOLDEN");
    if (update != nullptr && std::strcmp(update, "1") == 0) {
        if (!actual.save(expectedPath, "png")) return ::testing::AssertionFailure() << "couldn't write the golden";
        QFile::remove(actualPath);
        return ::testing::AssertionSuccess();
    }
    const QImage expected(expectedPath);
    if (expected.size() != actual.size()) {
        actual.save(actualPath, "png");
        return ::testing::AssertionFailure() << "no golden of that size at " << expectedPath.toStdString();
    }
    const PictureDifference found = difference(actual, expected);
    if (found.differing == 0) {
        QFile::remove(actualPath);
        return ::testing::AssertionSuccess();
    }
    actual.save(actualPath, "png");
    return ::testing::AssertionFailure() << name << ": " << found.differing << " pixels differ, by up to "
                                         << found.worst << " levels, first at (" << found.first.x() << ", "
                                         << found.first.y() << "); see " << actualPath.toStdString();
}

} // namespace velarion::testing
