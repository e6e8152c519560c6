// Pictures across screens: what a new picture displaces, what it leaves,
// and the scenes and routes the outputs are given.

#include "EngineFixture.h"
#include "LiveEngine/PictureCache.h"
#include "LiveEngine/VisualStack.h"
#include "LiveModel/Song.h"

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

using Pictures = EngineFixture;

std::optional<SceneLayer> layerWithID(const OutputScene& scene, const SceneID& id) {
    for (const SceneLayer& layer : scene.layers)
        if (layer.id == id) return layer;
    return std::nullopt;
}

TEST_F(Pictures, APictureForOneScreenLeavesTheOldOneOnTheOthers) {
    image("Wide");
    image("Left").visualOutputIDs = std::vector<std::string>{"A"};
    start();
    go();
    const Uuid wideRun = runOf("Wide")->id;
    const SceneID wideLayer = *engine->stack().layerID(LayerKind::media);
    goLater();
    EXPECT_TRUE(runOf("Wide")) << "still showing on B";
    EXPECT_EQ(engine->audienceLayerRoutes().at(wideLayer), DestinationKeys{"B"});
    const SceneID leftLayer = *engine->stack().layerID(LayerKind::media);
    EXPECT_EQ(engine->audienceLayerRoutes().at(leftLayer), (DestinationKeys{"A", "_program"}));
    EXPECT_EQ(outputs.lastApply().routes, engine->audienceLayerRoutes());
    EXPECT_EQ(engine->state().programRunID, runOf("Left")->id);
    EXPECT_EQ(engine->stack().layerRuns().at(wideLayer), wideRun) << "the same picture, not shown again";
}

TEST_F(Pictures, APictureCoveringEveryScreenClearsTheOldOneWithItsFade) {
    image("Left").visualOutputIDs = std::vector<std::string>{"A"};
    image("Wide");
    std::get<ImageCue>(show.sections.edit(0).cues.edit(1).kind).fadeIn = 1.5;
    start();
    go();
    const SceneID leftLayer = *engine->stack().layerID(LayerKind::media);
    goLater();
    EXPECT_FALSE(runOf("Left"));
    EXPECT_TRUE(logged("Stopped Left"));
    // One more scene carries the old layer with the new picture's fade …
    const auto applies = outputs.applied.size();
    const auto leaving = layerWithID(outputs.applied[applies - 1].scene, leftLayer);
    ASSERT_TRUE(leaving);
    EXPECT_EQ(leaving->dissolveSeconds, 1.5);
    // … and the next publish, straight after this turn, leaves it out.
    scheduler.runDue();
    EXPECT_FALSE(layerWithID(outputs.lastScene(), leftLayer));
}

TEST_F(Pictures, AVideoGoesUpWhenPreparedAndItsEndFiresTheFollower) {
    video("Film");
    graphic("Credits", std::nullopt, Follow::afterPrevious);
    players.defaultVideoBehaviour.durationSeconds = 4;
    start();
    go();
    EXPECT_FALSE(engine->stack().layer(runOf("Film")->id)) << "not before the video is ready";
    scheduler.advance(0.1);
    const auto* film = runOf("Film");
    ASSERT_TRUE(film && film->video);
    EXPECT_EQ(engine->stack().layer(film->id), LayerKind::media);
    EXPECT_TRUE(film->video->isPlaying());
    EXPECT_TRUE(engine->surfaces().contains(film->video->id()));
    EXPECT_EQ(engine->state().running[0].durationSeconds, 10) << "the library's length";
    const Uuid filmRun = film->id;

    scheduler.advance(4);
    EXPECT_FALSE(runOf("Film"));
    EXPECT_TRUE(runOf("Credits"));
    EXPECT_FALSE(engine->stack().layer(filmRun));
}

TEST_F(Pictures, AHeldLastFrameOutlivesItsRunWithItsRoutes) {
    video("Film").visualOutputIDs = std::vector<std::string>{"B"};
    std::get<VideoCue>(show.sections.edit(0).cues.edit(0).kind).holdLastFrame = true;
    players.defaultVideoBehaviour.durationSeconds = 2;
    start();
    go();
    scheduler.advance(0.1);
    const Uuid runID = runOf("Film")->id;
    const SceneID surface = runOf("Film")->video->id();
    scheduler.advance(2.5);
    EXPECT_FALSE(runOf("Film"));
    const SceneID layer = *engine->stack().layerID(LayerKind::media);
    EXPECT_EQ(engine->stack().runID(LayerKind::media), runID);
    EXPECT_TRUE(engine->surfaces().contains(surface)) << "the frame still shows";
    EXPECT_EQ(engine->audienceLayerRoutes().at(layer), (DestinationKeys{"B", "_program"}));

    perform(command::Clear{ClearTarget::media, 0});
    scheduler.runDue();
    EXPECT_FALSE(engine->surfaces().contains(surface));
    EXPECT_FALSE(engine->visualRoutes().contains(runID));
}

