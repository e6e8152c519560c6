#pragma once
// ShowIndex: the played show's cues in order with their positions, built once
// per show so that GO, Next and batches cost a lookup rather than a walk of
// five thousand cues. Pointers point into the Show it was built from and stay
// valid while that Show lives unchanged; rebuild it with every new show.

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

private:
    struct Place {
        std::size_t position;
        const Section* section;
    };
    std::vector<const Cue*> cues_;
    std::unordered_map<Uuid, Place> places_;
    const Cue* firstEnabled_ = nullptr;
};

} // namespace velarion
