#pragma once
// PictureFonts: the faces every picture of this library is set in.
//
// The house face is Roboto (Debian's fonts-roboto-unhinted): Regular,
// Medium, Bold and Black, and Roboto Condensed up to Bold. It has no weight
// between Bold and Black, so a heavy weight is set in Black, and its
// heaviest condensed face, Bold, stands for a black condensed title. Glyphs
// it lacks (other scripts in lyrics) come from the Noto families through
// fontconfig's fallback.
//
// Slide boxes may name the three alternative designs of the house face the
// show document knows; they map to Debian faces: "New York" to Noto Serif,
// "SF Rounded" to Quicksand, "SF Mono" to Noto Sans Mono.
//
// Contract.
// - Sizes are points, which are pixels on our 72-dpi canvases (Canvas.h).
// - Hinting is off, so text measures and draws the same at every size and
//   on every machine with the same fonts: golden pictures depend on it.
// - Threads: the font database is the GUI application's; call from the main
//   thread after a QGuiApplication exists.

#include <QFont>
#include <QString>

namespace velarion {

enum class FaceWeight { regular, medium, bold, heavy, black };

struct FaceRequest {
    QString family;
    QFont::Weight weight = QFont::Normal;
};

// The face the house font asks for at that weight and width.
FaceRequest houseFace(FaceWeight weight, bool condensed = false);

// The house font at a point size.
QFont houseFont(double points, FaceWeight weight = FaceWeight::regular, bool condensed = false);

// A font of `family` (which must exist) at a point size and weight, with our
// rendering settings.
QFont pictureFont(const QString& family, double points, QFont::Weight weight);

} // namespace velarion
