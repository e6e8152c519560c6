#pragma once
// Where a new or moved cue lands, chosen so that it never cuts a moment in
// two: the anchor a new cue goes behind, the point next to a moment or at
// the end of a section, and the destination of a step up or down in the list.
//
// Thread: pure functions on values; any thread.

#include "LiveModel/EnumNames.h"
#include "LiveModel/Show.h"

#include <compare>
#include <optional>

namespace velarion {

// An absent `before` means the end of the section; an absent `sectionID`
// means the end of the show.
struct CueInsertionPoint {
    std::optional<Uuid> sectionID;
    std::optional<Uuid> before;
    friend bool operator==(const CueInsertionPoint&, const CueInsertionPoint&) = default;
    friend auto operator<=>(const CueInsertionPoint&, const CueInsertionPoint&) = default;
};

enum class CueMoveDirection { up, down };
VELARION_ENUM_NAMES(CueMoveDirection, "up", "down");

// Where adding `forCue` puts it, given the selected cue: a manual cue goes
// behind the selection's whole moment, a linked one right behind the
// selection. The result may be absent (no selection).
std::optional<Uuid> defaultInsertionAnchor(const Show& show, const Cue& forCue,
                                           const std::optional<Uuid>& after);

// The point in front of the moment of `near`, or right behind it when
// `after` is true. None when the cue doesn't exist.
std::optional<CueInsertionPoint> insertionPoint(const Show& show, const Uuid& near, bool after);

// The end of a section, behind its last moment; the end of the show for no
// section. None for an unknown section.
std::optional<CueInsertionPoint> insertionPoint(const Show& show,
                                                const std::optional<Uuid>& atEndOf);

// Where one step up or down takes the moment of `forCue`: over the whole
// neighbouring moment, across a section boundary if that's where it lies.
// None at the start (up) or end (down) of the show.
std::optional<CueInsertionPoint> reorderDestination(const Show& show, const Uuid& forCue,
                                                    CueMoveDirection direction);

} // namespace velarion
