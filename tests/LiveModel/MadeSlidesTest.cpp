// Deck operations: section names, imported pages made editable, the older
// page forms, what an editor and a section key land on, and the background.

#include "LiveModel/MediaItem.h"
#include "LiveModel/SlideTemplate.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace velarion {
namespace {

using Names = std::vector<std::string>;

MadeSlide slideNamed(std::optional<std::string> sectionName = {},
                     std::optional<Names> sectionNames = {}) {
    MadeSlide slide;
    slide.id = Uuid::random();
    slide.sectionName = std::move(sectionName);
    slide.sectionNames = std::move(sectionNames);
    return slide;
}

DeckInfo madeDeck(std::size_t count) {
    DeckInfo deck;
    deck.source = "Velarion";
    deck.made.emplace();
    for (std::size_t i = 0; i < count; ++i)
        deck.made->push_back(slideNamed());
    return deck;
}

TEST(DeckEditing, ImportedPagesBecomeSlidesStandingForThem) {
    DeckInfo deck;
    deck.pages = {"Imported/p1.png", "Imported/p2.png", "Imported/p3.png"};
    deck.notes = {"Say hello", "Pause here"};
    deck.groups = {{"Intro", 1}};
    deck.source = "Talk.pdf";
    EXPECT_FALSE(deck.hasLegacyNativePages()); // nothing made yet: nothing to bring up

    ASSERT_TRUE(deck.prepareForEditing());
    ASSERT_TRUE(deck.made);
    const auto& made = *deck.made;
    ASSERT_EQ(made.size(), 3u);
    EXPECT_EQ(made[0].effectiveSectionNames(), Names{});
    EXPECT_EQ(made[1].effectiveSectionNames(), Names{"Intro"});
    EXPECT_EQ(made[2].effectiveSectionNames(), Names{});
    EXPECT_EQ(made[1].notes, "Pause here");
    EXPECT_EQ(made[2].notes, "");
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(made[i].importedPage, deck.pages[i]);
        // The page's picture is the whole slide: no placeholder words over it.
        EXPECT_TRUE(made[i].effectiveBoxes().empty());
    }
    EXPECT_NE(made[0].id, made[1].id);
    // The pages are what the slides stand for, so nothing needs redrawing.
    EXPECT_FALSE(deck.hasLegacyNativePages());

    DeckInfo shared;
    shared.pages = {"a.png"};
    shared.groups = {{"Welcome", 0}, {"Opening", 0}, {"Stray", 7}};
    ASSERT_TRUE(shared.prepareForEditing());
    EXPECT_EQ((*shared.made)[0].effectiveSectionNames(), (Names{"Welcome", "Opening"}));

    const DeckInfo prepared = deck;
    EXPECT_FALSE(deck.prepareForEditing());
    EXPECT_EQ(deck, prepared);
}

TEST(DeckSectionKeys, StepsThroughGroupsOfOneLetterAndWraps) {
    DeckInfo deck;
    deck.groups = {{"Verse 1", 0}, {"Chorus", 4}, {"", 6}, {"verse 2", 8}, {"Bridge", 12}};
    EXPECT_EQ(deck.slide("v", 0), 8);
    EXPECT_EQ(deck.slide("V", 2), 8);
    EXPECT_EQ(deck.slide("v", 8), 0); // wraps past the last match
    EXPECT_EQ(deck.slide("c", 9), 4);
    EXPECT_EQ(deck.slide("b", 12), 12); // the only match, even from itself
    EXPECT_EQ(deck.slide("x", 0), std::nullopt);
    EXPECT_EQ(deck.slide("", 0), std::nullopt); // the unnamed group is never a target

    // A whole name picks that group rather than the next of its letter.
    EXPECT_EQ(deck.slide("Verse 1", 2), 0);
    EXPECT_EQ(deck.slide("VERSE 2", 9), 8);
    EXPECT_EQ(deck.slide("Vamp", 0), 8);
}

TEST(DeckBackground, ThePresentationBackgroundShowsThroughMadeSlides) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.deck = madeDeck(3);
    const Uuid image = Uuid::random();
    (*item.deck->made)[2].imageID = image;

    const MediaItem applied = item.applyingPresentationBackground();
    EXPECT_EQ(applied.deck->background, Backdrop(backdrop::BuiltIn{BuiltInBackdrop::drift}));
    EXPECT_EQ(applied.deck->backgroundCoveringPageCount(), 0);
    // A slide with its own picture keeps it.
    EXPECT_FALSE((*applied.deck->made)[2].isClear.value_or(false));
    EXPECT_EQ((*applied.deck->made)[2].imageID, image);

    MediaItem video;
    video.kind = MediaKind::video;
    EXPECT_EQ(video.applyingPresentationBackground(), video);
}

// The clamp that keeps a text box on its slide.
TEST(TextBoxClamp, KeepsEveryBoxOnTheSlide) {
    TextBox box;
    box.x = 0.9;
    box.width = 0.5;
    box.size = 4;
    EXPECT_DOUBLE_EQ(box.clamped().x, 0.5);
    EXPECT_DOUBLE_EQ(box.clamped().size, 8);
    box.size = 1000;
    EXPECT_DOUBLE_EQ(box.clamped().size, 400);

    // Size first, then position against the clamped size.
    box.width = 0.001;
    box.height = 3;
    box.x = -2;
    box.y = 0.5;
    const TextBox clamped = box.clamped();
    EXPECT_DOUBLE_EQ(clamped.width, 0.05);
    EXPECT_DOUBLE_EQ(clamped.height, 1);
    EXPECT_DOUBLE_EQ(clamped.x, 0);
    EXPECT_DOUBLE_EQ(clamped.y, 0);

    // A damaged value can't take a box off the slide either.
    box.x = std::nan("");
    box.width = std::nan("");
    box.y = std::numeric_limits<double>::infinity();
    box.height = 0.2;
    const TextBox repaired = box.clamped();
    EXPECT_DOUBLE_EQ(repaired.width, 0.05);
    EXPECT_DOUBLE_EQ(repaired.x, 0);
    EXPECT_DOUBLE_EQ(repaired.y, 0.8);
}

} // namespace
} // namespace velarion
