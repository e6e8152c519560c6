// Building shows through the agent: sections, cues of each type, cue groups,
// songs and the whole-show tools, with their refusals leaving the show as
// it was.

#include "AgentServiceFixture.h"
#include "TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <future>

namespace velarion::testing {
namespace {

using AgentBuilding = AgentServiceFixture;

TEST_F(AgentBuilding, AddCueBuildsEachTypeWithItsDefaultName) {
    const Uuid intro = video("Intro").id;
    addItem("Loop.mp4", MediaKind::video, 20);
    open();

    const JSONValue added = ok("add_cue", R"({"type":"video","media":"loop.mp4","layer":"background","loops":true})");
    EXPECT_EQ(textOf(added["name"]), "Loop.mp4");
    EXPECT_EQ(textOf(added["layer"]), "background");
    EXPECT_EQ(added["loops"]->boolValue(), true);
    EXPECT_EQ(host->notes.back(), "Agent: added cue Loop.mp4");

    EXPECT_EQ(textOf(ok("add_cue", R"({"type":"lower_third","title":"Ada"})")["name"]), "Lower third — Ada");
    const JSONValue stop = ok("add_cue", R"({"type":"clear","stop_cue":"Intro","fade":2})");
    EXPECT_EQ(textOf(stop["name"]), "Stop Intro");
    EXPECT_EQ(textOf(stop["stop_cue"]), intro.text());

    const JSONValue track = ok("add_cue", R"({"type":"spotify","link":"https://open.spotify.com/intl-de/track/4uLU6hMC?si=x","level":150})");
    EXPECT_EQ(textOf(track["reference"]), "spotify:track:4uLU6hMC");
    EXPECT_EQ(textOf(track["level"]), "100");
    EXPECT_EQ(show.allCues().size() + 4, host->current().allCues().size());
}

TEST_F(AgentBuilding, AddCueRefusalsChangeNothing) {
    video("Intro");
    addItem("Logo.png", MediaKind::image);
    addItem("Bell.wav", MediaKind::audio, 2);
    open();
    const std::vector<std::pair<std::string, std::string>> refused{
        {R"({"type":"video"})", "Give the video to play as media (id or name)."},
        {R"({"type":"video","media":"Logo.png"})", "\"Logo.png\" is a image, not a video."},
        {R"({"type":"video","media":"Nope"})", "There's no video \"Nope\" in the library. Use import_media first."},
        {R"({"type":"playlist","songs":[]})", "A playlist needs songs (library sound files)."},
        {R"({"type":"timer","mode":"count_to"})", "count_to needs time as \"HH:MM\"."},
        {R"({"type":"spotify","link":"https://example.com/track/1"})", "That isn't a Spotify song, album, or playlist link."},
        {R"({"type":"spotify","link":"spotify:track:1","shuffle":true})", "shuffle is for Spotify playlists or albums."},
        {R"({"type":"spotify","link":"spotify:track:1","reference":"spotify:track:2"})",
         "Give link or reference, not both. No changes were made."},
        {R"({"type":"message","text":"x","visual_output_ids":["nowhere"]})", "nowhere isn't one of the allowed values."},
        {R"({"type":"audio","media":"Bell.wav","audio_device_id":""})", "audio_device_id needs a device UID, system, or null to follow defaults."},
    };
    for (const auto& [arguments, sentence] : refused) {
        EXPECT_EQ(refusal("add_cue", arguments), sentence) << arguments;
    }
    EXPECT_EQ(host->current(), show);
    EXPECT_TRUE(host->notes.empty());
}

TEST_F(AgentBuilding, UpdateCueKeepsItsTypeAndRefusesForeignSettings) {
    Cue& walkIn = video("Walk in");
    walkIn.notes = "House lights down";
    open();
    EXPECT_EQ(refusal("update_cue", R"({"cue":"Walk in","link":"https://open.spotify.com/track/1"})"),
              "link isn't a setting for a video cue. No changes were made.");
    // group_duration 0 passes the schema and is refused by the cue's own check.
    EXPECT_EQ(refusal("update_cue", R"({"cue":"Walk in","group_duration":0})"),
              "group_duration must be positive, finite seconds or null.");
    EXPECT_EQ(host->current(), show);

    const JSONValue updated = ok("update_cue", R"({"cue":"1","level":0.5,"fade_in":2,"group_duration":3})");
    EXPECT_EQ(textOf(updated["type"]), "video");
    EXPECT_EQ(textOf(updated["level"]), "0.5");
    EXPECT_EQ(textOf(updated["notes"]), "House lights down");
    EXPECT_EQ(textOf(updated["group_duration"]), "3");
    EXPECT_EQ(*updated["accepted_changes"],
              JSONValue(JSONValue::Object{{"level", 0.5}, {"fade_in", 2}, {"group_duration", 3}}));
    EXPECT_EQ(host->notes.back(), "Agent: updated cue Walk in");
    EXPECT_TRUE(ok("update_cue", R"({"cue":"1","group_duration":null})")["group_duration"]->isNull());
}

TEST_F(AgentBuilding, CueGroupsRefuseDuplicatesAndPassTheDocumentsWords) {
    const Uuid a = video("A").id;
    video("B");
    video("C", 1);
    open();
    EXPECT_EQ(refusal("create_cue_group", "{\"name\":\"G\",\"cues\":[\"" + a.text() + "\",\"a\"]}"),
              "A cue was selected more than once. Give each group member once.");
    EXPECT_EQ(refusal("create_cue_group", R"({"name":"G","cues":[]})"), "A cue group needs at least two cues.");
    // A lone unknown cue is named as unknown, not as too few.
    EXPECT_EQ(refusal("create_cue_group", R"({"name":"G","cues":["Z"]})"),
              "There's no cue \"Z\". get_show lists them.");
    EXPECT_FALSE(refusal("create_cue_group", R"({"name":"G","cues":["B","C"]})").empty());
    EXPECT_EQ(host->current(), show);

    const JSONValue group = ok("create_cue_group", R"({"name":"Opening","cues":["B","A"],"repeat":true})");
    EXPECT_EQ(*group["cue_ids"], JSONValue(JSONValue::Array{a.text(), host->current().sections[0].cues[1].id.text()}));
    EXPECT_EQ(host->notes.back(), "Agent: created cue group Opening");
    EXPECT_EQ(ok("update_cue_group", R"({"group":"opening","repeat":false})")["repeat"]->boolValue(), false);
    const JSONValue removed = ok("remove_cue_group", R"({"group":"Opening"})");
    EXPECT_EQ(removed["cue_ids"]->arrayValue()->size(), 2u);
    EXPECT_EQ(refusal("remove_cue_group", R"({"group":"Opening"})"), "There's no cue group \"Opening\". get_show lists them.");
}

TEST_F(AgentBuilding, SongsAreDrawnThroughTheHostAndRedrawnWhenChanged) {
    video("Walk in");
    open();
    const std::string lyrics = "Title: Morning\n[Verse 1]\nLight comes in\nOver the hill\n\n[Chorus]\nSing it out\nSing it loud";
    const JSONValue added = ok("add_song", JSONValue(JSONValue::Object{{"lyrics", lyrics}, {"lines_per_slide", 2}, {"after", "Walk in"}}).text());
    EXPECT_EQ(textOf((*added["song"])["title"]), "Morning");
    EXPECT_EQ(textOf((*added["song"])["order"]), "V1 C");
    EXPECT_EQ(textOf((*added["cue"])["type"]), "slides");
    EXPECT_EQ(textOf((*added["cue"])["number"]), "2");
    EXPECT_EQ(host->slideDrawings, 1);
    const MediaItem& deck = host->current().library.back();
    ASSERT_TRUE(deck.deck && deck.deck->made);
    EXPECT_EQ(deck.deck->pages.size(), deck.deck->made->size());

    EXPECT_EQ(refusal("update_song", R"({"song":"Morning","order":"V1 X C"})"),
              "Not sections of this song: X. Its codes are V1, C.");
    EXPECT_EQ(refusal("update_song", R"({"song":"Walk in","look":"on_black"})"),
              "That isn't a song. Give a song's cue or library item.");
    const JSONValue updated = ok("update_song", R"({"song":"Morning","order":"C V1 C","look":"lower_third"})");
    EXPECT_EQ(textOf(updated["order"]), "C V1 C");
    EXPECT_EQ(textOf(updated["look"]), "lower_third");
    EXPECT_EQ(host->slideDrawings, 2);

    host->drawingFails = true;
    const Show before = host->current();
    EXPECT_EQ(refusal("update_song", R"({"song":"2","credits":false})"), "Couldn't redraw the song: The disk is full.");
    EXPECT_EQ(host->current(), before);
    EXPECT_EQ(refusal("add_song", R"({"lyrics":"\n\n"})"), "Those lyrics have no words.");
}

// The answer to add_song waits for its pictures while the show stays as it
// was; a request still drawing when the application goes answers in words;
// get_show is answered from the service's worker thread.
TEST_F(AgentBuilding, AnswersThatWaitComeOnceWhenReady) {
    open();
    host->holdsDrawings = true;
    std::vector<AgentResponse> answers;
    const auto collect = [&answers](AgentResponse response) { answers.push_back(std::move(response)); };
    service.handle(AgentRequest{1, "add_song", JSONValue::Object{{"lyrics", "Title: Dawn\n[Verse]\nLight"}}}, collect);
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(host->current().library.empty()) << "nothing goes in before the pictures";
    host->finishDrawings();
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_TRUE(answers[0].ok) << answers[0].error.value_or("");
    EXPECT_EQ(host->current().library.size(), 1u);

    service.handle(AgentRequest{2, "update_song", JSONValue::Object{{"song", "Dawn"}, {"credits", false}}}, collect);
    std::weak_ptr<FakeAgentHost> gone = host;
    auto held = std::move(host->heldDrawings);
    host.reset();
    for (auto& finish : held) finish();
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[1].error, "Velarion isn't ready.");
    EXPECT_TRUE(gone.expired());

    host = std::make_shared<FakeAgentHost>();
    AgentService reader(host, host->scheduler);
    open();
    std::promise<AgentResponse> promise;
    reader.handle(AgentRequest{3, "get_show", JSONValue::Object{}},
                  [&promise](AgentResponse response) { promise.set_value(std::move(response)); });
    const AgentResponse shown = promise.get_future().get();
    EXPECT_EQ(textOf((*shown.result)["title"]), "Gala");
}

TEST_F(AgentBuilding, SectionsTakeTheirScheduleAndEachChangeIsItsOwnUndoStep) {
    open();
    EXPECT_FALSE(refusal("add_section", R"({"title":"Finale","start":"9:75"})").empty());
    const JSONValue added = ok("add_section", R"({"title":"Finale","start":"21:15","minutes":30,"index":1})");
    EXPECT_EQ(textOf(added["start"]), "21:15");
    EXPECT_EQ(host->current().sections[0].title, "Finale");
    EXPECT_EQ((std::vector<std::string>{host->notes.end() - 2, host->notes.end()}),
              (std::vector<std::string>{"Agent: added section Finale", "Agent: updated the schedule"}));

    const JSONValue updated = ok("update_section", R"({"section":"finale","title":"Closing","start":"","index":9})");
    EXPECT_EQ(updated["start"], nullptr);
    EXPECT_EQ(textOf(updated["minutes"]), "30");
    EXPECT_EQ(host->current().sections.back().title, "Closing");

    ok("undo"); // the move
    ok("undo"); // the schedule
    EXPECT_EQ(host->current().sections[0].title, "Closing");
    EXPECT_EQ(host->current().sections[0].plannedStart, 21 * 60 + 15);
    EXPECT_EQ(textOf(ok("delete_section", R"({"section":"Closing"})")["title"]), "Closing");
    EXPECT_EQ(refusal("delete_section", R"({"section":"Closing"})"), "There's no section \"Closing\". get_show lists them.");
}

TEST_F(AgentBuilding, WholeShowToolsGoThroughTheHost) {
    open();
    EXPECT_EQ(refusal("redo"), "There's nothing to redo.");
    EXPECT_EQ(textOf(ok("set_title", R"({"title":"Gala 2026","subtitle":"Live"})")["subtitle"]), "Live");
    EXPECT_EQ(textOf(ok("set_title", R"({"title":"Gala"})")["subtitle"]), "Live");
    EXPECT_EQ(textOf(ok("undo")["title"]), "Gala 2026");
    EXPECT_EQ(textOf(ok("redo")["title"]), "Gala");

    const JSONValue made = ok("new_show", R"({"title":"Conference","template":"conference"})");
    EXPECT_EQ(textOf(made["title"]), "Conference");
    EXPECT_EQ(made["saved_to_a_file"]->boolValue(), false);
    const std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    EXPECT_EQ(textOf(ok("save_show", R"({"path":"~/Shows/Conf"})")["file"]), home + "/Shows/Conf.velarion");
    EXPECT_EQ(host->notes.back(), "Agent saved the show");

    ok("open_show", R"({"path":"/shows/Test"})");
    EXPECT_EQ(host->current().title, "Gala");
    EXPECT_EQ(host->notes.back(), "Agent opened Gala");

    const Uuid logo = addItem("Logo.png", MediaKind::image);
    open();
    ok("set_safe_slide", R"({"title":"Back soon","image":"logo.png"})");
    EXPECT_EQ(host->current().holding.mediaID, logo);
    ok("set_safe_slide", R"({"image":""})");
    EXPECT_EQ(host->current().holding, (HoldingScreen{std::nullopt, "Back soon", ""}));
}

TEST_F(AgentBuilding, ImportMediaAddsItemsAndCuesAndReportsWhatFailed) {
    TempFolder temp{"velarion-agent-import"};
    host->load(show, ShowPackage(temp / "Gala.velarion"));
    std::ofstream(temp / "Intro.mov") << "intro";
    const std::size_t cuesBefore = host->current().allCues().size();

    EXPECT_EQ(refusal("import_media", R"({"paths":[]})"), "Give one or more file paths.");
    const std::string arguments =
        R"({"paths":[")" + (temp / "Intro.mov").string() + R"(",")" + (temp / "x.txt").string() + R"("],"add_cues":true})";
    const JSONValue result = ok("import_media", arguments);

    ASSERT_EQ(host->current().library.size(), 1u);
    const MediaItem& item = host->current().library[0];
    EXPECT_EQ(item.fileName, "Video/Intro.mov");
    EXPECT_EQ(textOf((*result["imported"]->arrayValue())[0]["id"]), item.id.text());
    EXPECT_EQ(host->current().allCues().size(), cuesBefore + 1);
    EXPECT_EQ(textOf((*result["failed"]->arrayValue())[0]["reason"]), "x.txt isn't a file Velarion can play.");
    EXPECT_EQ(host->notes.back(), "Agent imported 1 file");
}

} // namespace
} // namespace velarion::testing
