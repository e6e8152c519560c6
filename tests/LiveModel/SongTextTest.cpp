// A song in words: the lyrics parser on the layouts operators paste, its
// rules for headings and detail lines, the round trip through Song::text,
// section codes, the sung order written and read with them, and the credits.

#include "SongLayouts.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using namespace songTesting;
using Sections = std::vector<std::string>;

Song songOfSections(const std::vector<std::string>& names) {
    Song song;
    for (const std::string& name : names) {
        song.sections.push_back({Uuid::random(), name, name + " words"});
    }
    return song;
}

std::string codesOf(const Song& song) {
    const auto codes = song.codes();
    std::string text;
    for (const SongSection& section : song.sections) {
        if (!text.empty())
            text += ' ';
        text += codes.at(section.id);
    }
    return text;
}

TEST(SongText, CodesAreFirstLettersAndNumberUniqueInTheSong) {
    EXPECT_EQ(codesOf(songOfSections({"Verse 1", "Chorus", "Pre-Chorus", "Pre Chorus 2", "Bridge",
                                      "Verse 12", "Verse02", "Ending 3b"})),
              "V1 C PC PC2 B V12 V2 E3");
    // Taken codes, in any case, take the lowest free number from 2.
    EXPECT_EQ(
        codesOf(songOfSections({"Chorus", "Coda", "Chorus 2", "chorus", "Vamp 1", "Verse 1"})),
        "C C2 C22 C3 V1 V12");
    // A letter beyond ASCII is taken whole; a name of digits is its number.
    EXPECT_EQ(codesOf(songOfSections({"Étoile du soir", "1"})), "ÉDS 1");
}

TEST(SongText, OrderTextAndSetOrderSpeakTheSameCodes) {
    Song song = parsed(preChorusSong);
    EXPECT_EQ(song.orderText(), "V1 PC C V2 PC C");

    const std::vector<std::string> unknown = song.setOrder("v1 c,\nV2  C  b Chorus\npre-chorus X");
    EXPECT_EQ(unknown, (std::vector<std::string>{"b", "X"}));
    EXPECT_EQ(sungOf(song), "Verse 1 | Chorus | Verse 2 | Chorus | Chorus | Pre-chorus");
    EXPECT_EQ(song.orderText(), "V1 C V2 C C PC");

    // Names with their blanks removed.
    Song bracket = parsed(bracketSong);
    EXPECT_TRUE(bracket.setOrder("Verse1 VERSE2 bridge").empty());
    EXPECT_EQ(bracket.orderText(), "V1 V2 B");
    // Nothing known: an empty order and every word back.
    EXPECT_EQ(bracket.setOrder("Q R").size(), 2u);
    EXPECT_TRUE(bracket.order.empty());
}

TEST(SongParsing, HymnWithNumberedVersesAndNoHeadingsGivesOneVersePerBlock) {
    const Song song = parsed(numberedHymn);
    ASSERT_EQ(song.sections.size(), 3u);
    EXPECT_EQ(sungOf(song), "Verse 1 | Verse 2 | Verse 3");
    EXPECT_EQ(song.sections[0].text, "1. Amazing grace! How sweet the sound\n"
                                     "That saved a wretch like me!\n"
                                     "I once was lost, but now am found;\n"
                                     "Was blind, but now I see.");
    EXPECT_TRUE(song.title.empty());
    EXPECT_TRUE(song.showsCredits);
}

TEST(SongParsing, ABlockPrintedTwiceIsTheChorusAndVersesCountWithoutIt) {
    const Song hymn = parsed(refrainHymn);
    EXPECT_EQ(sectionsOf(hymn),
              (Sections{"Verse 1: Blessed assurance, Jesus is mine!/O what a foretaste of glory "
                        "divine!",
                        "Chorus: This is my story, this is my song,/Praising my Savior all the "
                        "day long.",
                        "Verse 2: Perfect submission, perfect delight,/Visions of rapture now "
                        "burst on my sight."}));
    EXPECT_EQ(sungOf(hymn), "Verse 1 | Chorus | Verse 2 | Chorus");

    // A, B, A: the chorus comes first and the verse is still Verse 1.
    const Song aba = parsed("Sing it loud\n\nQuiet verse\n\nSing it loud\n");
    EXPECT_EQ(sectionsOf(aba), (Sections{"Chorus: Sing it loud", "Verse 1: Quiet verse"}));
    EXPECT_EQ(orderIndicesOf(aba), (std::vector<int>{0, 1, 0}));

    // A second block sung twice is Chorus 2.
    const Song two = parsed("Hey\n\nHo\n\nHey\n\nHo\n");
    EXPECT_EQ(sectionsOf(two), (Sections{"Chorus: Hey", "Chorus 2: Ho"}));
}

