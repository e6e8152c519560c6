#include "LiveModel/CueRangeSelection.h"

#include <algorithm>
#include <unordered_set>

namespace velarion {

void CueRangeSelection::select(const Uuid& id, bool extending, const Show& in) {
    const auto location = in.location(id);
    if (!location) return;
    const auto anchorLocation = extending && anchor ? in.location(*anchor) : std::nullopt;
    if (!anchorLocation || anchorLocation->section != location->section) {
        anchor = id;
        cueIDs = {id};
        return;
    }
    const auto& sectionCues = in.sections[location->section].cues;
    std::size_t lower = std::min(anchorLocation->index, location->index);
    std::size_t upper = std::max(anchorLocation->index, location->index);
    while (lower > 0 && sectionCues[lower].follow == Follow::withPrevious) --lower;
    while (upper + 1 < sectionCues.size() &&
           sectionCues[upper + 1].follow == Follow::withPrevious) {
        ++upper;
    }
    cueIDs.clear();
    for (std::size_t i = lower; i <= upper; ++i) cueIDs.insert(sectionCues[i].id);
}

void CueRangeSelection::followSelection(const std::optional<Uuid>& selected, const Show& in) {
    if (!selected) {
        anchor.reset();
        cueIDs.clear();
        return;
    }
    if (!cueIDs.contains(*selected) && in.cue(*selected) != nullptr) {
        anchor = *selected;
        cueIDs = {*selected};
    }
    if (cueIDs.empty()) return;
    std::unordered_set<Uuid> existing;
    for (const Cue* cue : in.allCues()) existing.insert(cue->id);
    std::erase_if(cueIDs, [&](const Uuid& id) { return !existing.contains(id); });
}

} // namespace velarion
