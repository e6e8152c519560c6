// The faces actually drawn, read from the font file chosen, not from what Qt
// says it matched: a missing face falls back silently to another weight.

#include "Platform/Pictures/PictureFonts.h"
#include "Platform/Pictures/SlideMaker.h"

#include <QRawFont>

#include <gtest/gtest.h>

namespace velarion {
namespace {

struct Face {
    std::string family;
    std::string style;
    friend bool operator==(const Face&, const Face&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Face& face) {
        return out << face.family << " " << face.style;
    }
};

Face used(const QFont& font) {
    const QRawFont raw = QRawFont::fromFont(font);
    return {raw.familyName().toStdString(), raw.styleName().toStdString()};
}

TEST(PictureFonts, HouseFaceGivesEveryWeightTheCardsAskFor) {
    EXPECT_EQ(used(houseFont(40)), (Face{"Roboto", "Regular"}));
    EXPECT_EQ(used(houseFont(40, FaceWeight::bold)), (Face{"Roboto", "Bold"}));
    EXPECT_EQ(used(houseFont(40, FaceWeight::heavy)), (Face{"Roboto", "Black"}));
    EXPECT_EQ(used(houseFont(40, FaceWeight::black, true)), (Face{"Roboto Condensed", "Bold"}));
}

TEST(PictureFonts, HouseFaceHasTheSignsTimesAndBulletsUse) {
    const QRawFont raw = QRawFont::fromFont(houseFont(40, FaceWeight::heavy));
    for (char32_t sign : {U'\u2212', U'\u2022', U'\u00B7', U'\u2026'})
        EXPECT_TRUE(raw.supportsCharacter(sign)) << std::hex << static_cast<unsigned>(sign);
}

TEST(PictureFonts, SlideBoxDesignsMapToInstalledFaces) {
    EXPECT_EQ(used(SlideMaker::font(std::nullopt, 50, true)), (Face{"Roboto", "Bold"}));
    EXPECT_EQ(used(SlideMaker::font("New York", 50, false)), (Face{"Noto Serif", "Regular"}));
    EXPECT_EQ(used(SlideMaker::font("SF Rounded", 50, true)), (Face{"Quicksand", "Bold"}));
    // A named family that is installed is used; one that isn't is the house face.
    EXPECT_EQ(used(SlideMaker::font("DejaVu Serif", 50, false)).family, "DejaVu Serif");
    EXPECT_EQ(used(SlideMaker::font("No Such Family", 50, false)), (Face{"Roboto", "Regular"}));
}

} // namespace
} // namespace velarion
