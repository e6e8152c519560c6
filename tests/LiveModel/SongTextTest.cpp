// A song in words: section codes, the sung order written and read with them,
// and the credits line.

#include "SongLayouts.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using namespace songTesting;

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
    EXPECT_EQ(codesOf(songOfSections({"Chorus", "Chorus 2", "Coda"})), "C C2 C3");
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

TEST(SongText, SungSectionsSkipEntriesWithoutASection) {
    Song song = parsed(bracketSong);
    song.order.insert(song.order.begin() + 1, Uuid::random());
    EXPECT_EQ(sungOf(song), "Verse 1 | Chorus | Verse 2 | Chorus | Bridge | Chorus");
    EXPECT_EQ(song.orderText(), "V1 C V2 C B C");
    EXPECT_EQ(song.section(song.sections[3].id)->name, "Bridge");
    EXPECT_EQ(song.section(Uuid::random()), nullptr);
}

TEST(SongText, CreditsJoinWhatIsThere) {
    Song song;
    EXPECT_EQ(song.credits(), "");
    song.title = "Riverside";
    song.copyright = "2019 Old Mill Music";
    EXPECT_EQ(song.credits(), "Riverside · © 2019 Old Mill Music");
    song.author = "Sam Ortiz";
    song.copyright = "© 2019 Old Mill Music";
    song.ccli = "7654321";
    EXPECT_EQ(song.credits(),
              "Riverside · Sam Ortiz · © 2019 Old Mill Music · CCLI Song # 7654321");
    song.title.clear();
    song.author.clear();
    song.copyright.clear();
    EXPECT_EQ(song.credits(), "CCLI Song # 7654321");
}

} // namespace
} // namespace velarion
