#pragma once
// A named playback group: member cues that play step by step as one unit.

#include "Identity/Uuid.h"

#include <string>
#include <vector>

namespace velarion {

struct CueGroup {
    Uuid id;
    std::string name;
    std::vector<Uuid> cueIDs; // in show order once validated
    bool repeats = false;
    friend bool operator==(const CueGroup&, const CueGroup&) = default;
};

} // namespace velarion
