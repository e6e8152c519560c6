// The output manager against display and picture doubles, in virtual time.

#include "FakeOutputDisplays.h"
#include "ShowBuilder.h"
#include "VirtualScheduler.h"

#include "LiveEngine/ScreenOutputManager.h"

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

OutputSetup setupOf(std::vector<LogicalScreen> screens) {
    OutputSetup setup;
    setup.usesLogicalScreens = true;
    setup.screens = std::move(screens);
    return setup;
}

SceneLayer colorLayer() {
    SceneLayer layer;
    layer.id = Uuid::random();
    return layer;
}

std::vector<SceneID> idsOf(const OutputScene& scene) {
    std::vector<SceneID> ids;
    for (const SceneLayer& layer : scene.layers) ids.push_back(layer.id);
    return ids;
}

struct ManagerFixture : ::testing::Test {
    VirtualScheduler scheduler;
    FakeOutputDisplays displays;
    FakeScreenPictures pictures;
    bool covered = false;
    ScreenOutputManager manager{scheduler, displays, pictures, [this] { return covered; }};
    std::vector<std::vector<OutputHealth>> reported;

    ManagerFixture() {
        displays.connected = {DisplayInfo{"HDMI-1", "HDMI-1", 1920, 1080, true},
                              DisplayInfo{"HDMI-2", "HDMI-2", 1280, 720, false}};
        manager.setOnHealthChange([this](const std::vector<OutputHealth>& health) { reported.push_back(health); });
    }
};

TEST_F(ManagerFixture, HealthTableSaysWhyEachScreenHasNoPicture) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"}),
                               makeScreen("b", destination::Display{"HDMI-1"}),
                               makeScreen("c", destination::Display{"DP-9"}),
                               makeScreen("d", destination::Placeholder{}),
                               makeScreen("e", destination::Display{"test-window"}),
                               makeScreen("f", destination::Ndi{Uuid::random()}),
                               makeScreen("g", destination::Display{"HDMI-2"}, ScreenRole::stage)}));
    scheduler.runDue();
    struct Row {
        bool connected;
        bool placeholder;
        std::optional<std::string> detail;
        OutputHealth::Role role;
    };
    const Row expected[] = {
        {true, false, std::nullopt, OutputHealth::Role::audience},
        {false, false, "This display is already assigned to another screen.", OutputHealth::Role::audience},
        {false, false, "The selected display is disconnected.", OutputHealth::Role::audience},
        {false, true, "Placeholder — preview only; no signal is sent.", OutputHealth::Role::audience},
        {false, false, "Test window is closed. Open it from the Program menu.", OutputHealth::Role::audience},
        {false, false, "The selected NDI configuration is missing.", OutputHealth::Role::feed},
        {true, false, std::nullopt, OutputHealth::Role::confidence},
    };
    ASSERT_EQ(reported.size(), 1u);
    const auto& health = reported.back();
    ASSERT_EQ(health.size(), std::size(expected));
    for (std::size_t i = 0; i < health.size(); ++i) {
        SCOPED_TRACE(health[i].name);
        EXPECT_EQ(health[i].isConnected, expected[i].connected);
        EXPECT_EQ(health[i].isPlaceholder, expected[i].placeholder);
        EXPECT_EQ(health[i].detail, expected[i].detail);
        EXPECT_EQ(health[i].role, expected[i].role);
    }
    // One window a display, none for the placeholder, the feed or the closed test window.
    EXPECT_EQ(displays.openCount(), 2);
    manager.setTestWindowVisible("e", true);
    EXPECT_TRUE(manager.testWindowIsVisible("e"));
    ASSERT_NE(displays.window(""), nullptr);
    // The operator closes it with its close button: the row turns red within the second.
    displays.windows.back()->closedByOperator = true;
    scheduler.advance(1.1);
    EXPECT_FALSE(manager.testWindowIsVisible("e"));
    EXPECT_EQ(reported.back()[4].detail, std::optional<std::string>("Test window is closed. Open it from the Program menu."));
}

