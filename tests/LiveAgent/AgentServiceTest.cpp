// The service's entry checks, the tier gate, the read tools and the run
// tools against a real engine in virtual time.

#include "AgentServiceFixture.h"

#include "LiveAgent/AgentServiceTools.h"

namespace velarion::testing {
namespace {

class AgentService_ : public AgentServiceFixture {
protected:
    // The id of the cue set_next leaves marked Next.
    std::string nextID(const std::string& arguments) {
        const JSONValue state = ok("set_next", arguments);
        const JSONValue* next = state["next"];
        return next ? textOf((*next)["id"]) : "<none>";
    }
};

TEST_F(AgentService_, EntryChecksComeInOrderAndAnswerInWords) {
    EXPECT_EQ(refusal("get_show"), "No show is open. Use new_show or open_show.");
    host->displays = {{"HDMI-1", "Projector", 1920, 1080, false}};
    const JSONValue displays = ok("list_displays");
    ASSERT_EQ(displays.arrayValue()->size(), 1u);
    EXPECT_EQ(textOf((*displays.arrayValue())[0]["pixels"]), "1920×1080");
    // Passes the show check; a host that can't look finds nothing.
    EXPECT_EQ(ok("list_ndi_sources")["sources"]->text(), "[]");

    open();
    EXPECT_EQ(refusal("x"), "There's no tool called x.");
    EXPECT_EQ(refusal("fire_cue"), "Give cue for fire_cue.");
    const AgentResponse response = call("get_show");
    EXPECT_EQ(response.id, 7);

    host.reset();
    EXPECT_EQ(refusal("get_show"), "Velarion isn't ready.");
}

TEST_F(AgentService_, TierGateRefusesWithTheSwitchesNameAndNotesNothing) {
    video("Walk in");
    open();
    const std::size_t historyBefore = host->engine->history().size();
    host->tiers = {AgentTier::observe, AgentTier::edit};
    EXPECT_EQ(refusal("go"), "Running the show isn't allowed. The operator can turn on \"Run the show\" in "
                             "Settings → Agent control.");
    host->tiers = {AgentTier::observe, AgentTier::run};
    EXPECT_EQ(refusal("add_section", R"({"title":"Finale"})"),
              "Building and editing isn't allowed. The operator can turn on \"Build and edit shows\" in "
              "Settings → Agent control.");

    host->tiers = {AgentTier::observe};
    EXPECT_TRUE(ok("get_show")["sections"]);
    EXPECT_EQ(ok("launch_app"), JSONValue(JSONValue::Object{{"running", true}}));
    EXPECT_TRUE(host->notes.empty());
    EXPECT_EQ(host->engine->history().size(), historyBefore);
    EXPECT_TRUE(host->engine->state().running.empty());
    EXPECT_EQ(host->current(), show);
}

TEST_F(AgentService_, GetShowDescribesCuesByTheirSettingsKeys) {
    show.sections.edit(0).plannedStart = 9 * 60 + 5;
    show.sections.edit(0).plannedMinutes = 20;
    Cue& first = video("Walk in");
    first.groupDuration = 4;
    add("Countdown", TimerCue{CountToMode{19 * 60 + 30}, "Doors", 60});
    add("Welcome", MessageCue{"Hello", MessageTarget::audience, std::nullopt}, 0, Follow::withPrevious);
    open();
    host->openPackage = ShowPackage("/home/op/.local/share/Velarion/Unsaved/x.velarion");

    const JSONValue summary = ok("get_show");
    EXPECT_EQ(textOf(summary["file"]), "/home/op/.local/share/Velarion/Unsaved/x.velarion");
    EXPECT_EQ(summary["saved_to_a_file"]->boolValue(), false);
    const JSONValue& section = (*summary["sections"]->arrayValue())[0];
    EXPECT_EQ(textOf(section["start"]), "09:05");
    EXPECT_EQ(textOf(section["minutes"]), "20");
    const JSONValue::Array& cues = *section["cues"]->arrayValue();
    ASSERT_EQ(cues.size(), 3u);
    EXPECT_EQ(textOf(cues[0]["type"]), "video");
    EXPECT_EQ(textOf(cues[0]["group_duration"]), "4");
    EXPECT_EQ(textOf(cues[0]["layer"]), "media");
    EXPECT_TRUE(cues[0]["out_point"]->isNull());
    EXPECT_EQ(textOf(cues[1]["number"]), "2");
    EXPECT_EQ(textOf(cues[1]["mode"]), "count_to");
    EXPECT_EQ(textOf(cues[1]["time"]), "19:30");
    EXPECT_EQ(textOf(cues[2]["follow"]), "with_previous");
    EXPECT_EQ(textOf(cues[2]["to"]), "audience");
    EXPECT_EQ(textOf((*summary["library"]->arrayValue())[0]["kind"]), "video");
    EXPECT_EQ(summary["screens"]->objectValue()->count("network_feeds"), 1u);
}

TEST_F(AgentService_, CueReferencesFollowIdThenNumberThenName) {
    video("Intro");
    video("Walk in");
    const Uuid called4 = video("4").id;
    const Uuid fourth = video("Keynote").id;
    video("walk IN", 1);
    open();

    // "4" and 4 are the same reference: the fourth cue, not the cue called "4".
    const JSONValue number = 4;
    EXPECT_EQ(agentService::findCue(&number, host->current()).id, fourth);
    EXPECT_EQ(nextID(R"({"cue":"4"})"), fourth.text());
    EXPECT_EQ(nextID("{\"cue\":\"" + called4.text() + "\"}"), called4.text());
    EXPECT_EQ(refusal("fire_cue", R"({"cue":"walk in"})"),
              "More than one cue is called \"walk in\". Use its id or number.");
    EXPECT_EQ(refusal("fire_cue", R"({"cue":"Outro"})"), "There's no cue \"Outro\". get_show lists them.");
    EXPECT_EQ(refusal("fire_cue", R"({"cue":""})"), "Say which cue: its id, number, or name.");
    EXPECT_TRUE(host->engine->state().running.empty());
}

TEST_F(AgentService_, RunToolsDriveTheEngineAndNoteEachAction) {
    video("Walk in");
    open();
    const JSONValue state = ok("fire_cue", R"({"cue":"Walk in"})");
    ASSERT_EQ(state["running"]->arrayValue()->size(), 1u);
    EXPECT_EQ(textOf((*(*state["running"]->arrayValue())[0]["cue"])["name"]), "Walk in");
    EXPECT_EQ(host->notes.back(), "Agent: fired Walk in");

    ok("send_message", R"({"text":"Wrap up","to":"audience"})");
    EXPECT_EQ(textOf(ok("get_state")["audience_message"]), "Wrap up");
    const JSONValue cleared = ok("send_message", R"({"text":"  ","to":"audience"})");
    EXPECT_EQ(cleared["audience_message"], nullptr);
    EXPECT_EQ(host->notes.back(), "Agent: cleared message");

    EXPECT_EQ(ok("safe_slide", R"({"on":true})")["safe_slide_up"]->boolValue(), true);
    ok("panic");
    EXPECT_EQ(textOf(ok("get_state")["panic"]), "fading");
    EXPECT_EQ(host->notes.back(), "Agent: Panic");
}

TEST_F(AgentService_, QuitIsRefusedWhileCuesPlayUnlessForcedAndHappensAfterTheAnswer) {
    video("Walk in");
    video("Loop", 0, Follow::withPrevious);
    open();
    ok("go");
    ASSERT_EQ(host->engine->state().running.size(), 2u);
    EXPECT_EQ(refusal("quit_app"),
              "2 cues are playing; quitting would stop the screens and sound. Pass force: true to do it anyway.");
    host->engine->perform(command::Stop{host->engine->state().running.front().id});
    host->scheduler.advance(1);
    ASSERT_EQ(host->engine->state().running.size(), 1u);
    EXPECT_EQ(refusal("restart_app", R"({"force":false})"),
              "1 cue is playing; restarting would stop the screens and sound. Pass force: true to do it anyway.");

    EXPECT_EQ(ok("restart_app", R"({"force":true})"), JSONValue(JSONValue::Object{{"restarting", true}}));
    EXPECT_EQ(host->notes.back(), "Agent restarted Velarion");
    host->scheduler.advance(0.3);
    EXPECT_TRUE(host->quits.empty());
    host->scheduler.advance(0.15);
    EXPECT_EQ(host->quits, std::vector<bool>{true});
}

TEST_F(AgentService_, ShowModeRefusalsComeBackInTheApplicationsWords) {
    open();
    EXPECT_EQ(ok("lock_show"), JSONValue(JSONValue::Object{{"locked", true}}));
    EXPECT_EQ(ok("get_state")["locked"]->boolValue(), true);
    const std::string refused = refusal("add_section", R"({"title":"Finale"})");
    EXPECT_FALSE(refused.empty());
    EXPECT_EQ(refused, host->status);
    EXPECT_EQ(host->current(), show);
    EXPECT_EQ(refusal("undo"), "There's nothing to undo.");
}

} // namespace
} // namespace velarion::testing
