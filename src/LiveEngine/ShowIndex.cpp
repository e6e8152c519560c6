#include "LiveEngine/ShowIndex.h"

#include "LiveModel/CueGroupIndex.h"
#include "LiveModel/ShowEditError.h"

namespace velarion {

ShowIndex::ShowIndex(const Show& show) {
    for (const Section& section : show.sections) {
        for (const Cue& cue : section.cues) {
            places_.emplace(cue.id, Place{cues_.size(), &section});
            cues_.push_back(&cue);
            if (firstEnabled_ == nullptr && cue.isEnabled) firstEnabled_ = &cue;
        }
    }
    for (const MediaItem& item : show.library) media_.emplace(item.id, &item);
    if (!show.cueGroups) return;
    const CueGroupIndex groupIndex(show, nullptr);
    for (const CueGroup& group : *show.cueGroups) {
        PreparedGroup prepared;
        prepared.group = group;
        try {
            prepared.isValid = validatedCueGroup(group, groupIndex) == group;
        } catch (const ShowEditError&) {
            prepared.isValid = false;
        }
        std::vector<const Cue*> members;
        for (const auto& place : groupIndex.places(group)) members.push_back(place.cue);
        if (!members.empty()) prepared.lastMemberID = members.back()->id;
        prepared.steps = playbackSteps(members);
        for (const Uuid& cueID : group.cueIDs) groupOfCue_.emplace(cueID, group.id);
        groups_.emplace(group.id, std::move(prepared));
    }
}

const MediaItem* ShowIndex::media(const Uuid& mediaID) const {
    auto found = media_.find(mediaID);
    return found == media_.end() ? nullptr : found->second;
}

std::optional<SoundRole> ShowIndex::soundRole(const Cue& cue) const {
    const auto* audio = std::get_if<AudioCue>(&cue.kind);
    return Show::soundRole(cue, audio ? media(audio->mediaID) : nullptr);
}

const ShowIndex::PreparedGroup* ShowIndex::groupContaining(const Uuid& cueID) const {
    auto found = groupOfCue_.find(cueID);
    return found == groupOfCue_.end() ? nullptr : group(found->second);
}

const ShowIndex::PreparedGroup* ShowIndex::group(const Uuid& groupID) const {
    auto found = groups_.find(groupID);
    return found == groups_.end() ? nullptr : &found->second;
}

std::optional<std::size_t> ShowIndex::position(const Uuid& cueID) const {
    auto found = places_.find(cueID);
    if (found == places_.end()) return std::nullopt;
    return found->second.position;
}

const Cue* ShowIndex::cue(const Uuid& cueID) const {
    auto found = places_.find(cueID);
    return found == places_.end() ? nullptr : cues_[found->second.position];
}

const Section* ShowIndex::section(const Uuid& cueID) const {
    auto found = places_.find(cueID);
    return found == places_.end() ? nullptr : found->second.section;
}

const Cue* ShowIndex::cueAfter(const Uuid& cueID) const {
    auto at = position(cueID);
    if (!at || *at + 1 >= cues_.size()) return nullptr;
    return cues_[*at + 1];
}

} // namespace velarion