TEST_F(ManagerFixture, EachScreenShowsOnlyItsRoutedLayersOfItsKinds) {
    LogicalScreen slidesOnly = makeScreen("b", destination::Display{"HDMI-2"});
    slidesOnly.layers = {LayerKind::slides};
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"}), slidesOnly}));
    const SceneLayer toA = colorLayer(), toB = colorLayer(), everywhere = colorLayer(), media = colorLayer();
    OutputScene scene;
    scene.layers = {toA, toB, everywhere, media};
    const LayerKinds kinds{{toA.id, LayerKind::slides}, {toB.id, LayerKind::slides},
                           {everywhere.id, LayerKind::slides}, {media.id, LayerKind::media}};
    const LayerRoutes routes{{toA.id, {"a"}}, {toB.id, {"b"}}};
    manager.apply(scene, kinds, {}, routes, {}, std::nullopt);
    EXPECT_EQ(idsOf(displays.window("HDMI-1")->shown.back()), (std::vector{toA.id, everywhere.id, media.id}));
    EXPECT_EQ(idsOf(displays.window("HDMI-2")->shown.back()), (std::vector{toB.id, everywhere.id}));
    EXPECT_EQ(manager.programLayerIDs(), (std::set{toA.id, everywhere.id, media.id}));
}

TEST_F(ManagerFixture, ADisplayThatGoesAndComesBackGetsItsPictureBack) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"}),
                               makeScreen("b", destination::Display{"HDMI-2"})}));
    OutputScene scene;
    scene.layers = {colorLayer()};
    manager.apply(scene, {}, {}, {}, {}, std::nullopt);
    const FakeWindowRecord* first = displays.window("HDMI-1");

    displays.unplug("HDMI-2");
    scheduler.runDue();
    EXPECT_EQ(displays.window("HDMI-2"), nullptr);
    EXPECT_EQ(reported.back()[1].detail, std::optional<std::string>("The selected display is disconnected."));
    scene.layers.push_back(colorLayer());
    manager.apply(scene, {}, {}, {}, {}, std::nullopt);
    EXPECT_EQ(displays.window("HDMI-1"), first); // the other screen kept its window and goes on
    EXPECT_EQ(first->shown.back(), scene);

    displays.plug("HDMI-2");
    scheduler.runDue();
    ASSERT_NE(displays.window("HDMI-2"), nullptr);
    EXPECT_EQ(displays.window("HDMI-2")->shown.back(), scene);
    EXPECT_TRUE(reported.back()[1].isConnected);
    EXPECT_EQ(displays.window("HDMI-1"), first);
}

TEST_F(ManagerFixture, IdentifyAndPatternsRefuseUnderSafeSlideOrPanic) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"})}));
    const OutputScene normal = *manager.pictureOf("a");
    covered = true;
    EXPECT_EQ(manager.identify("a"),
              std::optional<std::string>("Screen identification is unavailable while Safe Slide or Panic is active."));
    EXPECT_EQ(manager.setTestPattern("a", OutputTestPattern::grid),
              std::optional<std::string>("Screen tests are unavailable while Safe Slide or Panic is active."));
    EXPECT_EQ(*manager.pictureOf("a"), normal);
    covered = false;
    EXPECT_EQ(manager.setTestPattern("a", OutputTestPattern::grid), std::nullopt);
    EXPECT_NE(*manager.pictureOf("a"), normal);
    manager.setTestPattern("a", std::nullopt);
    EXPECT_EQ(*manager.pictureOf("a"), normal);
}

TEST_F(ManagerFixture, PanicSafeSlideAndClearEndTestsAndIdentification) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"})}));
    const OutputScene normal = *manager.pictureOf("a");
    manager.setTestPattern("a", OutputTestPattern::colorBars);
    manager.identify("a");
    manager.clearDiagnostics();
    EXPECT_EQ(*manager.pictureOf("a"), normal);
    EXPECT_EQ(displays.window("HDMI-1")->shown.back(), normal);
    scheduler.advance(6); // the cancelled identification task draws nothing more
    EXPECT_EQ(displays.window("HDMI-1")->shown.back(), normal);
}

