#pragma once
// Seeded random shows and random show edits, valid and invalid, of every
// case, for the randomized edit test. Deterministic for a given seed.

#include "LiveModel/Show.h"
#include "LiveModel/ShowEdit.h"

#include <cstdint>
#include <random>

namespace velarion::editTesting {

class RandomShowEdits {
public:
    explicit RandomShowEdits(std::uint64_t seed) : random_(seed) {}

    Show show();
    // An edit of the given case (its index in ShowEdit), aimed at `show`:
    // mostly at things that exist, sometimes at things that don't.
    ShowEdit edit(std::size_t caseIndex, const Show& show);

    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random_); }

private:
    // Deterministic ids, so that a seed always plays out the same way.
    Uuid newID();
    Cue cue(const Show& show);
    Section section(const Show& show, int maxCues);
    MediaItem item(const Show& show);
    CueGroup group(const Show& show);
    std::string name();
    template <class List> const typename List::value_type* pick(const List& items) {
        return items.empty()
                   ? nullptr
                   : &items[static_cast<std::size_t>(below(static_cast<int>(items.size())))];
    }
    Uuid cueID(const Show& show);
    Uuid sectionID(const Show& show);
    Uuid mediaID(const Show& show);
    Uuid groupID(const Show& show);
    std::optional<Uuid> maybe(Uuid id) {
        return chance(0.5) ? std::optional<Uuid>(id) : std::nullopt;
    }

    std::mt19937_64 random_;
};

} // namespace velarion::editTesting
