// set_screens and set_network_feeds: every refusal leaves the output setup
// exactly as it was, and a success is one edit that one undo takes back.

#include "AgentServiceFixture.h"

#include "LiveModel/ScreenPreset.h"

namespace velarion::testing {
namespace {

class AgentScreens : public AgentServiceFixture {
protected:
    AgentScreens() {
        host->displays = {{"HDMI-1", "Projector", 1920, 1080, false},
                          {"DP-2", "Confidence", 1280, 720, false},
                          {"eDP-1", "Built-in", 2560, 1600, true}};
        feed.id = Uuid::random();
        feed.name = "Stream";
        feed.layers = screenPreset::layers(ScreenPreset::everything);
        show.outputs.feeds = {feed};
    }
    // A show in the logical form: the projector, the stream's screen, and
    // the Stage Display.
    void openLogical() {
        LogicalScreen projector{"main", "Main", ScreenRole::audience, destination::Display{"HDMI-1"},
                                screenPreset::layers(ScreenPreset::everything)};
        LogicalScreen stream{"stream", "Stream", ScreenRole::stream, destination::Ndi{feed.id},
                             screenPreset::layers(ScreenPreset::clean)};
        LogicalScreen stage{"stage", "Stage", ScreenRole::stage, destination::Display{"DP-2"},
                            screenPreset::layers(ScreenPreset::everything)};
        show.outputs.usesLogicalScreens = true;
        show.outputs.screens = {projector, stream, stage};
        open();
    }
    void expectRefused(const std::string& tool, const std::string& arguments, const std::string& sentence) {
        const OutputSetup before = host->current().outputs;
        EXPECT_EQ(refusal(tool, arguments), sentence) << arguments;
        EXPECT_EQ(host->current().outputs, before) << arguments;
    }

    NetworkFeed feed;
};

TEST_F(AgentScreens, SetScreensRefusalsLeaveTheSetupUntouched) {
    openLogical();
    expectRefused("set_screens", "{}", "Give screens, logical_screens, looks, speaker_display, or test_window.");
    expectRefused("set_screens", R"({"logical_screens":[],"screens":[]})",
                  "Use logical_screens separately from the legacy display settings.");
    expectRefused("set_screens",
                  R"({"logical_screens":[{"name":"A","destination":{"type":"display","id":"HDMI-1"}},
                                         {"name":"B","destination":{"type":"display","id":"Projector"}}]})",
                  "Each display or NDI feed can be connected to only one logical screen.");
    expectRefused("set_screens", R"({"logical_screens":[{"id":"x"},{"id":"x"}]})", "A screen id was listed twice.");
    expectRefused("set_screens", R"({"logical_screens":[{"destination":{"type":"display"}}]})",
                  "A display destination needs an id.");
    expectRefused("set_screens", R"({"logical_screens":[{"destination":{"type":"placeholder","id":"HDMI-1"}}]})",
                  "A placeholder has no connection id.");
    expectRefused("set_screens", "{\"logical_screens\":[{\"name\":\"Lobby\",\"destination\":{\"type\":\"ndi\",\"id\":\"" +
                                     Uuid::random().text() + "\"}}]}",
                  "Lobby refers to a missing NDI feed.");
    expectRefused("set_screens", R"({"logical_screens":[{"name":"A","look_id":"Warm","shows":"clean"}]})",
                  "Give a screen's look_id or its custom shows/lyric_lines, not both.");
    expectRefused("set_screens", "{\"logical_screens\":[{\"name\":\"A\",\"look_id\":\"" + Uuid::random().text() + "\"}]}",
                  "A refers to a missing look.");
    expectRefused("set_screens", R"({"logical_screens":[{"name":"A","shows":[]}]})", "A picture must show at least one layer.");
    expectRefused("set_screens", R"({"looks":[{"name":"Warm"},{"name":"warm"}]})", "Saved looks need unique ids and names.");
    host->displays.push_back({"HDMI-2", "Projector", 1920, 1080, false});
    expectRefused("set_screens", R"({"screens":[{"display":"Projector"}]})",
                  "More than one display is called Projector. Use its id from list_displays.");
    EXPECT_TRUE(host->notes.empty());
}

TEST_F(AgentScreens, SetNetworkFeedsRefusalsLeaveTheSetupUntouched) {
    openLogical();
    const std::string id = feed.id.text();
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A"},{"name":"a"}]})",
                  "Each NDI output needs a different name: a is repeated.");
    expectRefused("set_network_feeds", "{\"feeds\":[{\"id\":\"" + id + "\",\"name\":\"A\"},{\"id\":\"" + id + "\",\"name\":\"B\"}]}",
                  "An NDI feed id was listed more than once.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","preset":"clean","layers":["media"]}]})",
                  "Give preset or layers for an NDI feed, not both.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","transparent":true,"alpha_mode":"off"}]})",
                  "transparent and alpha_mode disagree for A.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","fps":25,"frame_rate":{"numerator":30000,"denominator":1001}}]})",
                  "fps and frame_rate disagree for A.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","frame_rate":{"numerator":1,"denominator":2}}]})",
                  "The frame_rate ratio for A must be from 1–120 frames per second.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","source":"stage","preset":"clean"}]})",
                  "NDI feed A uses the stage picture; its preset, layers, and lyric_lines do not apply.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","source":{"screen":"main"},"lyric_lines":2}]})",
                  "NDI feed A mirrors a screen. Edit that screen's look, or choose source audience before setting "
                  "feed layers or lyric_lines.");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","source":{"screen":"gone"}}]})",
                  "A refers to a missing source screen: gone");
    expectRefused("set_network_feeds", R"({"feeds":[{"name":"A","width":1281}]})",
                  "A needs layers, an even width from 16–8192, a height from 16–8192, and a frame rate from 1–120.");
    expectRefused("set_network_feeds", R"({"feeds":[{"id":"feed-1","name":"A"}]})",
                  "\"feed-1\" isn't a valid NDI feed id. get_show lists them.");
}

} // namespace
} // namespace velarion::testing