struct SceneCollector final : SceneSink {
    void sceneChanged(const OutputScene& scene, const SceneSurfaces&, double) override { scenes.push_back(scene); }
    std::vector<OutputScene> scenes;
};

TEST_F(ManagerFixture, ProgramPreviewAndMirrorsFollowTheSelectedOutput) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"}),
                               makeScreen("b", destination::Display{"HDMI-2"})}));
    auto mirror = std::make_shared<SceneCollector>();
    manager.addMirror(mirror);
    manager.showProgramPreview();
    const FakeWindowRecord* preview = displays.window("");
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(preview->title, "Program preview");
    const SceneLayer toB = colorLayer();
    OutputScene scene;
    scene.layers = {toB};
    manager.apply(scene, {}, {}, {{toB.id, {"b"}}}, {}, std::nullopt);
    EXPECT_TRUE(preview->shown.back().layers.empty()); // "a" is the program and doesn't get it
    manager.selectProgramOutput("b");
    EXPECT_EQ(idsOf(preview->shown.back()), std::vector{toB.id});
    EXPECT_EQ(mirror->scenes.back(), preview->shown.back());
    manager.identify("b"); // the preview shows what the program screen shows
    EXPECT_EQ(preview->shown.back(), displays.window("HDMI-2")->shown.back());
}

TEST_F(ManagerFixture, AWindowThatFellBackKeepsItsPictureAndSaysWhy) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"})}));
    displays.windows.back()->failure = "drawn in software";
    scheduler.advance(1.1); // the health timer sees it
    ASSERT_FALSE(reported.empty());
    EXPECT_TRUE(reported.back()[0].isConnected);
    EXPECT_EQ(reported.back()[0].detail, std::optional<std::string>("drawn in software"));
}

TEST_F(ManagerFixture, TwoHundredLayersAndToolsOnScreensWithoutWindowsAreHarmless) {
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"}),
                               makeScreen("gone", destination::Display{"no-such-display"})}));
    OutputScene scene;
    for (int layer = 0; layer < 200; ++layer) scene.layers.push_back(colorLayer());
    manager.apply(scene, {}, {}, {}, {}, std::nullopt);
    EXPECT_EQ(manager.identify("gone"), std::nullopt);
    EXPECT_EQ(manager.setTestPattern("not-a-screen", OutputTestPattern::grid), std::nullopt);
    EXPECT_EQ(displays.window("HDMI-1")->shown.back().layers.size(), 200u);
}

TEST_F(ManagerFixture, StagePictureIsDrawnAtMostOnceASecond) {
    manager.configure(setupOf({makeScreen("s", destination::Display{"HDMI-2"}, ScreenRole::stage)}));
    ConfidenceState confidence;
    const double start = scheduler.wallNow();
    for (int step = 0; step < 10; ++step) {
        confidence.notes = "note " + std::to_string(step); // a change every 0.1 s
        manager.updateStage(confidence, std::nullopt, std::nullopt, scheduler.wallNow());
        scheduler.advance(0.1);
    }
    EXPECT_EQ(manager.stageRenders(), 1);
    scheduler.advance(1);
    EXPECT_EQ(manager.stageRenders(), 2); // the last change, drawn in the next second
    EXPECT_EQ(pictures.stages.back().confidence.notes, "note 9");
    manager.updateStage(confidence, std::nullopt, std::nullopt, start + 1.5);
    EXPECT_EQ(manager.stageRenders(), 2); // nothing new in that second
    EXPECT_EQ(displays.window("HDMI-2")->shown.back().layers.size(), 1u);
}

TEST_F(ManagerFixture, ProgramOutputNames) {
    EXPECT_EQ(manager.programOutputName(), "Composition preview — no output");
    manager.configure(setupOf({makeScreen("a", destination::Display{"HDMI-1"})}));
    EXPECT_EQ(manager.programOutputName(), "Screen a");
    manager.selectProgramOutput("gone");
    EXPECT_EQ(manager.programOutputName(), "The selected picture source is missing.");
    EXPECT_EQ(manager.programOutputID(), std::nullopt);
}

} // namespace
} // namespace velarion::testing