TEST_F(Pictures, AVideoThatFailsToPrepareSaysWhy) {
    video("Broken");
    video("Gone");
    players.videoBehaviours["/shows/Test.velarion/Media/Broken.mp4"].failure =
        VideoSurfaceError{VideoSurfaceError::Case::noVideoTrack, ""};
    players.missingPaths.insert("/shows/Test.velarion/Media/Gone.mp4");
    start();
    go();
    scheduler.advance(0.1);
    EXPECT_TRUE(logged("Broken didn't play — " +
                       VideoSurfaceError{VideoSurfaceError::Case::noVideoTrack, ""}.text()));
    goLater();
    EXPECT_TRUE(logged("Gone didn't play — the video is missing"));
    EXPECT_TRUE(engine->runs().empty());
}

TEST_F(Pictures, AClearCueStopsItsTargetAndReleasesItsFollower) {
    graphic("Title", std::nullopt);
    image("Photo", Follow::withPrevious);
    clearCue("Blank", ClearTarget::everything);
    graphic("Then", std::nullopt, Follow::afterPrevious);
    add("Stop title", ClearCue{ClearTarget::everything, 0, Uuid::random()});
    start();
    go();
    goLater();
    EXPECT_TRUE(logged("Cleared everything"));
    EXPECT_EQ(runningNames(), std::vector<std::string>{"Then"});
    goLater();
    EXPECT_TRUE(logged("That cue wasn't running"));
}

// The engine's picture cache keeps to its byte bound, least recently used first.
StillImage pixels(int width) {
    return *StillImage::fromBGRA(width, 1, std::vector<std::uint8_t>(static_cast<std::size_t>(width) * 4));
}

TEST(PictureCache, DropsTheLeastRecentlyUsedToStayWithinItsBytes) {
    PictureCache cache(100); // bytes
    cache.insert("a", pixels(10));
    cache.insert("b", pixels(10));
    ASSERT_TRUE(cache.find("a")); // a is now the more recent
    cache.insert("c", pixels(10));
    EXPECT_TRUE(cache.find("a"));
    EXPECT_FALSE(cache.find("b"));
    EXPECT_TRUE(cache.find("c"));
    EXPECT_EQ(cache.bytes(), 80u);
    cache.insert("a", pixels(5)); // replaced, not counted twice
    EXPECT_EQ(cache.bytes(), 60u);
    cache.insert("huge", pixels(26));
    EXPECT_FALSE(cache.find("huge")) << "larger than the whole bound";
    EXPECT_EQ(cache.size(), 2u);
}

// Live decks: stepping, the deck's background, thumbnails and lyric parts.
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

SceneContent colour(double red) {
    return SceneColorContent{SceneColor{red, 0, 0, 1}};
}

std::vector<Uuid> sceneIDs(const OutputScene& scene) {
    std::vector<Uuid> ids;
    for (const SceneLayer& layer : scene.layers)
        ids.push_back(layer.id);
    return ids;
}

Uuid showMedia(VisualStack& stack, std::optional<Uuid> run, double fadeSeconds = 0,
               std::optional<CueGeometry> geometry = std::nullopt) {
    return stack.show(colour(0.5), LayerKind::media, run, fadeSeconds, SceneScaling::fit, geometry);
}

TEST(VisualStackTest, NewerPictureRetainsOlderAndClearingItLeavesForOneScene) {
    VisualStack stack;
    const Uuid runA = Uuid::random(), runB = Uuid::random(), runC = Uuid::random();
    const Uuid a = showMedia(stack, runA);
    const Uuid b = showMedia(stack, runB);
    EXPECT_EQ(stack.layerID(LayerKind::media), b);
    EXPECT_EQ(stack.runID(LayerKind::media), runB);
    ASSERT_EQ(stack.retained.size(), 1u);
    EXPECT_TRUE(stack.retained.contains(a));
    EXPECT_EQ(stack.layer(runA), LayerKind::media);
    EXPECT_EQ(sceneIDs(stack.scene()), (std::vector<Uuid>{a, b}));

    // With two pictures underneath, the newer of them comes back.
    const Uuid c = showMedia(stack, runC);
    stack.clear(runC, 2);
    EXPECT_EQ(stack.layerID(LayerKind::media), b);
    EXPECT_TRUE(stack.retained.contains(a));
    const OutputScene last = stack.scene();
    ASSERT_EQ(sceneIDs(last), (std::vector<Uuid>{a, b, c}));
    EXPECT_EQ(last.layers[2].dissolveSeconds, 2);
    EXPECT_EQ(last.destinationID, Uuid::parse("5B6C7D8E-0000-4000-8000-00000000A0D1"));
    EXPECT_TRUE(stack.settle());
    EXPECT_FALSE(stack.settle());
    EXPECT_EQ(sceneIDs(stack.scene()), (std::vector<Uuid>{a, b}));
    EXPECT_FALSE(stack.order.contains(c));

    stack.clear(runB, 1);
    EXPECT_EQ(stack.layerID(LayerKind::media), a);
    EXPECT_TRUE(stack.retained.empty());
}

