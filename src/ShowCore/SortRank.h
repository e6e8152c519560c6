#pragma once
// The order of a thing among its siblings, as a text key: siblings sort by
// comparing their keys byte by byte, never by their place in a list.
//
// A well-formed key is one or more of the 36 digits "0"-"9", "a"-"z" and does
// not end in "0". Read as a base-36 fraction, such keys sort exactly as their
// text does, and between any two of them there is always another: the
// operations below never run out of room.
//
// Length: keys grow only logarithmically under repeated inserts at one
// place. A new key is stepped one unit from the neighbour that is longer
// (the one most recently made there), at that neighbour's length; when that
// length has no room left, the part after the neighbours' shared prefix is
// doubled in length, which gives room for the square of the steps before.
// 10,000 inserts at one place (the same index, always after the newest,
// the front, the end) therefore add at most 8 digits to the neighbours'
// keys, where halving the gap each time would add about 1,900 (see
// SortRankTest). Inserting each new key right beside the previous one, in
// alternating directions, still grows keys by about one digit per two
// inserts, as some order of inserts can make any key scheme do.
//
// A plain value; any thread.

#include <compare>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velarion::showcore {

struct SortRank {
    std::string value;

    // Whether `value` is a well-formed key (see above).
    bool isValid() const { return isValidKey(value); }
    static bool isValidKey(const std::string& key);

    // The key for the first thing of an empty list.
    static SortRank initial();
    // `count` evenly spread keys in ascending order, as short as they can be.
    static std::vector<SortRank> spread(std::size_t count);

    // A key strictly between `low` and `high`; either may be absent, meaning
    // the start or the end of the list. Throws std::invalid_argument when a
    // key is malformed or `low` isn't below `high`.
    static SortRank between(const std::optional<SortRank>& low, const std::optional<SortRank>& high);
    static SortRank before(const SortRank& first) { return between(std::nullopt, first); }
    static SortRank after(const SortRank& last) { return between(last, std::nullopt); }

    friend bool operator==(const SortRank&, const SortRank&) = default;
    friend std::strong_ordering operator<=>(const SortRank& a, const SortRank& b) {
        return a.value.compare(b.value) <=> 0;
    }
};

} // namespace velarion::showcore
