// Property tests of the JSON form over generated shows: decoding what was
// encoded gives the same show, and encoding is stable.

#include "LiveModel/ShowJson.h"
#include "ShowGenerator.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace velarion {
namespace {

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
        EXPECT_TRUE(decoded == show);
        EXPECT_EQ(encodeShow(decoded), text);
    }
}

} // namespace
} // namespace velarion
