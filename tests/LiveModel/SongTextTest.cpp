// A song in words: the lyrics parser on the layouts operators paste, its
// rules for headings and detail lines, the round trip through Song::text,
// section codes, the sung order written and read with them, and the credits.

#include "LiveModel/SongRedraw.h"
#include "SongLayouts.h"

#include <algorithm>
#include <functional>
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

// Redrawing a song deck after its lyrics changed: untouched slides follow the
// song, hand edits survive, slides the operator added keep their place.

constexpr int gold = 0xFFD700;

MediaItem songDeck(const Song& song) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.name = song.title;
    item.fileName = std::string(MediaItem::madeFileName);
    return updatingSong(item, song);
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    text.replace(text.find(from), from.size(), to);
    return text;
}

const std::vector<MadeSlide>& slidesOf(const MediaItem& item) {
    return *item.deck->made;
}

std::vector<std::string> lyricsOf(const MediaItem& item) {
    std::vector<std::string> texts;
    for (const MadeSlide& slide : slidesOf(item)) {
        texts.push_back(slide.boxes && !slide.boxes->empty() ? slide.boxes->front().text : "-");
    }
    return texts;
}

MadeSlide handMadeSlide(const std::string& text) {
    MadeSlide slide;
    slide.id = Uuid::random();
    slide.layout = MadeSlide::Layout::statement;
    slide.text = text;
    return slide;
}

// The bracket song at two lines a slide: V1 C V2 C B C, one slide each.
const std::string harbour = bracketSong;
const std::string harbourEdited =
    replaced(bracketSong, "Every wave a song to you", "Every wave a hymn to you");

TEST(SongRedraw, UntouchedSlidesFollowTheNewLyricsAndKeepTheirIds) {
    const MediaItem item = songDeck(parsed(harbour));
    const MediaItem redrawn = updatingSong(item, parsed(harbourEdited));

    ASSERT_EQ(slidesOf(redrawn).size(), 6u);
    EXPECT_EQ(lyricsOf(redrawn)[0], "Morning breaks across the water\nEvery wave a hymn to you");
    for (std::size_t i = 0; i < 6; ++i) {
        const MadeSlide& slide = slidesOf(redrawn)[i];
        EXPECT_EQ(slide.id, slidesOf(item)[i].id);
        EXPECT_EQ(slide.lyricSource->id, slide.id);
        EXPECT_FALSE(hasManualLyricEdits(slide));
    }
    for (std::size_t i = 0; i < item.song->sections.size(); ++i) {
        EXPECT_EQ(redrawn.song->sections[i].id, item.song->sections[i].id);
    }
    EXPECT_EQ(redrawn.song->order, item.song->order);
}

TEST(SongRedraw, AColourChangedByHandSurvivesLyricsChanges) {
    MediaItem item = songDeck(parsed(harbour));
    MadeSlide& first = item.deck->made->front();
    first.boxes->front().color = gold;
    first.notes = "Band drops out";
    first.boxes->pop_back(); // the operator removed the credits
    TextBox added = lyricBox(LyricLook::overBackground, "Welcome!");
    first.boxes->push_back(added);
    ASSERT_TRUE(hasManualLyricEdits(first));

    const MediaItem once = updatingSong(item, parsed(harbourEdited));
    const MadeSlide& merged = slidesOf(once).front();
    EXPECT_EQ(merged.id, first.id);
    ASSERT_EQ(merged.boxes->size(), 2u);
    EXPECT_EQ(merged.boxes->at(0).color, gold);
    EXPECT_EQ(merged.boxes->at(0).text,
              "Morning breaks across the water\nEvery wave a hymn to you");
    EXPECT_EQ(merged.boxes->at(1), added);
    EXPECT_EQ(merged.notes, "Band drops out");
    // The rest of the deck follows the song as drawn.
    EXPECT_FALSE(hasManualLyricEdits(slidesOf(once)[1]));

    // And through a second change, against the new baseline.
    const MediaItem twice =
        updatingSong(once, parsed(replaced(harbourEdited, "Morning breaks", "Daylight breaks")));
    const TextBox& box = slidesOf(twice).front().boxes->at(0);
    EXPECT_EQ(box.color, gold);
    EXPECT_EQ(box.text, "Daylight breaks across the water\nEvery wave a hymn to you");
    EXPECT_EQ(slidesOf(twice).front().notes, "Band drops out");
}

