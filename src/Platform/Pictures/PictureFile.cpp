#include "Platform/Pictures/PictureFile.h"

#include "Platform/Pictures/Canvas.h"

#include <QFile>
#include <QImageIOHandler>
#include <QImageReader>

#include <system_error>

namespace velarion {

namespace {

std::string quoted(const std::filesystem::path& path) {
    return "\xE2\x80\x9C" + path.filename().string() + "\xE2\x80\x9D";
}

// The size the picture is decoded at: its own, or scaled to fit the limit.
QSize fittedSize(QSize size) {
    if (size.width() <= maxPictureWidthPixels && size.height() <= maxPictureHeightPixels) return size;
    return size.scaled(maxPictureWidthPixels, maxPictureHeightPixels, Qt::KeepAspectRatio)
        .expandedTo(QSize(1, 1));
}

bool swapsSides(QImageIOHandler::Transformations transformation) {
    return transformation.testFlag(QImageIOHandler::TransformationRotate90);
}

} // namespace

PictureRead readPicture(const std::filesystem::path& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return {std::nullopt, "The picture " + quoted(path) +
                                  " can't be found; it may have been moved or deleted."};
    }
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::ReadOnly)) {
        return {std::nullopt, "The picture " + quoted(path) +
                                  " can't be read; check that you may open it."};
    }
    QImageReader reader(&file);
    reader.setAutoTransform(true);
    reader.setDecideFormatFromContent(true);
    const QSize stored = reader.size();
    if (stored.isValid()) {
        // Scaling while decoding keeps a huge photograph from ever being
        // held at full size; the limit applies to the upright picture.
        const bool swapped = swapsSides(reader.transformation());
        const QSize upright = swapped ? stored.transposed() : stored;
        const QSize fitted = fittedSize(upright);
        if (fitted != upright) reader.setScaledSize(swapped ? fitted.transposed() : fitted);
    }
    QImage picture = reader.read();
    if (picture.isNull()) {
        return {std::nullopt, quoted(path) +
                                  " isn't a picture that can be opened; use PNG, JPEG, WebP, "
                                  "TIFF, GIF or BMP."};
    }
    // Formats that don't report their size up front are scaled afterwards.
    const QSize fitted = fittedSize(picture.size());
    if (fitted != picture.size())
        picture = picture.scaled(fitted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (picture.format() != QImage::Format_ARGB32_Premultiplied)
        picture.convertTo(QImage::Format_ARGB32_Premultiplied);
    return {std::move(picture), {}};
}

std::optional<StillImage> QtImageLoader::load(const std::string& path) {
    PictureRead read = readPicture(path);
    if (!read.picture) return std::nullopt;
    return toStill(*read.picture);
}

} // namespace velarion
