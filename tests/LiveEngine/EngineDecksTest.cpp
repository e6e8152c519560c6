// Live decks: stepping, the deck's background, thumbnails and lyric parts.

#include "EngineFixture.h"

#include "LiveModel/Song.h"

namespace velarion::testing {
namespace {

class Decks : public EngineFixture {
protected:
    Uuid addDeck(const std::string& name, int pages, std::optional<Backdrop> background = {}) {
        const Uuid item = addItem(name, MediaKind::deck);
        DeckInfo deck;
        for (int page = 0; page < pages; ++page)
            deck.pages.push_back(name + "/" + std::to_string(page) + ".png");
        deck.notes = std::vector<std::string>(static_cast<std::size_t>(pages), "Breathe");
        deck.background = background;
        show.library.edit(show.library.size() - 1).deck = deck;
        return item;
    }
    const SceneLayer* layerOn(LayerKind kind) const {
        const auto id = engine->stack().layerID(kind);
        for (const SceneLayer& layer : engine->audienceScene().layers)
            if (id && layer.id == *id) return &layer;
        return nullptr;
    }
};

TEST_F(Decks, SteppingDissolvesNewSlidesAndStopsAtTheEnds) {
    add("Talk", SlidesCue{addDeck("Talk", 3)});
    start();
    go();
    const SceneLayer* first = layerOn(LayerKind::slides);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->dissolveSeconds, 0.15);
    const SceneID firstID = first->id;
    EXPECT_EQ(engine->state().activeSlide, 0);
    EXPECT_EQ(engine->state().confidence.slideCount, 3);
    EXPECT_EQ(engine->state().confidence.notes, "Breathe");

    perform(command::PreviousSlide{});
    EXPECT_EQ(layerOn(LayerKind::slides)->id, firstID) << "no background: back from 0 is no change";
    perform(command::NextSlide{});
    EXPECT_NE(layerOn(LayerKind::slides)->id, firstID);
    perform(command::GoToSlide{9});
    EXPECT_EQ(engine->state().activeSlide, 2);
    const SceneID last = layerOn(LayerKind::slides)->id;
    perform(command::NextSlide{});
    EXPECT_EQ(layerOn(LayerKind::slides)->id, last);
    EXPECT_EQ(engine->state().running.size(), 1u) << "a deck never ends by stepping";
    EXPECT_EQ(engine->state().running[0].detail, "Slide 3 of 3");
}

TEST_F(Decks, ClearingALayerStopsEveryRunWithAnEntryOnIt) {
    add("Songs", SlidesCue{addDeck("Songs", 2, backdrop::Color{0xFF8000})});
    TimerCue full{CountdownMode{60}, std::nullopt, 0, true, true, std::nullopt};
    full.look = CountdownLook{CountdownLayout::fullScreen, backdrop::Color{0x0000FF}, std::nullopt};
    add("Countdown", full);
    start();
    go();
    perform(command::Clear{ClearTarget::slides});
    EXPECT_FALSE(runOf("Songs")) << "the deck's backdrop must not keep it live";
    EXPECT_FALSE(engine->stack().layerID(LayerKind::background));
    goLater();
    perform(command::Clear{ClearTarget::graphics});
    scheduler.advance(1);
    EXPECT_FALSE(runOf("Countdown"));
    EXPECT_FALSE(engine->state().timer);
    EXPECT_TRUE(engine->stack().scene().layers.empty()) << "no card comes back with the next tick";
}

TEST_F(Decks, EachScreenGetsTheLyricPartItsLineLimitAllows) {
    show.outputs.screens[0].lyricLines = 2;
    show.outputs.screens[1].lyricLines = 4;
    Song song = Song::parsing("one\ntwo\nthree\nfour\nfive\nsix\nseven\neight", LyricLook::overBackground, 8);
    const Uuid item = addDeck("Hymn", 1);
    MadeSlide slide;
    slide.id = Uuid::random();
    slide.text = "one\ntwo\nthree\nfour\nfive\nsix\nseven\neight";
    LyricSlideSource source{slide.id, song.sections.at(0).id, 0, 0, {}};
    slide.lyricSource = source;
    auto& deck = *show.library.edit(show.library.size() - 1).deck;
    deck.made = std::vector<MadeSlide>{slide};
    deck.lyricSources = std::vector<LyricSlideSource>{source};
    show.library.edit(show.library.size() - 1).song = song;
    add("Hymn", SlidesCue{item});
    start();
    go();
    EXPECT_EQ(outputs.lastApply().lyricLineLimits, (std::set<int>{2, 4}));
    EXPECT_EQ(engine->state().running[0].detail, "Slide 1 of 1 · part 1 of 4");
    perform(command::NextSlide{});
    perform(command::NextSlide{});
    perform(command::NextSlide{});
    EXPECT_EQ(engine->state().running[0].detail, "Slide 1 of 1 · part 4 of 4");
    // Part 3 of 4 is part 3 of 4 on the 2-line screen, 1 of 2 on the 4-line one.
    const auto drawn = [&](const std::string& text) {
        return std::find(slides.rendered.begin(), slides.rendered.end(), text) != slides.rendered.end();
    };
    EXPECT_TRUE(drawn("seven\neight"));
    EXPECT_TRUE(drawn("five\nsix\nseven\neight"));
    EXPECT_FALSE(drawn("one\ntwo\nthree\nfour\nfive\nsix\nseven\neight")) << "no screen shows it whole";
    EXPECT_EQ(outputs.lastApply().lyricLayerID, engine->stack().layerID(LayerKind::slides));
    perform(command::NextSlide{});
    EXPECT_EQ(engine->state().running[0].detail, "Slide 1 of 1 · part 1 of 4")
        << "past the last part of the last slide the slide shows again from its start";
}

} // namespace
} // namespace velarion::testing
