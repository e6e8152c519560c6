#include "LiveModel/CueGroups.h"

#include "LiveModel/CueGroupIndex.h"

#include <algorithm>
#include <unordered_set>

namespace velarion {

namespace {

std::optional<std::size_t> indexOf(const std::vector<const Cue*>& all, const Cue* cue) {
    auto it = std::find(all.begin(), all.end(), cue);
    if (it == all.end()) return std::nullopt;
    return static_cast<std::size_t>(it - all.begin());
}

std::optional<std::size_t> indexOf(const std::vector<const Cue*>& all, const Uuid& id) {
    auto it = std::find_if(all.begin(), all.end(), [&](const Cue* cue) { return cue->id == id; });
    if (it == all.end()) return std::nullopt;
    return static_cast<std::size_t>(it - all.begin());
}

} // namespace

const CueGroup* cueGroup(const Show& show, const Uuid& containing) {
    if (!show.cueGroups) return nullptr;
    for (const CueGroup& group : *show.cueGroups) {
        if (std::find(group.cueIDs.begin(), group.cueIDs.end(), containing) != group.cueIDs.end()) {
            return &group;
        }
    }
    return nullptr;
}

std::vector<const Cue*> cues(const Show& show, const CueGroup& in) {
    const std::unordered_set<Uuid> members(in.cueIDs.begin(), in.cueIDs.end());
    std::vector<const Cue*> found;
    for (const Cue* cue : show.allCues()) {
        if (members.contains(cue->id)) found.push_back(cue);
    }
    return found;
}

std::vector<const Cue*> moment(const Show& show, const Uuid& containing) {
    if (const CueGroup* group = cueGroup(show, containing)) return cues(show, *group);
    const auto all = show.allCues();
    const auto index = indexOf(all, containing);
    if (!index) return {};
    std::size_t first = *index;
    while (first > 0 && all[first]->follow != Follow::manual) --first;
    std::size_t end = *index + 1;
    while (end < all.size() && all[end]->follow != Follow::manual) ++end;
    return {all.begin() + static_cast<std::ptrdiff_t>(first),
            all.begin() + static_cast<std::ptrdiff_t>(end)};
}

CueGroup validatedCueGroup(const Show& show, const CueGroup& group) {
    return validatedCueGroup(group, CueGroupIndex(show, &group));
}

std::vector<CueGroupStep> playbackSteps(const Show& show, const CueGroup& in) {
    return playbackSteps(cues(show, in));
}

std::vector<CueGroupStep> playbackSteps(const std::vector<const Cue*>& cues) {
    std::vector<std::vector<Cue>> lists;
    for (const Cue* cue : cues) {
        if (cue->follow == Follow::withPrevious && !lists.empty()) {
            if (cue->isEnabled) lists.back().push_back(*cue);
        } else {
            lists.emplace_back();
            if (cue->isEnabled) lists.back().push_back(*cue);
        }
    }
    std::erase_if(lists, [](const std::vector<Cue>& list) { return list.empty(); });

    std::vector<CueGroupStep> steps;
    steps.reserve(lists.size());
    for (std::size_t i = 0; i < lists.size(); ++i) {
        const bool nextWaits =
            i + 1 < lists.size() && lists[i + 1].front().follow == Follow::afterPrevious;
        Cue driver = nextWaits ? lists[i].back() : lists[i].front();
        steps.push_back({std::move(lists[i]), std::move(driver)});
    }
    return steps;
}

std::optional<Uuid> armTarget(const Show& show, const Uuid& forCue) {
    const Cue* cue = show.cue(forCue);
    if (cue == nullptr || !cue->isEnabled) return std::nullopt;
    if (const CueGroup* group = cueGroup(show, forCue)) {
        for (const Cue* member : cues(show, *group)) {
            if (member->isEnabled) return member->id;
        }
        return std::nullopt;
    }
    const auto all = show.allCues();
    const auto index = indexOf(all, cue);
    if (!index) return std::nullopt;
    std::size_t start = *index;
    while (start > 0 && all[start]->follow == Follow::withPrevious) --start;
    for (std::size_t i = start; i <= *index; ++i) {
        if (all[i]->isEnabled) return all[i]->id;
    }
    return std::nullopt;
}

const Cue* startTogetherPredecessor(const Show& show, const Uuid& of) {
    const auto all = show.allCues();
    const auto index = indexOf(all, of);
    if (!index || *index == 0) return nullptr;
    const Cue* previous = all[*index - 1];
    if (!previous->isEnabled || !all[*index]->isEnabled) return nullptr;
    return previous;
}

} // namespace velarion
