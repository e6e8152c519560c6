#pragma once
// Small drawn icons for each kind of cue and the application's own icon,
// made with QPainter so that no picture files are needed.
//
// Thread: main thread (QPixmap); `drawAppIcon` into a QImage on any thread.

#include "LiveModel/CueKind.h"

#include <QIcon>
#include <QImage>

#include <vector>

namespace velarion::console {

// One icon per CueKindCase, in rank order.
std::vector<QIcon> makeKindIcons(int sizePixels = 18);
// The application icon at `sizePixels` square.
QImage drawAppIcon(int sizePixels);

} // namespace velarion::console
