#pragma once
// The line shown under a cue's name: the operator's own text when set,
// otherwise what the cue does, in parts joined by " · ".

#include "LiveModel/Show.h"

#include <string>

namespace velarion {

std::string cueDescription(const Cue& cue, const Show& show);

} // namespace velarion
