// How lyrics divide into slides, and the slides a song draws: notes, credits,
// looks and the sources a redraw relies on.

#include "ShowEditFixtures.h"
#include "SongLayouts.h"

#include <gtest/gtest.h>
#include <sstream>

namespace velarion {
namespace {

using namespace songTesting;
using Texts = std::vector<std::string>;

std::vector<std::string> numberedLines(int count) {
    std::vector<std::string> lines;
    for (int i = 1; i <= count; ++i)
        lines.push_back(std::to_string(i));
    return lines;
}

std::string sizesOf(const std::vector<std::vector<std::string>>& parts) {
    std::string sizes;
    for (const auto& part : parts)
        sizes += std::to_string(part.size());
    return sizes;
}

TEST(SongSlides, PartsAreTheFewestAndEvenlyFilled) {
    EXPECT_EQ(sizesOf(Song::parts(numberedLines(5), 4)), "32");
    EXPECT_EQ(sizesOf(Song::parts(numberedLines(9), 4)), "333");
    EXPECT_EQ(sizesOf(Song::parts(numberedLines(10), 4)), "442");
    EXPECT_EQ(sizesOf(Song::parts(numberedLines(3), 0)), "111");
    EXPECT_TRUE(Song::parts({}, 4).empty());
    EXPECT_EQ(Song::parts(numberedLines(5), 4)[1], (Texts{"4", "5"}));
}

TEST(SongSlides, ASectionBreaksAtBlankLinesThenDividesEachParagraph) {
    const SongSection section{Uuid::random(), "Verse 1", "a\nb\nc\nd\ne\n\n\n\nf\n\ng\nh"};
    EXPECT_EQ(section.slides(4), (Texts{"a\nb\nc", "d\ne", "f", "g\nh"}));
    EXPECT_EQ(section.slides(20), (Texts{"a\nb\nc\nd\ne", "f", "g\nh"}));
    EXPECT_TRUE((SongSection{Uuid::random(), "Empty", "\n\n"}).slides(2).empty());
}

TEST(SongSlides, MadeSlidesFollowTheSungOrderWithNotesAndSources) {
    const Song song = parsed(bracketSong, 1);
    const std::vector<MadeSlide> slides = song.madeSlides();
    // Six sung parts of two lines each, one line a slide.
    ASSERT_EQ(slides.size(), 12u);
    EXPECT_EQ(slides[0].notes, "");
    EXPECT_EQ(slides[1].notes, "Next: Chorus");
    EXPECT_EQ(slides[7].notes, "Next: Bridge");
    EXPECT_EQ(slides[11].notes, "End of song");

    const MadeSlide& secondChorus = slides[7];
    EXPECT_EQ(secondChorus.sectionName, "Chorus");
    EXPECT_EQ(secondChorus.boxes->at(0).text, "We are coming home again");
    ASSERT_TRUE(secondChorus.lyricSource.has_value());
    const LyricSlideSource& source = *secondChorus.lyricSource;
    EXPECT_EQ(source.id, secondChorus.id);
    EXPECT_EQ(source.sectionID, song.sections[1].id);
    EXPECT_EQ(source.occurrence, 1);
    EXPECT_EQ(source.page, 1);
}

TEST(SongSlides, LyricLinesReadTheLyricBoxAsItStands) {
    const Song song = parsed(numberedHymn, 4);
    std::vector<MadeSlide> slides = song.madeSlides();
    MadeSlide& slide = slides[1];
    EXPECT_EQ(song.lyricLines(slide).size(), 4u);
    EXPECT_EQ(song.lyricLines(slide).front(), "2. 'Twas grace that taught my heart to fear,");

    slide.boxes->front().text = "Fixed line\n\nAnother";
    EXPECT_EQ(song.lyricLines(slide), (Texts{"Fixed line", "Another"}));
    // An older slide without boxes reads what the song gives its place.
    slide.boxes.reset();
    EXPECT_EQ(song.lyricLines(slide).back(), "The hour I first believed.");
}

using namespace editTesting;

// A show written as words, one cue a word, "|" between sections. A word is
// a kind letter (S Spotify song, P Spotify playlist, M Music song, G lower
// third), optional marks (+ With Previous, > After Previous, ! disabled),
// then the cue's name: "S:A S+:B".
Show showOf(const std::string& text) {
    std::vector<Section> sections{makeSection("1", {})};
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word == "|") {
            sections.push_back(makeSection(std::to_string(sections.size() + 1), {}));
            continue;
        }
        const std::size_t colon = word.find(':');
        const std::string marks = word.substr(1, colon - 1);
        const Follow follow = marks.find('+') != std::string::npos   ? Follow::withPrevious
                              : marks.find('>') != std::string::npos ? Follow::afterPrevious
                                                                     : Follow::manual;
        const CueKind kind = word[0] == 'S'   ? CueKind(SpotifyTrack{})
                             : word[0] == 'P' ? CueKind(StreamPlaylistCue{})
                             : word[0] == 'M' ? CueKind(MusicTrack{})
                                              : CueKind(GraphicCue{});
        sections.back().cues.push_back(
            makeCue(word.substr(colon + 1), follow, marks.find('!') == std::string::npos, kind));
    }
    return makeShow(std::move(sections));
}

TEST(SongClashes, GivesEachPairOfOneAppThatStartsTogether) {
    const struct {
        const char* show;
        const char* clashes; // "earlier>later", space-separated
    } cases[] = {
        {"S:A S+:B", "A>B"},
        {"S:A S:B", ""},
        {"S:A S>:B", ""},
        {"S:A M+:B", ""},
        {"P:A G+:X S+:B", "A>B"},
        {"M:A M+:B M+:C", "A>B B>C"},
        {"S:A S!+:B S+:C", "A>C"},
        {"S!:A S+:B", ""},
        {"S:A | S+:B", "A>B"},
        {"S:A M+:B S:C S+:D M+:E", "C>D"},
    };
    for (const auto& row : cases) {
        const Show show = showOf(row.show);
        std::string found;
        for (const SongClash& clash : show.songClashes()) {
            found += (found.empty() ? "" : " ") + clash.earlier->name + ">" + clash.later->name;
        }
        EXPECT_EQ(found, row.clashes) << row.show;
    }
}

} // namespace
} // namespace velarion
