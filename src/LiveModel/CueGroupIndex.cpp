#include "LiveModel/CueGroupIndex.h"

#include "LiveModel/ShowEditError.h"
#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <unordered_set>

namespace velarion {

namespace {

constexpr const char* needsTwoCues = "Select at least two different cues to make a group.";
constexpr const char* needsConsecutiveCues = "Choose consecutive cues in one section.";
constexpr const char* needsWholeBundle = "Include every cue linked to start With Previous.";
constexpr const char* needsOwnCues = "A cue can belong to only one playback group.";

[[noreturn]] void refuse(const char* message) {
    throw ShowEditError(editError::InvalidCueGroup{message});
}

} // namespace

CueGroupIndex::CueGroupIndex(const Show& show, const CueGroup* extra) {
    if (show.cueGroups) {
        for (const CueGroup& group : *show.cueGroups) {
            for (const Uuid& id : group.cueIDs) {
                auto& owners = owners_[id];
                if (std::find(owners.begin(), owners.end(), group.id) == owners.end()) {
                    owners.push_back(group.id);
                }
                places_.try_emplace(id);
            }
        }
    }
    if (extra != nullptr) {
        for (const Uuid& id : extra->cueIDs) places_.try_emplace(id);
    }
    all_ = show.allCues();
    std::size_t position = 0;
    for (std::size_t s = 0; s < show.sections.size(); ++s) {
        const auto& cues = show.sections[s].cues;
        for (std::size_t i = 0; i < cues.size(); ++i, ++position) {
            auto found = places_.find(cues[i].id);
            if (found != places_.end()) found->second.push_back({&cues[i], position, {s, i}});
        }
    }
}

std::vector<CueGroupIndex::Place> CueGroupIndex::places(const CueGroup& group) const {
    std::vector<Place> result;
    std::unordered_set<Uuid> seen;
    for (const Uuid& id : group.cueIDs) {
        if (!seen.insert(id).second) continue;
        auto found = places_.find(id);
        if (found == places_.end()) continue;
        result.insert(result.end(), found->second.begin(), found->second.end());
    }
    std::sort(result.begin(), result.end(),
              [](const Place& a, const Place& b) { return a.position < b.position; });
    return result;
}

bool CueGroupIndex::contains(const Uuid& cueID) const {
    auto found = places_.find(cueID);
    return found != places_.end() && !found->second.empty();
}

const Cue* CueGroupIndex::cueAt(std::size_t position) const {
    return position < all_.size() ? all_[position] : nullptr;
}

bool CueGroupIndex::listedByAnotherGroup(const Uuid& cueID, const Uuid& groupID) const {
    auto found = owners_.find(cueID);
    if (found == owners_.end()) return false;
    return std::any_of(found->second.begin(), found->second.end(),
                       [&](const Uuid& owner) { return owner != groupID; });
}

CueGroup validatedCueGroup(const CueGroup& group, const CueGroupIndex& index) {
    CueGroup result = group;
    result.name = trimmingWhitespace(group.name);
    if (result.name.empty()) throw ShowEditError(editError::EmptyName{});

    const std::unordered_set<Uuid> members(group.cueIDs.begin(), group.cueIDs.end());
    if (members.size() < 2 || members.size() < group.cueIDs.size()) refuse(needsTwoCues);

    const auto places = index.places(group);
    if (places.empty() || places.size() < members.size()) {
        throw ShowEditError(editError::CueNotFound{});
    }
    const CueLocation& first = places.front().location;
    const CueLocation& last = places.back().location;
    if (first.section != last.section || last.index - first.index + 1 != places.size()) {
        refuse(needsConsecutiveCues);
    }

    // A With Previous cue starts with the one before it, so a group can't
    // begin with one (unless it opens the show) nor end right before one.
    const std::size_t firstPosition = places.front().position;
    const std::size_t lastPosition = places.back().position;
    if (firstPosition > 0 && places.front().cue->follow == Follow::withPrevious) {
        refuse(needsWholeBundle);
    }
    const Cue* next = index.cueAt(lastPosition + 1);
    if (next != nullptr && next->follow == Follow::withPrevious) refuse(needsWholeBundle);

    for (const Uuid& id : members) {
        if (index.listedByAnotherGroup(id, group.id)) refuse(needsOwnCues);
    }

    result.cueIDs.clear();
    for (const auto& place : places) result.cueIDs.push_back(place.cue->id);
    return result;
}

} // namespace velarion
