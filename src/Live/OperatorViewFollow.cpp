#include "Live/OperatorViewFollow.h"

#include <iterator>

namespace velarion {

std::optional<CueOperatorView> OperatorViewFollow::update(const std::optional<Uuid>& activeRunID,
                                                          const std::set<Uuid>& runningIDs,
                                                          const std::optional<CueOperatorView>& requestedView) {
    std::optional<CueOperatorView> answer;
    if (followingRunID && !runningIDs.contains(*followingRunID)) {
        // The followed run ended: the page goes back.
        followingRunID.reset();
        answer = CueOperatorView::cues;
    }
    std::erase_if(observedRuns, [&](const Uuid& id) { return !runningIDs.contains(id); });
    if (!activeRunID || !runningIDs.contains(*activeRunID)) return answer;
    const bool isNew = observedRuns.insert(*activeRunID).second;
    if (!isNew || !requestedView) return answer;
    if (*requestedView == CueOperatorView::slides) {
        followingRunID = activeRunID;
        return CueOperatorView::slides;
    }
    followingRunID.reset();
    return CueOperatorView::cues;
}

} // namespace velarion
