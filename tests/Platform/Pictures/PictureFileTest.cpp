#include "Platform/Pictures/PictureFile.h"
#include "TempFolder.h"

#include <QBuffer>
#include <QImageWriter>

#include <gtest/gtest.h>

#include <fstream>

namespace velarion {
namespace {

// Left half red, right half blue: which way up it came out is visible.
QImage halves(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::blue);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width / 2; ++x) image.setPixel(x, y, qRgb(255, 0, 0));
    return image;
}

void writeBytes(const std::filesystem::path& path, const QByteArray& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.constData(), bytes.size());
}

QByteArray encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    EXPECT_TRUE(writer.write(image)) << format << ": " << writer.errorString().toStdString();
    return bytes;
}

// A JPEG carrying an EXIF orientation tag (6: turn 90 degrees clockwise).
QByteArray jpegWithOrientation(const QImage& image, quint16 orientation) {
    const QByteArray jpeg = encoded(image, "jpeg");
    QByteArray exif("Exif\0\0", 6);
    exif += QByteArray("II\x2A\x00\x08\x00\x00\x00", 8); // little-endian TIFF, IFD at 8
    exif += QByteArray("\x01\x00", 2);                   // one entry
    exif += QByteArray("\x12\x01\x03\x00\x01\x00\x00\x00", 8); // Orientation, SHORT, 1
    exif += char(orientation & 0xFF);
    exif += char(orientation >> 8);
    exif += QByteArray("\x00\x00\x00\x00\x00\x00", 6); // padding, no next IFD
    QByteArray segment("\xFF\xE1", 2);
    const int length = static_cast<int>(exif.size()) + 2;
    segment += char(length >> 8);
    segment += char(length & 0xFF);
    segment += exif;
    return jpeg.left(2) + segment + jpeg.mid(2); // right after the start marker
}

// A two-frame GIF of 8 by 8, red then blue, made by hand since Qt reads GIF
// but can't write it: a four-colour table, then per frame a 0.1 s control
// block, an image block and LZW data kept at three-bit codes by a clear code
// before every pair of pixels.
QByteArray twoFrameGIF() {
    static const char bytes[] =
        "\x47\x49\x46\x38\x39\x61\x08\x00\x08\x00\x91\x00\x00\xFF\x00\x00\x00\x00\xFF\x00\xFF\x00\x00\x00"
        "\x00\x21\xF9\x04\x00\x0A\x00\x00\x00\x2C\x00\x00\x00\x00\x08\x00\x08\x00\x00\x02\x25\x04\x08\x10"
        "\x20\x40\x80\x00\x01\x02\x04\x08\x10\x20\x40\x80\x00\x01\x02\x04\x08\x10\x20\x40\x80\x00\x01\x02"
        "\x04\x08\x10\x20\x40\x80\x00\x01\x02\x05\x00\x21\xF9\x04\x00\x0A\x00\x00\x00\x2C\x00\x00\x00\x00"
        "\x08\x00\x08\x00\x00\x02\x25\x4C\x98\x30\x61\xC2\x84\x09\x13\x26\x4C\x98\x30\x61\xC2\x84\x09\x13"
        "\x26\x4C\x98\x30\x61\xC2\x84\x09\x13\x26\x4C\x98\x30\x61\xC2\x84\x09\x13\x26\x05\x00\x3B";
    return QByteArray(bytes, sizeof bytes - 1);
}

QRgb at(const QImage& image, int x, int y) {
    return image.pixel(x, y) & 0xFFFFFF;
}

bool near(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) < 40 && std::abs(qGreen(a) - qGreen(b)) < 40 &&
           std::abs(qBlue(a) - qBlue(b)) < 40;
}

TEST(PictureFile, ReadsEveryFormatItOffers) {
    const testing::TempFolder folder;
    const QImage source = halves(64, 32);
    for (const char* format : {"png", "jpeg", "webp", "tiff", "bmp"}) {
        const auto path = folder / (std::string("picture.") + format);
        writeBytes(path, encoded(source, format));
        const PictureRead read = readPicture(path);
        ASSERT_TRUE(read.picture) << format << ": " << read.failure;
        EXPECT_EQ(read.picture->size(), QSize(64, 32)) << format;
        EXPECT_TRUE(near(at(*read.picture, 8, 16), qRgb(255, 0, 0))) << format;
        EXPECT_TRUE(near(at(*read.picture, 56, 16), qRgb(0, 0, 255))) << format;
    }
    writeBytes(folder / "animated.gif", twoFrameGIF());
    const PictureRead gif = readPicture(folder / "animated.gif");
    ASSERT_TRUE(gif.picture) << gif.failure;
    EXPECT_EQ(at(*gif.picture, 4, 4), qRgb(255, 0, 0) & 0xFFFFFF); // the first frame
}

TEST(PictureFile, OrientationTagTurnsThePictureUpright) {
    const testing::TempFolder folder;
    writeBytes(folder / "turned.jpg", jpegWithOrientation(halves(80, 40), 6));
    const PictureRead read = readPicture(folder / "turned.jpg");
    ASSERT_TRUE(read.picture) << read.failure;
    ASSERT_EQ(read.picture->size(), QSize(40, 80));
    // Turned clockwise, the red left half is now on top.
    EXPECT_TRUE(near(at(*read.picture, 20, 10), qRgb(255, 0, 0)));
    EXPECT_TRUE(near(at(*read.picture, 20, 70), qRgb(0, 0, 255)));
}

TEST(PictureFile, LargePicturesAreScaledDownKeepingTheirShape) {
    const testing::TempFolder folder;
    writeBytes(folder / "wide.png", encoded(halves(5000, 1000), "png"));
    const PictureRead wide = readPicture(folder / "wide.png");
    ASSERT_TRUE(wide.picture) << wide.failure;
    EXPECT_EQ(wide.picture->size(), QSize(3840, 768));

    // The limit applies to the upright picture: 5000 by 2000 stored, turned,
    // is 2000 by 5000 and must fit 2160 high.
    writeBytes(folder / "tall.jpg", jpegWithOrientation(halves(5000, 2000), 6));
    const PictureRead tall = readPicture(folder / "tall.jpg");
    ASSERT_TRUE(tall.picture) << tall.failure;
    EXPECT_EQ(tall.picture->size(), QSize(864, 2160));
    EXPECT_TRUE(near(at(*tall.picture, 432, 100), qRgb(255, 0, 0)));

}

TEST(PictureFile, UnreadableFilesGiveOneSentenceAndNoStill) {
    const testing::TempFolder folder;
    const PictureRead missing = readPicture(folder / "gone.png");
    EXPECT_FALSE(missing.picture);
    EXPECT_EQ(missing.failure, "The picture \u201Cgone.png\u201D can't be found; it may have been moved or deleted.");

    writeBytes(folder / "notes.png", QByteArray("these are not pixels"));
    const PictureRead garbage = readPicture(folder / "notes.png");
    EXPECT_FALSE(garbage.picture);
    EXPECT_EQ(garbage.failure,
              "\u201Cnotes.png\u201D isn't a picture that can be opened; use PNG, JPEG, WebP, TIFF, GIF or BMP.");

    QtImageLoader loader;
    EXPECT_FALSE(loader.load((folder / "notes.png").string()));
}

} // namespace
} // namespace velarion