TEST(VisualStackTest, SameRunShowingAgainReplacesInPlace) {
    VisualStack stack;
    const Uuid run = Uuid::random(), other = Uuid::random();
    const Uuid first = showMedia(stack, run);
    stack.exclude({"side"}, first);
    const Uuid below = showMedia(stack, other);
    // The run's picture is now retained under another's; showing again still
    // replaces it, and the other run's picture moves underneath.
    const Uuid second = showMedia(stack, run);
    EXPECT_NE(second, first);
    EXPECT_GT(stack.order.at(second), stack.order.at(below));
    EXPECT_FALSE(stack.order.contains(first));
    EXPECT_TRUE(stack.leaving.empty());
    ASSERT_NE(stack.entry(run, LayerKind::media), nullptr);
    EXPECT_EQ(stack.entry(run, LayerKind::media)->excludedDestinations, DestinationKeys{"side"});
    EXPECT_EQ(sceneIDs(stack.scene()), (std::vector<Uuid>{below, second}));

    // An engine picture (no run) replaces the active engine picture.
    const Uuid engineFirst = showMedia(stack, std::nullopt);
    const Uuid engineSecond = showMedia(stack, std::nullopt);
    EXPECT_FALSE(stack.layerKinds().contains(engineFirst));
    EXPECT_EQ(stack.layerID(LayerKind::media), engineSecond);
}

TEST(VisualStackTest, SceneLimitsDissolveAndPlacesGeometry) {
    VisualStack stack;
    const Uuid run = Uuid::random();
    showMedia(stack, run, 12, CueGeometry{0.5, 0, 0, 30, 1.5});
    const SceneLayer layer = stack.scene().layers.at(0);
    EXPECT_EQ(layer.dissolveSeconds, 10);
    EXPECT_EQ(stack.entry(run, LayerKind::media)->dissolveSeconds, 12);
    EXPECT_EQ(layer.frame, (SceneRect{0.25, 0.25, 0.5, 0.5}));
    EXPECT_EQ(layer.rotationDegrees, -30);
    EXPECT_EQ(layer.opacity, 1);

    stack.setGeometry(CueGeometry{1, 0.25, -0.1, 0, -2}, run);
    stack.clear(run, -3);
    const SceneLayer leaving = stack.scene().layers.at(0);
    EXPECT_EQ(leaving.dissolveSeconds, 0);
    EXPECT_EQ(leaving.opacity, 0);
    EXPECT_DOUBLE_EQ(leaving.frame.x, 0.25);
    EXPECT_DOUBLE_EQ(leaving.frame.y, -0.1);
}

TEST(VisualStackTest, LeavingEntriesKeepTheirRunButNoLayer) {
    VisualStack stack;
    const Uuid run = Uuid::random();
    const Uuid layerID = showMedia(stack, run);
    stack.exclude({"stage"}, layerID);
    stack.clearLayer(layerID, 1);
    EXPECT_EQ(stack.layer(run), std::nullopt);
    EXPECT_EQ(stack.entry(run, LayerKind::media), nullptr);
    EXPECT_EQ(stack.layerRuns().at(layerID), run);

    stack.exclude({"side"}, layerID);
    EXPECT_EQ(stack.leaving.at(layerID).second.excludedDestinations,
              (DestinationKeys{"side", "stage"}));
    EXPECT_EQ(stack.layerExclusions().at(layerID), (DestinationKeys{"side", "stage"}));
}

TEST(VisualStackTest, UpdateChangesContentInPlace) {
    VisualStack stack;
    const Uuid run = Uuid::random();
    const Uuid layerID = showMedia(stack, run);
    stack.update(colour(0.9), LayerKind::media, run);
    stack.update(colour(0.1), LayerKind::media, Uuid::random()); // another run: no match
    EXPECT_EQ(stack.layerID(LayerKind::media), layerID);
    EXPECT_EQ(stack.scene().layers.at(0).content, colour(0.9));
}

} // namespace
} // namespace velarion::testing