TEST(SongRedraw, AHandAddedSlideKeepsItsPlaceBehindTheSlideBeforeIt) {
    MediaItem item = songDeck(parsed(harbour));
    std::vector<MadeSlide>& slides = *item.deck->made;
    slides.insert(slides.begin() + 3, handMadeSlide("Offering"));
    slides.insert(slides.begin(), handMadeSlide("Welcome"));

    // Verse 1 grows to two slides, so everything after it moves down.
    const std::string longer = replaced(harbour, "Every wave a song to you\n",
                                        "Every wave a song to you\nThird\nFourth\n");
    const MediaItem redrawn = updatingSong(item, parsed(longer));
    const std::vector<std::string> lyrics = lyricsOf(redrawn);
    ASSERT_EQ(lyrics.size(), 9u);
    EXPECT_EQ(slidesOf(redrawn)[0].text, "Welcome");
    EXPECT_EQ(lyrics[4], "Evening falls on quiet streets\nStill the tide remembers you");
    EXPECT_EQ(slidesOf(redrawn)[5].text, "Offering");
    EXPECT_EQ(lyrics[6], "Lift the lanterns, light the harbour\nWe are coming home again");
}

TEST(SongRedraw, SlidesOfAPartNoLongerSungGoUnlessEditedByHand) {
    const Song song = parsed(harbour);
    MediaItem item = songDeck(song);
    Song shorter = song;
    ASSERT_TRUE(shorter.setOrder("V1 C V2 C").empty());

    EXPECT_EQ(slidesOf(updatingSong(item, shorter)).size(), 4u);

    // The bridge slide was given a picture by hand: it stays behind the
    // slide that stood before it.
    const Uuid picture = Uuid::random();
    (*item.deck->made)[4].imageID = picture;
    const MediaItem redrawn = updatingSong(item, shorter);
    ASSERT_EQ(slidesOf(redrawn).size(), 5u);
    EXPECT_EQ(slidesOf(redrawn)[4].imageID, picture);
    EXPECT_EQ(slidesOf(redrawn)[4].id, slidesOf(item)[4].id);
}

TEST(SongRedraw, SectionIdsCarryOverByIdThenNameThenText) {
    const Song old = parsed(harbour);
    // Bridge rewritten (same name), Verse 2 renamed (same words), a new Tag.
    const Song rewritten =
        parsed(replaced(replaced(harbour, "Hold on, hold on", "Stay close, stay close"),
                        "[Verse 2]", "[Verse 3]") +
               "\n[Tag]\nHome again\n");
    const Song kept = rewritten.preservingSectionIDs(old);
    ASSERT_EQ(kept.sections.size(), 5u);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(kept.sections[i].id, old.sections[i].id) << i;
    EXPECT_EQ(kept.sections[4].id, rewritten.sections[4].id);
    EXPECT_EQ(sungOf(kept), "Verse 1 | Chorus | Verse 3 | Chorus | Bridge | Chorus | Tag");
    EXPECT_EQ(orderIndicesOf(kept), orderIndicesOf(rewritten));

    // Each old id once: numbered now, the first chorus still takes the old
    // id by its words, and the second doesn't.
    const Song twoChoruses = parsed(harbour + "[Chorus]\nA new chorus\n").preservingSectionIDs(old);
    EXPECT_EQ(twoChoruses.sections[1].id, old.sections[1].id);
    EXPECT_NE(twoChoruses.sections[4].id, old.sections[1].id);

    // A section renamed in place keeps its id, even when another now has its
    // old name; a left-over section whose id another holds gets a new one.
    Song edited = old;
    edited.sections[0].name = "Intro";
    edited.sections[1].name = "Verse 1";
    edited.sections[2] = {old.sections[0].id, "Coda", "Fade away"};
    const Song swapped = edited.preservingSectionIDs(old);
    EXPECT_EQ(swapped.sections[0].id, old.sections[0].id);
    EXPECT_EQ(swapped.sections[1].id, old.sections[1].id);
    for (const SongSection& section : old.sections)
        EXPECT_NE(swapped.sections[2].id, section.id);
    EXPECT_EQ(sungOf(swapped), "Intro | Verse 1 | Verse 1 | Bridge | Verse 1");
}

} // namespace
} // namespace velarion
