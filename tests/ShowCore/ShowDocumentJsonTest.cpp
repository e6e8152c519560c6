// The JSON form of the show graph: round trips, the shape of each kind of
// value, and refusals that name the path to the fault.

#include "ShowGraphGenerator.h"

#include "ShowCore/DurationValue.h"
#include "ShowCore/ShowDate.h"
#include "ShowCore/ShowDocumentJson.h"
#include "ShowCore/ShowURL.h"
#include "ShowCore/ShowValueError.h"
#include "ShowCore/SortRank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <regex>
#include <stdexcept>
#include <vector>

namespace velarion::showcore {
namespace {

const std::string& smallText() {
    static const std::string text = encodeShowDocument(bench::makeShowGraph({1, 1, 1, 13}));
    return text;
}

TEST(ShowDocumentJsonTest, LargeGeneratedGraphRoundTrips) {
    const ShowDocument graph = bench::makeShowGraph({6, 5, 8, 13, 99});
    const std::string text = encodeShowDocument(graph);
    const ShowDocument decoded = decodeShowDocument(text);
    EXPECT_TRUE(decoded == graph);
    EXPECT_EQ(encodeShowDocument(decoded), text);
}

TEST(ShowDocumentJsonTest, ValuesHaveTheirStatedForms) {
    const std::string& text = smallText();
    const std::vector<std::pair<const char*, std::string>> forms = {
        {"case without payload", R"("progression":{"manual":{}})"},
        {"labelled payload", R"("progression":{"startWithNext":{"delay":{"seconds":)"},
        {"unlabelled identity", R"("target":{"audioBus":{"_0":")"},
        {"unlabelled record", R"("payload":{"localAudio":{"_0":{"assetID":")"},
        {"plain enumeration", R"("timebase":"monotonic")"},
        {"sort rank", R"("order":{"value":"i"})"},
        {"date", R"("createdAt":"2026-11-18T)"},
        {"URL", R"("sourceURL":"file:///home/ana/Music/intro.wav")"},
        {"modifier set", R"("modifiers":["shift"])"},
        {"unsigned 16-bit", R"("port":53000)"},
    };
    for (const auto& [what, form] : forms) EXPECT_NE(text.find(form), std::string::npos) << what << ": " << form;
    // Optional keys are left out when empty: only one reference has an album.
    EXPECT_EQ(text.find("\"album\""), text.rfind("\"album\""));
}

struct Refusal {
    const char* pattern; // replaced at its first match
    const char* replacement;
    const char* path;
    const char* reason; // a part of the reason
};

TEST(ShowDocumentJsonTest, RefusesWithThePathToTheFault) {
    const std::vector<Refusal> refusals = {
        {R"("title":"Act 1",)", "", "acts[0].title", "required key is missing"},
        {R"(\{"manual":\{\}\})", R"({"manual":{},"cut":{}})", "", "Invalid number of keys found, expected one."},
        {R"("timebase":"monotonic")", R"("timebase":"sundial")", "", "\"sundial\" isn't one of monotonic, wallClock"},
        {R"("preWait":\{"seconds":[0-9.]+\})", R"("preWait":{"seconds":-1})", "acts[0].scenes[0].cues[0].timing.preWait.seconds",
         "Duration must be finite and nonnegative"},
        {R"("createdAt":"[^"]*")", R"("createdAt":"2026-13-01T00:00:00Z")", "createdAt", "isn't a date"},
        {R"("sourceURL":"[^"]*")", R"("sourceURL":"intro.wav")", "", "isn't an absolute URL"},
        {R"("showID":"[^"]*")", R"("showID":"not-a-uuid")", "acts[0].showID", "isn't a UUID"},
        {R"("channel":10)", R"("channel":300)", "controlProfiles[0].bindings[2].source.midi._0.channel", "outside 0 to 255"},
        {R"(\]\}$)", "]", "", "isn't valid JSON"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.pattern);
        const std::string broken =
            std::regex_replace(smallText(), std::regex(refusal.pattern), refusal.replacement,
                               std::regex_constants::format_first_only);
        ASSERT_NE(broken, smallText());
        try {
            readShowDocument(broken);
            ADD_FAILURE() << "accepted";
        } catch (const ShowJsonError& error) {
            if (*refusal.path) {
                EXPECT_EQ(error.path, refusal.path);
            }
            EXPECT_NE(error.reason.find(refusal.reason), std::string::npos) << error.what();
        }
    }
}

TEST(ShowDocumentJsonTest, IgnoresUnknownKeysAndReadsNullAsNone) {
    std::string text = std::regex_replace(smallText(), std::regex(R"("notes":)"), R"("addedLater":{"x":[1]},"notes":)");
    text = std::regex_replace(text, std::regex(R"("storefront":"us")"), R"("storefront":null)",
                              std::regex_constants::format_first_only);
    ShowDocument expected = readShowDocument(smallText());
    expected.providerReferences[0].storefront.reset();
    EXPECT_TRUE(readShowDocument(text) == expected);
}

TEST(ShowDocumentJsonTest, DecodingValidatesTheGraph) {
    ShowDocument graph = bench::makeShowGraph({1, 1, 2, 2});
    graph.acts[0].scenes[0].cues[1].actions[0].id = graph.acts[0].scenes[0].cues[0].actions[0].id;
    const std::string text = encodeShowDocument(graph);
    EXPECT_TRUE(readShowDocument(text) == graph);
    EXPECT_THROW(decodeShowDocument(text), ShowValidationError);
}

// The rules of the graph's leaf values: durations, dates and URLs.
TEST(ShowValuesTest, DurationsAreFiniteAndNonnegative) {
    for (double refused : {-1.0, -1e-9, std::numeric_limits<double>::infinity(), std::nan("")}) {
        try {
            DurationValue::make(refused);
            ADD_FAILURE() << refused << " accepted";
        } catch (const ShowValueError& error) {
            EXPECT_STREQ(error.what(), "Duration must be finite and nonnegative");
        }
    }
    EXPECT_EQ(DurationValue::make(0.0), DurationValue::make(-0.0));
    EXPECT_FALSE(std::signbit(DurationValue::make(-0.0).seconds()));
    EXPECT_EQ(DurationValue::make(86400.5).seconds(), 86400.5);
}

TEST(ShowValuesTest, DatesHaveOneTextForm) {
    const std::vector<std::pair<std::int64_t, const char*>> dates = {
        {0, "1970-01-01T00:00:00.000Z"},
        {-1, "1969-12-31T23:59:59.999Z"},
        {951'782'400'000, "2000-02-29T00:00:00.000Z"},
        {253'402'300'799'999, "9999-12-31T23:59:59.999Z"},
        {-62'167'219'200'000, "0000-01-01T00:00:00.000Z"},
    };
    for (const auto& [milliseconds, text] : dates) {
        EXPECT_EQ(ShowDate{milliseconds}.text(), text);
        EXPECT_EQ(ShowDate::parse(text), ShowDate{milliseconds}) << text;
    }
    EXPECT_EQ(ShowDate::parse("2026-01-01T10:00:00Z"), ShowDate::parse("2026-01-01T10:00:00.000Z"));
    EXPECT_FALSE(ShowDate{ShowDate::latestMilliseconds + 1}.hasTextForm());
    EXPECT_FALSE(ShowDate{ShowDate::earliestMilliseconds - 1}.hasTextForm());
    for (const char* refused : {"2026-02-29T00:00:00Z", "2026-01-01 00:00:00Z", "2026-01-01T24:00:00Z",
                                "2026-01-01T00:00:00.1Z", "2026-01-01T00:00:00+01:00", "2026-1-01T00:00:00Z", ""}) {
        EXPECT_FALSE(ShowDate::parse(refused)) << refused;
    }
}

// Sort ranks: inserts keep order, stay well formed and stay short.
//
// "Short" here: 10,000 inserts at one place leave every key at most 8
// characters longer than the longest key the list started with (halving the
// gap each time would need about 1,900).
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
