#include "LiveEngine/ShowIndex.h"

namespace velarion {

ShowIndex::ShowIndex(const Show& show) {
    for (const Section& section : show.sections) {
        for (const Cue& cue : section.cues) {
            places_.emplace(cue.id, Place{cues_.size(), &section});
            cues_.push_back(&cue);
            if (firstEnabled_ == nullptr && cue.isEnabled) firstEnabled_ = &cue;
        }
    }
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
