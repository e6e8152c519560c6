// Redrawing a song deck after its lyrics changed: untouched slides follow the
// song, hand edits survive, slides the operator added keep their place.

#include "LiveModel/SongRedraw.h"

#include "SongLayouts.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace velarion {
namespace {

using namespace songTesting;

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
