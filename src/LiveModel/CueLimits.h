#pragma once
// The limits a cue's fields are built within: times never below 0, levels
// within 0 ... 1 (music apps 0 ... 100 percent), a playlist's crossfade
// within 0 ... 20 s, a slide dissolve within 0 ... 10 s, the placement
// through CueGeometry::make. Every surface that builds or changes a cue
// from the operator's numbers passes it through here, so a typed value
// outside a limit lands on the limit. Reading a document never does.
//
// Thread: pure functions on values; any thread.

#include "LiveModel/Cue.h"

namespace velarion::cueLimits {

inline constexpr double longestPlaylistCrossfadeSeconds = 20;
inline constexpr double longestSlideDissolveSeconds = 10;

// The cue with every field inside its limit; a value that is not a number
// counts as the lower limit.
Cue limited(Cue cue);

} // namespace velarion::cueLimits
