// The two forms of an output setup read alike: screens, feeds, looks,
// destinations and lyric line limits.

#include "LiveModel/OutputSetup.h"

#include "LiveModel/ScreenPreset.h"
#include "ShowBuilder.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using L = LayerKind;
using Ids = std::vector<std::string>;

NetworkFeed feed(std::string name, NetworkFeedSource source = feedSource::Audience{},
                 std::optional<int> lyricLines = {}) {
    NetworkFeed result;
    result.id = Uuid::random();
    result.name = std::move(name);
    result.layers = {L::slides, L::messages};
    result.source = std::move(source);
    result.lyricLines = lyricLines;
    return result;
}

using testing::makeScreen;

// An old setup with every kind of screen the old form knows.
OutputSetup oldSetup() {
    OutputSetup setup;
    setup.audienceDisplayIDs = {"HDMI-1", "DP-2"};
    setup.screenLayers["DP-2"] = {L::background, L::slides};
    setup.screenLyricLines["DP-2"] = 12;
    setup.screenLyricLines["HDMI-1"] = 0;
    setup.audienceWindowForTesting = true;
    setup.confidenceDisplayID = "DP-3";
    setup.feeds = {feed("Stream", feedSource::Audience{}, 2),
                   feed("Stage feed", feedSource::Stage{}),
                   feed("Mirror", feedSource::Screen{"DP-2"})};
    return setup;
}

Ids ids(const std::vector<LogicalScreen>& screens) {
    Ids result;
    for (const auto& s : screens)
        result.push_back(s.id);
    return result;
}

TEST(OutputScreens, AnOldSetupListsAudienceTestWindowStageThenFeeds) {
    const OutputSetup setup = oldSetup();
    const auto screens = setup.effectiveScreens();
    ASSERT_EQ(screens.size(), 7u);
    const auto& feeds = setup.feeds;
    EXPECT_EQ(ids(screens), (Ids{"HDMI-1", "DP-2", "test-window", "DP-3", feeds[0].id.text(),
                                 feeds[1].id.text(), feeds[2].id.text()}));

    EXPECT_EQ(screens[1].name, "Audience 2");
    EXPECT_EQ(screens[1].layers, (std::vector{L::background, L::slides}));
    EXPECT_EQ(screens[2].destination, ScreenDestination(destination::Display{"test-window"}));
    const std::vector<ScreenRole> roles = {ScreenRole::audience, ScreenRole::audience, ScreenRole::audience,
                                           ScreenRole::stage,    ScreenRole::stream,   ScreenRole::stage,
                                           ScreenRole::stream};
    for (std::size_t i = 0; i < roles.size(); ++i) EXPECT_EQ(screens[i].role, roles[i]) << i;
    EXPECT_EQ(screens[4].destination, ScreenDestination(destination::Ndi{feeds[0].id}));

    // Visual cues address every screen but the Stage ones.
    EXPECT_EQ(setup.visualDestinations(),
              (Ids{"HDMI-1", "DP-2", "test-window", feeds[0].id.text(), feeds[2].id.text()}));
}

TEST(OutputScreens, MigratingAnOldSetupChangesNothingReadersSee) {
    const OutputSetup before = oldSetup();
    OutputSetup after = before;
    ASSERT_TRUE(after.materializeScreens());
    EXPECT_TRUE(after.usesLogicalScreens);
    EXPECT_EQ(after.screens, before.effectiveScreens());
    EXPECT_EQ(after.effectiveScreens(), before.effectiveScreens());
    EXPECT_EQ(after.effectiveFeeds(), before.effectiveFeeds());
    EXPECT_EQ(after.visualDestinations(), before.visualDestinations());
    EXPECT_EQ(after.lyricLineLimits(), before.lyricLineLimits());
    // The old fields are kept for an older release reading the file.
    EXPECT_EQ(after.audienceDisplayIDs, before.audienceDisplayIDs);
    EXPECT_EQ(after.confidenceDisplayID, before.confidenceDisplayID);

    // It runs once: a second call leaves later edits of the screens alone.
    after.screens.pop_back();
    const OutputSetup edited = after;
    EXPECT_FALSE(after.materializeScreens());
    EXPECT_EQ(after, edited);
}

TEST(OutputFeeds, OnlyFeedsAScreenNamesAreSentInScreenOrder) {
    OutputSetup setup;
    setup.feeds = {feed("Unused"), feed("Second"), feed("First")};
    // Without logical screens every feed is sent.
    EXPECT_EQ(setup.effectiveFeeds(), setup.feeds);

    setup.usesLogicalScreens = true;
    setup.screens = {makeScreen("a", destination::Ndi{setup.feeds[2].id}, ScreenRole::stream),
                     makeScreen("main", destination::Display{"HDMI-1"}),
                     makeScreen("b", destination::Ndi{setup.feeds[1].id}, ScreenRole::stream),
                     makeScreen("again", destination::Ndi{setup.feeds[2].id}, ScreenRole::stream),
                     makeScreen("lost", destination::Ndi{Uuid::random()}, ScreenRole::stream)};
    const auto sent = setup.effectiveFeeds();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0].name, "First");
    EXPECT_EQ(sent[1].name, "Second");
    EXPECT_EQ(setup.feeds.size(), 3u); // not sent is not deleted
}