TEST(SongParsing, BracketHeadingsWithTheChorusRepeatedByItsHeadingAlone) {
    const Song song = parsed(bracketSong);
    EXPECT_EQ(song.title, "Harbour Lights");
    EXPECT_EQ(song.author, "Dana Reyes");
    EXPECT_EQ(sectionsOf(song),
              (Sections{"Verse 1: Morning breaks across the water/Every wave a song to you",
                        "Chorus: Lift the lanterns, light the harbour/We are coming home again",
                        "Verse 2: Evening falls on quiet streets/Still the tide remembers you",
                        "Bridge: Hold on, hold on/The night is nearly gone"}));
    EXPECT_EQ(orderIndicesOf(song), (std::vector<int>{0, 1, 2, 1, 3, 1}));
}

TEST(SongParsing, PreChorusAndDetailLinesAtTheBottom) {
    const Song song = parsed(preChorusSong);
    EXPECT_EQ(sungOf(song), "Verse 1 | Pre-chorus | Chorus | Verse 2 | Pre-chorus | Chorus");
    EXPECT_EQ(song.sections.size(), 4u);
    EXPECT_EQ(song.ccli, "7654321");
    EXPECT_EQ(song.copyright, "2021 Northfield Songs");
    EXPECT_EQ(song.author, "Sam Ortiz, Lee Park");
    EXPECT_EQ(song.sections[3].text, "Rain is tapping on the glass\nCandles flicker, shadows fall");
}

TEST(SongParsing, RunsOfBlankLinesBecomeOneSlideBreakUnderAHeading) {
    const Song song = parsed(blankRunSong);
    EXPECT_EQ(sectionsOf(song),
              (Sections{"Verse 1: First line here/Second line here//Third line here",
                        "Chorus: Only the chorus line"}));
    // Without headings they divide blocks, and never make empty ones.
    EXPECT_EQ(sectionsOf(parsed("\n\nA\nB\n\n\n\nC\n\n\n")),
              (Sections{"Verse 1: A/B", "Verse 2: C"}));
    // Blank lines only: no sections at all.
    EXPECT_TRUE(parsed("\n \n\t\n").sections.empty());
}

TEST(SongParsing, WhatMakesAHeading) {
    // Lyric lines, not headings, make the block an unnamed "Verse 1".
    const std::pair<const char*, const char*> cases[] = {
        {"Verse 2", "Verse 2"}, {"verse 2:", "Verse 2"}, {"CHORUS", "Chorus"}, {"pre chorus 3", "Pre Chorus 3"},
        {"[Anything, even words: here]", "Anything, even words: here"}, {"[  Tag  ]", "Tag"},
        {"Verse two", "Verse 1"}, {"Chorus x2", "Verse 1"}, {"[ ]", "Verse 1"},
        {"Bridge bridge bridge bridge", "Verse 1"}};
    for (const auto& [heading, name] : cases) {
        const Song song = parsed(std::string(heading) + "\nWords\n");
        ASSERT_FALSE(song.sections.empty()) << heading;
        EXPECT_EQ(song.sections.front().name, name) << heading;
    }
}

TEST(SongParsing, TextParsesBackToTheSameSong) {
    std::vector<std::pair<std::string, std::string>> cases = allLayouts();
    cases.emplace_back("numberedRepeats", "[Chorus]\nA\n[Chorus]\nB\n[chorus]\n[Verse]\nC\n");
    // A heading alone would repeat the second verse, so the first is written out.
    cases.emplace_back("repeatOfAnEarlierNamesake", "[Verse 1]\nA\n[Verse 1]\nB\n[Verse 1]\nA\n");
    cases.emplace_back("crlf", withLineEnds(bracketSong, "\r\n"));
    for (const auto& [name, text] : cases) {
        const Song song = parsed(text);
        const Song again = parsed(song.text());
        EXPECT_EQ(sectionsOf(again), sectionsOf(song)) << name;
        EXPECT_EQ(orderIndicesOf(again), orderIndicesOf(song)) << name;
        EXPECT_EQ(std::tie(again.title, again.author, again.copyright, again.ccli),
                  std::tie(song.title, song.author, song.copyright, song.ccli))
            << name;
    }
    // Repeats are written as their heading alone.
    EXPECT_NE(parsed(bracketSong)
                  .text()
                  .find("[Verse 2]\nEvening falls on quiet streets\nStill the "
                        "tide remembers you\n\n[Chorus]\n\n[Bridge]\n"),
              std::string::npos);
}

} // namespace
} // namespace velarion
