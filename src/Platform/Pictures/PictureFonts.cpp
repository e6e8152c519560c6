#include "Platform/Pictures/PictureFonts.h"

namespace velarion {

FaceRequest houseFace(FaceWeight weight, bool condensed) {
    if (condensed) {
        // Roboto Condensed stops at Bold.
        const bool heavy = weight != FaceWeight::regular && weight != FaceWeight::medium;
        return {QStringLiteral("Roboto Condensed"),
                heavy ? QFont::Bold : weight == FaceWeight::medium ? QFont::Medium : QFont::Normal};
    }
    switch (weight) {
    case FaceWeight::regular:
        return {QStringLiteral("Roboto"), QFont::Normal};
    case FaceWeight::medium:
        return {QStringLiteral("Roboto"), QFont::Medium};
    case FaceWeight::bold:
        return {QStringLiteral("Roboto"), QFont::Bold};
    case FaceWeight::heavy:
    case FaceWeight::black:
        return {QStringLiteral("Roboto"), QFont::Black};
    }
    return {QStringLiteral("Roboto"), QFont::Normal};
}

QFont houseFont(double points, FaceWeight weight, bool condensed) {
    const FaceRequest face = houseFace(weight, condensed);
    return pictureFont(face.family, points, face.weight);
}

QFont pictureFont(const QString& family, double points, QFont::Weight weight) {
    QFont font(family);
    font.setPointSizeF(points);
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

} // namespace velarion
