// Sort ranks: inserts keep order, stay well formed and stay short.
//
// "Short" here: 10,000 inserts at one place leave every key at most 8
// characters longer than the longest key the list started with (halving the
// gap each time would need about 1,900).

#include "ShowCore/SortRank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace velarion::showcore {
namespace {

constexpr std::size_t inserts = 10'000;
constexpr std::size_t allowedGrowth = 8;

using Ranks = std::vector<SortRank>;

// One place in a list, between fixed neighbours ("" for an end of the
// list); each new key goes right beside the newest one, on `newestSide`.
struct Place {
    const char* name;
    const char* low;
    const char* high;
    bool newestIsLow; // the newest key becomes the next insert's low neighbour
};

void expectOrderedAndValid(const Ranks& ranks) {
    for (std::size_t i = 0; i < ranks.size(); ++i) {
        ASSERT_TRUE(ranks[i].isValid()) << ranks[i].value;
        if (i > 0) {
            ASSERT_LT(ranks[i - 1], ranks[i]) << "at " << i;
        }
    }
}

std::size_t longest(const Ranks& ranks) {
    std::size_t length = 0;
    for (const auto& rank : ranks) length = std::max(length, rank.value.size());
    return length;
}

TEST(SortRankTest, RepeatedInsertsKeepOrderAndStayShort) {
    const std::vector<Place> places = {
        {"always at index 1, after the same first item", "7", "e", false},
        {"always after the newest (typing forward)", "7", "e", true},
        {"always at the front", "", "7", false},
        {"always at the end", "s", "", true},
        {"always before the last item", "l", "s", true},
    };
    for (const Place& place : places) {
        SCOPED_TRACE(place.name);
        std::optional<SortRank> low, high;
        if (*place.low) low = SortRank{place.low};
        if (*place.high) high = SortRank{place.high};
        std::size_t longestMade = 0;
        for (std::size_t round = 0; round < inserts; ++round) {
            const SortRank made = SortRank::between(low, high);
            ASSERT_TRUE(made.isValid()) << made.value;
            ASSERT_TRUE((!low || *low < made) && (!high || made < *high)) << "round " << round << ": " << made.value;
            longestMade = std::max(longestMade, made.value.size());
            (place.newestIsLow ? low : high) = made;
        }
        EXPECT_LE(longestMade, 1 + allowedGrowth);
    }
}

TEST(SortRankTest, BetweenAnyTwoWellFormedKeysThereIsRoom) {
    // Neighbours that leave no room at their own length, or share long prefixes.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"a", "a1"}, {"a", "b"}, {"az", "b"}, {"zz", "zz1"}, {"0001", "0002"},
        {"1", "10001"}, {"a0001", "a1"}, {"y", "yzzzzz"}, {"0z", "1"}, {"01", "1"},
    };
    for (const auto& [low, high] : cases) {
        const SortRank made = SortRank::between(SortRank{low}, SortRank{high});
        EXPECT_TRUE(made.isValid()) << made.value;
        EXPECT_LT(SortRank{low}, made) << low << " " << high;
        EXPECT_LT(made, SortRank{high}) << low << " " << high;
    }
    for (const auto& [_, key] : cases) {
        EXPECT_LT(SortRank::before(SortRank{key}), SortRank{key}) << key;
        EXPECT_GT(SortRank::after(SortRank{key}), SortRank{key}) << key;
    }
}

TEST(SortRankTest, SpreadIsAscendingShortAndWellFormed) {
    for (std::size_t count : {1u, 2u, 35u, 36u, 1000u}) {
        const Ranks ranks = SortRank::spread(count);
        ASSERT_EQ(ranks.size(), count);
        expectOrderedAndValid(ranks);
        EXPECT_LE(longest(ranks), count < 36 ? 1u : count < 1296 ? 2u : 3u) << count;
    }
}

TEST(SortRankTest, RefusesMalformedOrUnorderedNeighbours) {
    const std::vector<std::pair<std::string, std::string>> refused = {
        {"b", "a"}, {"a", "a"}, {"a0", "b"}, {"", "b"}, {"a", "B"}, {"a", "b-"},
    };
    for (const auto& [low, high] : refused) {
        EXPECT_THROW(SortRank::between(SortRank{low}, SortRank{high}), std::invalid_argument) << low << " " << high;
    }
}

} // namespace
} // namespace velarion::showcore