TEST(OutputLooks, ScreensResolveTheirLookOrTheirOwnSettings) {
    OutputSetup setup;
    setup.usesLogicalScreens = true;
    const OutputLook lyricsOnly{Uuid::random(), "Lyrics", {L::slides}, 2};
    setup.looks = {lyricsOnly};
    LogicalScreen withLook = makeScreen("main", destination::Display{"HDMI-1"});
    withLook.lookID = lyricsOnly.id;
    LogicalScreen own = makeScreen("side", destination::Display{"HDMI-2"}, ScreenRole::audience, 4);
    own.layers = {L::background, L::messages};
    LogicalScreen stale = own;
    stale.lookID = Uuid::random();
    setup.screens = {withLook, own};

    EXPECT_EQ(setup.resolvedLook(withLook), lyricsOnly);
    const OutputLook custom = setup.resolvedLook(own);
    EXPECT_EQ(custom.id.text(), "00000000-0000-0000-0000-000000000000");
    EXPECT_EQ(custom.name, "Custom");
    EXPECT_EQ(custom.layers, own.layers);
    EXPECT_EQ(custom.lyricLines, 4);
    EXPECT_EQ(setup.resolvedLook(stale), custom);

    EXPECT_FALSE(setup.removeLook(Uuid::random()));
    ASSERT_TRUE(setup.removeLook(lyricsOnly.id));
    EXPECT_TRUE(setup.looks.empty());
    const LogicalScreen& now = setup.screens[0];
    EXPECT_FALSE(now.lookID);
    EXPECT_EQ(now.layers, std::vector{L::slides});
    EXPECT_EQ(now.lyricLines, 2);
    EXPECT_EQ(setup.screens[1], own); // untouched
}

TEST(OutputLyricLimits, StrictestLimitOfOnePictureAppliesToAllItsScreens) {
    OutputSetup setup;
    setup.usesLogicalScreens = true;
    const OutputLook twoLines{Uuid::random(), "Two lines", {L::slides}, 2};
    setup.looks = {twoLines};
    setup.feeds = {feed("Mirror of main", feedSource::Screen{"main"}),
                   feed("Own stream", feedSource::Audience{}),
                   feed("Mirror of side", feedSource::Screen{"side"})};
    LogicalScreen side = makeScreen("side", destination::Display{"HDMI-2"});
    side.lookID = twoLines.id;
    setup.screens = {
        makeScreen("main", destination::Display{"HDMI-1"}, ScreenRole::audience, 6),
        makeScreen("main again", destination::Display{"HDMI-1"}, ScreenRole::audience, 3),
        side,
        makeScreen("mirror", destination::Ndi{setup.feeds[0].id}, ScreenRole::stream),
        makeScreen("own", destination::Ndi{setup.feeds[1].id}, ScreenRole::stream, 99),
        makeScreen("free", destination::Display{"HDMI-3"}),
        makeScreen("speaker", destination::Display{"DP-1"}, ScreenRole::stage, 1),
        makeScreen("spare", destination::Placeholder{}, ScreenRole::audience, 1),
        makeScreen("mirror side", destination::Ndi{setup.feeds[2].id}, ScreenRole::stream, 5),
    };
    const std::map<std::string, int> expected = {
        {"main", 3}, {"main again", 3}, {"mirror", 3}, {"own", 8}, {"side", 2}, {"mirror side", 2}};
    EXPECT_EQ(setup.lyricLineLimits(), expected);

    // Feeds that mirror each other in a loop still share one picture.
    setup.feeds = {feed("A", feedSource::Screen{"b"}), feed("B", feedSource::Screen{"a"})};
    setup.screens = {makeScreen("a", destination::Ndi{setup.feeds[0].id}, ScreenRole::stream, 4),
                     makeScreen("b", destination::Ndi{setup.feeds[1].id}, ScreenRole::stream, 6)};
    EXPECT_EQ(setup.lyricLineLimits(), (std::map<std::string, int>{{"a", 4}, {"b", 4}}));
}

TEST(NetworkFeedFormat, PictureSizeAndRateLimits) {
    const struct {
        int width, height;
        VideoFrameRate rate;
        bool valid;
    } cases[] = {
        {1280, 721, {30000, 1001}, true}, {1281, 720, {30, 1}, false}, {1280, 8194, {30, 1}, false},
        {1280, 720, {1, 2}, false},       {1280, 720, {121, 1}, false},
    };
    for (const auto& c : cases) {
        NetworkFeed sized = feed("Stream");
        sized.width = c.width;
        sized.height = c.height;
        sized.frameRate = c.rate;
        EXPECT_EQ(sized.hasValidFormat(), c.valid) << c.width << "x" << c.height << " " << c.rate.name();
    }
    NetworkFeed ntsc = feed("Stream");
    ntsc.frameRate = {30000, 1001};
    EXPECT_EQ(ntsc.framesPerSecond(), 30);
}

// Screen presets: which layer sets they stand for, and the words that
// describe a preset or a custom set.

TEST(ScreenPreset, RecognisesEachPresetWhateverTheOrder) {
    EXPECT_EQ(screenPreset::fromLayers(
                  {L::messages, L::holding, L::graphics, L::slides, L::media, L::background}),
              ScreenPreset::everything);
    EXPECT_EQ(screenPreset::fromLayers({L::messages, L::graphics, L::messages}),
              ScreenPreset::overlay);
    for (std::size_t i = 0; i < enumCount<ScreenPreset>(); ++i) {
        const auto preset = static_cast<ScreenPreset>(i);
        EXPECT_EQ(screenPreset::fromLayers(screenPreset::layers(preset)), preset);
    }
    EXPECT_EQ(screenPreset::fromLayers({L::slides}), std::nullopt);
    EXPECT_EQ(screenPreset::fromLayers({L::background, L::media, L::slides}), std::nullopt);
    EXPECT_EQ(screenPreset::fromLayers({}), std::nullopt);
}

} // namespace
} // namespace velarion
