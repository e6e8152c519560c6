#pragma once
// The operator's range selection in the run of show. A range never reaches
// over a section boundary and never ends inside a With Previous bundle.
//
// Thread: a plain value, changed by whoever owns it (the console, on the
// main thread); the show passed in is only read.

#include "LiveModel/Show.h"

#include <optional>
#include <set>

namespace velarion {

struct CueRangeSelection {
    std::optional<Uuid> anchor; // the fixed end of a range
    std::set<Uuid> cueIDs;

    // Selects the one cue, or with `extending` widens the range from the
    // anchor to it when both lie in one section. An unknown cue changes
    // nothing.
    void select(const Uuid& id, bool extending, const Show& in);

    // Brings the selection in line with the single selected cue (none clears
    // it), and drops ids the show no longer has.
    void followSelection(const std::optional<Uuid>& selected, const Show& in);

    friend bool operator==(const CueRangeSelection&, const CueRangeSelection&) = default;
};

} // namespace velarion
