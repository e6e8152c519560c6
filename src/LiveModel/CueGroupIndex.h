#pragma once
// Internal to group validation: where the cues named by groups sit in a show,
// found in one walk over it. Checking every group after an edit then costs
// the size of the show once, not once per group, which keeps an edit of a
// large show well inside a millisecond.
//
// Holds pointers into the show it was built from; it must not outlive it.
// Thread: a plain value; any thread.

#include "LiveModel/Show.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace velarion {

class CueGroupIndex {
public:
    struct Place {
        const Cue* cue = nullptr;
        std::size_t position = 0; // in allCues
        CueLocation location;
    };

    // Indexes the cues listed by the show's groups and by `extra`, if given.
    CueGroupIndex(const Show& show, const CueGroup* extra);

    // The group's cues in show order; ids that no longer exist are left out.
    std::vector<Place> places(const CueGroup& group) const;
    // Whether the show has the cue; only for cues the index covers.
    bool contains(const Uuid& cueID) const;
    // The cue at a position of allCues, or null outside it.
    const Cue* cueAt(std::size_t position) const;
    // Whether a group other than `groupID` lists the cue.
    bool listedByAnotherGroup(const Uuid& cueID, const Uuid& groupID) const;

private:
    std::vector<const Cue*> all_;
    std::unordered_map<Uuid, std::vector<Place>> places_;
    std::unordered_map<Uuid, std::vector<Uuid>> owners_; // cue id to the groups listing it
};

// The rules of a valid group, on an index that covers it.
CueGroup validatedCueGroup(const CueGroup& group, const CueGroupIndex& index);

} // namespace velarion
