// Property tests of the JSON form over generated shows: decoding what was
// encoded gives the same show, and encoding is stable.

#include "LiveModel/ShowJson.h"
#include "ShowGenerator.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace velarion {
namespace {

// Names the first part of two shows that differs, so that a failure says where.
std::string firstDifference(const Show& a, const Show& b) {
    for (std::size_t i = 0; i < std::min(a.sections.size(), b.sections.size()); ++i) {
        if (!(a.sections[i] == b.sections[i]))
            return "sections[" + std::to_string(i) + "]";
    }
    for (std::size_t i = 0; i < std::min(a.library.size(), b.library.size()); ++i) {
        if (!(a.library[i] == b.library[i]))
            return "library[" + std::to_string(i) + "]";
    }
    if (!(a.outputs == b.outputs))
        return "outputs";
    if (!(a.cueGroups == b.cueGroups))
        return "cueGroups";
    return a == b ? "nothing" : "a top-level field";
}

std::vector<bench::BenchmarkShowShape> shapes() {
    bench::BenchmarkShowShape medium;
    medium.seed = 40;
    medium.sectionCount = 12;
    medium.cueCount = 400;
    medium.libraryItemCount = 160;
    medium.songDeckCount = 6;
    medium.slidesPerSongDeck = 14;
    medium.screenCount = 7;
    medium.feedCount = 3;
    medium.cueGroupCount = 8;

    return {bench::smallShowShape(1), bench::smallShowShape(2), medium};
}

TEST(RoundTripShows, DecodingTheEncodedShowGivesItBackAndEncodingIsStable) {
    for (const auto& shape : shapes()) {
        SCOPED_TRACE("seed " + std::to_string(shape.seed));
        const Show show = bench::makeBenchmarkShow(shape);
        const std::string text = encodeShow(show);
        const Show decoded = decodeShow(text);
        EXPECT_TRUE(decoded == show) << "differs in " << firstDifference(decoded, show);
        EXPECT_EQ(encodeShow(decoded), text);
    }
}

} // namespace
} // namespace velarion
