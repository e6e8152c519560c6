// Property tests of the JSON form over generated shows: decoding what was
// encoded gives the same show, and encoding is stable.

#include "LiveModel/ShowJson.h"
#include "ShowGenerator.h"

#include <gtest/gtest.h>
#include <set>
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

    bench::BenchmarkShowShape bare = bench::smallShowShape(41);
    bare.sectionCount = 1;
    bare.songDeckCount = 0;
    bare.screenCount = 1;
    bare.feedCount = 0;
    bare.cueGroupCount = 0;

    return {bench::smallShowShape(1), bench::smallShowShape(2), bench::smallShowShape(3), medium,
            bare};
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

// The property above is only as good as its input: the generated shows must
// hold every case, and the benchmark's show must be the size it claims.
TEST(RoundTripShows, GeneratedShowCoversEveryCaseAndEveryReferenceResolves) {
    const bench::BenchmarkShowShape shape;
    const Show show = bench::makeBenchmarkShow(shape);
    EXPECT_EQ(show.sections.size(), static_cast<std::size_t>(shape.sectionCount));
    EXPECT_EQ(show.library.size(), static_cast<std::size_t>(shape.libraryItemCount));
    const auto cues = show.allCues();
    ASSERT_EQ(cues.size(), static_cast<std::size_t>(shape.cueCount));

    std::set<std::size_t> kinds, timerModes, backdrops;
    bool clearsOneCue = false, clearsTarget = false, timerWithoutLook = false;
    for (const Cue* cue : cues) {
        kinds.insert(cue->kind.index());
        for (const Uuid& id : cueKind::mediaIDs(cue->kind))
            EXPECT_NE(show.media(id), nullptr);
        if (const auto* timer = std::get_if<TimerCue>(&cue->kind)) {
            timerModes.insert(timer->mode.index());
            if (timer->look) {
                backdrops.insert(timer->look->backdrop.index());
            } else {
                timerWithoutLook = true;
            }
        }
        if (const auto* clear = std::get_if<ClearCue>(&cue->kind)) {
            (clear->cueID ? clearsOneCue : clearsTarget) = true;
            if (clear->cueID) {
                EXPECT_NE(show.cue(*clear->cueID), nullptr);
            }
        }
    }
    EXPECT_EQ(kinds.size(), std::variant_size_v<CueKind>);
    EXPECT_EQ(timerModes.size(), std::variant_size_v<TimerMode>);
    EXPECT_EQ(backdrops.size(), std::variant_size_v<Backdrop>);
    EXPECT_TRUE(clearsOneCue && clearsTarget && timerWithoutLook);

    int songDecks = 0;
    for (const MediaItem& item : show.library) {
        if (!item.song)
            continue;
        ++songDecks;
        ASSERT_TRUE(item.deck && item.deck->made);
        EXPECT_EQ(item.deck->made->size(), static_cast<std::size_t>(shape.slidesPerSongDeck));
        for (const MadeSlide& slide : *item.deck->made) {
            EXPECT_TRUE(slide.lyricSource && slide.boxes);
        }
    }
    EXPECT_EQ(songDecks, shape.songDeckCount);

    std::set<std::size_t> destinations;
    for (const LogicalScreen& screen : show.outputs.screens) {
        destinations.insert(screen.destination.index());
    }
    EXPECT_EQ(destinations.size(), std::variant_size_v<ScreenDestination>);
    EXPECT_EQ(show.outputs.feeds.size(), static_cast<std::size_t>(shape.feedCount));

    ASSERT_TRUE(show.cueGroups);
    for (const CueGroup& group : *show.cueGroups) {
        for (const Uuid& id : group.cueIDs)
            EXPECT_NE(show.cue(id), nullptr);
    }
}

TEST(RoundTripShows, GenerationDependsOnTheSeedAlone) {
    EXPECT_TRUE(bench::makeBenchmarkShow(bench::smallShowShape(5)) ==
                bench::makeBenchmarkShow(bench::smallShowShape(5)));
    EXPECT_FALSE(bench::makeBenchmarkShow(bench::smallShowShape(5)) ==
                 bench::makeBenchmarkShow(bench::smallShowShape(6)));
}

} // namespace
} // namespace velarion
