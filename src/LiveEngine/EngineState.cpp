#include "LiveEngine/EngineState.h"

#include <algorithm>

namespace velarion {

bool EngineState::wasFired(const Uuid& cueID) const {
    return std::binary_search(firedCueIDs->begin(), firedCueIDs->end(), cueID);
}

} // namespace velarion
