#pragma once
// The booth look: dark surfaces, large legible type, and a few signal colours
// kept for meaning only (GO green, Panic red, Safe Slide amber, warnings).
//
// Thread: main thread, after the QApplication exists.

#include <QColor>

class QApplication;

namespace velarion::console {

namespace colour {
inline const QColor window{0x17, 0x19, 0x1d};
inline const QColor panel{0x1f, 0x22, 0x28};
inline const QColor raised{0x2a, 0x2e, 0x36};
inline const QColor text{0xe4, 0xe6, 0xea};
inline const QColor dimText{0x80, 0x86, 0x90};
inline const QColor go{0x2e, 0x9d, 0x4f};
inline const QColor panic{0xc8, 0x3a, 0x34};
inline const QColor safe{0xd8, 0x9a, 0x28};
inline const QColor next{0x2f, 0x6f, 0xb5};
inline const QColor running{0x3f, 0xa8, 0x64};
inline const QColor warning{0xe0, 0xa0, 0x30};
inline const QColor section{0x2c, 0x31, 0x3b};
} // namespace colour

// Palette, font and style sheet for the whole application.
void applyBoothTheme(QApplication& application);

} // namespace velarion::console
