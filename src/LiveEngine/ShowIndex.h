#pragma once
// ShowIndex: the played show's cues in order with their positions, built once
// per show so that GO, Next and batches cost a lookup rather than a walk of
// five thousand cues. Pointers point into the Show it was built from and stay
// valid while that Show lives unchanged; rebuild it with every new show.

#include "LiveModel/CueGroups.h"
#include "LiveModel/Show.h"

#include <optional>
#include <unordered_map>
#include <vector>

namespace velarion {

class ShowIndex {
public:
    ShowIndex() = default;
    explicit ShowIndex(const Show& show);

    const std::vector<const Cue*>& cues() const { return cues_; }
    std::optional<std::size_t> position(const Uuid& cueID) const;
    const Cue* cue(const Uuid& cueID) const;
    // The section holding the cue, or null.
    const Section* section(const Uuid& cueID) const;
    // The cue right behind this one in show order, or null.
    const Cue* cueAfter(const Uuid& cueID) const;
    // The first enabled cue of the show, which can never follow anything.
    const Cue* firstEnabled() const { return firstEnabled_; }
    const MediaItem* media(const Uuid& mediaID) const;
    // The sound role of a cue, with its library item found by the index.
    std::optional<SoundRole> soundRole(const Cue& cue) const;

    // A cue group checked and cut into steps once per show, so that a GO
    // that starts one costs a lookup.
    struct PreparedGroup {
        CueGroup group;
        bool isValid = false; // it validates to itself
        std::vector<CueGroupStep> steps;
        std::optional<Uuid> lastMemberID;
    };
    // The first group that lists the cue, or null.
    const PreparedGroup* groupContaining(const Uuid& cueID) const;
    const PreparedGroup* group(const Uuid& groupID) const;

private:
    struct Place {
        std::size_t position;
        const Section* section;
    };
    std::vector<const Cue*> cues_;
    std::unordered_map<Uuid, Place> places_;
    const Cue* firstEnabled_ = nullptr;
    std::unordered_map<Uuid, const MediaItem*> media_;
    std::unordered_map<Uuid, PreparedGroup> groups_;
    std::unordered_map<Uuid, Uuid> groupOfCue_;
};

} // namespace velarion
