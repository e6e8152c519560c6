#include "LiveEngine/ReadyCheck.h"

#include "../LiveModel/ShowEditFixtures.h"
#include "FakeAudioDevices.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>

namespace velarion {
namespace {

using namespace editTesting;

// What one evaluation is given. The base: one connected audience display
// "HDMI-1" that is the main one, the default sound device "Speakers", and a
// show with one section and no cues.
struct Given {
    Show show = makeShow({makeSection("Welcome", {})});
    std::vector<AudioDevice> devices{{"speakers", "Speakers", true}};
    ReadyCheckInputs inputs;
    bool hasPackage = false;

    Given() {
        show.outputs.audienceDisplayIDs = {"HDMI-1"};
        inputs.outputs = {screenRow("Audience 1", "HDMI-1", true)};
    }
    static OutputHealth screenRow(std::string name, std::string destination, bool connected) {
        return {OutputHealth::Role::audience, std::move(name), connected, std::move(destination)};
    }
    // The reference lasts until the next change of the show.
    Cue& add(std::string name, CueKind kind, Follow follow = Follow::manual) {
        auto& cues = show.sections.edit(0).cues;
        cues.push_back(makeCue(std::move(name), follow, true, std::move(kind)));
        return cues.edit(cues.size() - 1);
    }
    MediaItem& addMedia(std::string name, std::string fileName) {
        show.library.push_back(MediaItem{Uuid::random(), MediaKind::video, std::move(name), std::move(fileName)});
        return show.library.edit(show.library.size() - 1);
    }
    Section& addSection(std::string title, int plannedStart) {
        show.sections.push_back(makeSection(std::move(title), {}));
        Section& section = show.sections.edit(show.sections.size() - 1);
        section.plannedStart = plannedStart;
        return section;
    }
};

// One line a item: "status|title|detail [button→cue]".
std::string lines(const std::vector<ReadyItem>& items, const Show& show, std::optional<ReadyGroup> only) {
    std::string text;
    for (const ReadyItem& item : items) {
        if (only && item.group != *only) continue;
        text += std::string(toString(item.status)) + "|" + item.title + "|" + item.detail;
        if (item.fixLabel) text += " [" + *item.fixLabel;
        if (const auto* edit = item.fix ? std::get_if<readyFix::EditCue>(&*item.fix) : nullptr) {
            text += "→" + show.cue(edit->cueID)->name;
        }
        if (item.fixLabel) text += "]";
        text += "\n";
    }
    return text;
}

void writeFile(const std::filesystem::path& path) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << "x";
}

TEST(ReadyCheck, GivesEachLineInOrderWithItsWordsAndFix) {
    const testing::TempFolder folder("ready-check");
    const struct {
        const char* name;
        std::optional<ReadyGroup> only; // none: the whole list
        std::function<void(Given&)> tweak;
        const char* expected;
    } cases[] = {
        {"an empty show", std::nullopt, [](Given&) {},
         "ready|Audience 1|Connected\n"
         "optional|No Stage Display|Optional · shows the speaker slides, notes, and time.\n"
         "ready|House|Speakers\n"
         "optional|Spotify|No enabled cues use it\n"
         "optional|Apple Music|No enabled cues use it\n"
         "optional|No planned times|Add times to track the schedule\n"
         "ready|Keyboard|Space GO · Esc Panic · ← → slides · . safe slide · V C B jump to song sections\n"
         "optional|MIDI control is off|Learn a MIDI button to run the show from a foot switch or pad. [MIDI settings]\n"},
        {"no output at all", ReadyGroup::screens, [](Given& g) { g.show.outputs = {}, g.inputs.outputs = {}; },
         "attention|No audience output configured|Choose an audience screen, enable the test window, or add an NDI "
         "network feed. [Screens]\n"
         "optional|No Stage Display|Optional · shows the speaker slides, notes, and time.\n"},
        {"a test window and a feed that sends", std::nullopt,
         [](Given& g) {
             NetworkFeed feed{Uuid::random(), "Stream"};
             feed.sendsSound = true;
             g.show.outputs = {};
             g.show.outputs.audienceWindowForTesting = true;
             g.show.outputs.feeds = {feed};
             OutputHealth row{OutputHealth::Role::feed, "Stream", true, feed.id.text()};
             row.sender = NDISenderStatus{true, 2, 900, 40, 3, 0, 29.97f};
             g.inputs.outputs = {Given::screenRow("Audience test window", "test-window", false), row};
         },
         "optional|No audience screen chosen|A test window is enabled on this computer, alongside the configured NDI "
         "network feeds.\n"
         "optional|No Stage Display|Optional · shows the speaker slides, notes, and time.\n"
         "ready|Stream|NDI · 2 receivers · 30.0 fps · 3 dropped · video sound: 40 blocks sent\n"
         "ready|House|Speakers\n"
         "optional|Spotify|No enabled cues use it\n"
         "optional|Apple Music|No enabled cues use it\n"
         "optional|No planned times|Add times to track the schedule\n"
         "ready|Keyboard|Space GO · Esc Panic · ← → slides · . safe slide · V C B jump to song sections\n"
         "optional|MIDI control is off|Learn a MIDI button to run the show from a foot switch or pad. [MIDI settings]\n"
         "attention|Audience test window isn't showing|It is disconnected. Check the Screens section. [Screens]\n"},
        {"named screens without a connection", ReadyGroup::screens,
         [](Given& g) {
             g.show.outputs.usesLogicalScreens = true;
             g.show.outputs.screens = {LogicalScreen{"wall", "Wall"}};
         },
         "attention|No audience output connected|Named screens keep their looks, but need a display or NDI "
         "connection to send a picture. [Screens]\n"
         "optional|No Stage Display|Optional · shows the speaker slides, notes, and time.\n"
         "optional|Wall|Placeholder · preview only. Choose a connection before using this screen.\n"},
        {"main display, a stage and a display unplugged", ReadyGroup::screens,
         [](Given& g) {
             g.show.outputs.audienceDisplayIDs = {"HDMI-1", "HDMI-2"};
             g.show.outputs.confidenceDisplayID = "DP-1";
             g.inputs.mainDisplayID = "HDMI-1";
             g.inputs.outputs.push_back(Given::screenRow("Audience 2", "HDMI-2", false));
             g.inputs.outputs.push_back(Given::screenRow("Stage", "DP-1", false));
         },
         "ready|Audience 1|Connected · covers the menu bar\n"
         "attention|Audience screen not connected|Audience 2 · Plug it in, or choose another screen. [Screens]\n"
         "attention|Stage Display not connected|The speaker's screen is missing. [Screens]\n"},
        {"sound devices gone", ReadyGroup::sound,
         [](Given& g) {
             g.show.audio.houseDeviceID = "usb";
             AudioCue sound;
             sound.bus = AudioBus::headphones;
             g.add("Cue", sound).audioDeviceID = "usb";
             g.add("Lyrics", GraphicCue{}).visualOutputIDs = std::vector<std::string>{"HDMI-9"};
             g.add("Blank", GraphicCue{}).visualOutputIDs = std::vector<std::string>{};
             g.inputs.masterLevel = 0.249;
         },
         "attention|House output missing|The chosen sound device isn't connected. [Sound settings]\n"
         "attention|Headphones not chosen|Cues sent to Headphones will play through the house. [Sound settings]\n"
         "attention|House level is low|The house level is at 25%. Raise it under Music and Sound.\n"
         "attention|Cue sound output is missing|This cue overrides the show sound settings with a device that is "
         "not connected. [Edit cue→Cue]\n"
         "attention|Lyrics picture output is missing|A chosen audience screen or network feed is no longer "
         "configured. Choose a current destination. [Edit cue→Lyrics]\n"
         "attention|Blank has no picture output|No audience screen or network feed is selected for this cue. "
         "[Edit cue→Blank]\n"},
        {"headphones on the house device, muted", ReadyGroup::sound,
         [](Given& g) {
             g.show.audio.headphonesDeviceID = "speakers";
             g.inputs.isMuted = true;
             g.inputs.masterLevel = 0.1;
         },
         "ready|House|Speakers\n"
         "ready|Headphones|Speakers\n"
         "optional|Audition plays in the room|Headphones and House are the same output. Choose a separate "
         "Headphones output to listen privately.\n"
         "attention|The house is muted|Nothing Velarion plays will be heard. Unmute under Music and Sound.\n"},
        {"a quarter is loud enough; chosen headphones gone", ReadyGroup::sound,
         [](Given& g) { g.show.audio.headphonesDeviceID = "usb", g.inputs.masterLevel = 0.25; },
         "ready|House|Speakers\n"
         "attention|Headphones missing|Cues sent to Headphones have nowhere to play. [Sound settings]\n"},
        {"songs that clash, an app not running, bad references", ReadyGroup::music,
         [](Given& g) {
             g.add("Walk-in", SpotifyTrack{{"spotify:track:4uLU6hMCjMI75M1A2tKUQC"}});
             g.add("Hymn", SpotifyTrack{{"https://example.com/x"}}, Follow::withPrevious);
             g.add("Mix", StreamPlaylistCue{"spotify:track:4uLU6hMCjMI75M1A2tKUQC"});
             g.add("Organ", MusicTrack{{"0123456789ABCDEF"}}).isEnabled = false;
             g.add("Empty", PlaylistCue{});
             g.add("Gap", PlaylistCue{{Uuid::random()}});
             g.inputs.spotify.presence = ReadyMusicApp::Presence::notRunning;
             g.inputs.music.presence = ReadyMusicApp::Presence::notInstalled;
         },
         "attention|Hymn replaces Walk-in|They're set to start together, but the app plays one song at a time. "
         "[Edit cue→Hymn]\n"
         "attention|Spotify isn't running|3 enabled cues need it running [Open Spotify]\n"
         "attention|Hymn needs a song|Choose a Spotify song or paste a valid Spotify track link. [Edit cue→Hymn]\n"
         "attention|Mix needs a song|Choose a Spotify playlist or album, or paste its Spotify link. [Edit cue→Mix]\n"
         "optional|Apple Music|No enabled cues use it\n"
         "attention|Empty has no songs|Add sound files to the playlist [Edit cue→Empty]\n"
         "attention|Gap is missing a song|A song was removed from the library; the playlist skips it [Edit cue→Gap]\n"},
        {"apps running or absent, two cues with one fault", ReadyGroup::music,
         [](Given& g) {
             g.add("One", SpotifyTrack{{"spotify:track:4uLU6hMCjMI75M1A2tKUQC"}});
             g.add("Two", MusicTrack{{"nope"}});
             g.add("Three", MusicTrack{{""}});
             g.inputs.spotify.presence = ReadyMusicApp::Presence::running;
             g.inputs.music.presence = ReadyMusicApp::Presence::notInstalled;
         },
         "ready|Spotify|Running · 1 enabled cue uses it · Rehearse each song before the event\n"
         "attention|Apple Music isn't installed|2 enabled cues need it\n"
         "attention|2 Apple Music cues need a song|Choose a Music library song. Its saved library ID is missing or "
         "invalid. [Edit cue→Two]\n"},
        {"files gone, media removed, live sources", ReadyGroup::media,
         [&](Given& g) {
             g.hasPackage = true;
             g.addMedia("Opening", "Video/opening.mov");
             MediaItem& camera = g.addMedia("Camera", "");
             camera.ndiSource = NDISource{"STUDIO (Cam 1)"};
             const Uuid cameraID = camera.id;
             MediaItem& unnamed = g.addMedia("Unnamed", "");
             unnamed.ndiSource = NDISource{};
             const Uuid unnamedID = unnamed.id;
             g.add("Intro", VideoCue{Uuid::random()});
             g.add("Live", VideoCue{cameraID});
             g.add("Pastor", VideoCue{cameraID});
             g.add("Other", VideoCue{unnamedID});
             g.inputs.ndi = {false, "The NDI runtime is not installed. Local show playback is still available."};
         },
         "attention|Opening missing|Its file is no longer in the show [Find it]\n"
         "attention|Intro has no media|Its media was removed [Edit cue→Intro]\n"
         "attention|NDI unavailable|The NDI runtime is not installed. Local show playback is still available.\n"
         "attention|Other needs an NDI source|Choose the live source before running this cue. [Edit cue→Other]\n"
         "attention|NDI: STUDIO (Cam 1)|Live network source used by Live, Pastor. Check the source and rehearse its "
         "picture and sound before the event.\n"},
        {"files all there", ReadyGroup::media,
         [&](Given& g) {
             g.hasPackage = true;
             g.addMedia("Loop", "Video/loop.mov");
             writeFile(folder / "Show.velarion" / "Media" / "Video" / "loop.mov");
         },
         "ready|1 local file in the show|Local media is stored inside the show file, filed by kind\n"},
        {"sections that overlap", ReadyGroup::schedule,
         [](Given& g) {
             Section& welcome = g.show.sections.edit(0);
             welcome.plannedStart = 570, welcome.plannedMinutes = 40;
             g.addSection("Talk", 600);
         },
         "attention|Schedule overlap|Welcome runs into Talk\n"},
        {"sections in time", ReadyGroup::schedule,
         [](Given& g) {
             Section& welcome = g.show.sections.edit(0);
             welcome.plannedStart = 570, welcome.plannedMinutes = 30;
             g.addSection("Talk", 600);
         },
         "ready|2 timed sections|Starts 9:30 AM\n"},
        {"groups, a stale clear and MIDI without a device", ReadyGroup::control,
         [](Given& g) {
             VideoCue loop{Uuid::random()};
             loop.loops = true;
             const Uuid backdrop = g.add("Backdrop", loop).id;
             const Uuid words = g.add("Words", GraphicCue{"Hello", "", 5.0}).id;
             Cue& dark = g.add("Off", GraphicCue{});
             dark.isEnabled = false;
             const Uuid off = dark.id;
             g.add("Stop it", ClearCue{ClearTarget::everything, 0, Uuid::random()});
             g.show.cueGroups = std::vector<CueGroup>{makeGroup("Intro", {backdrop, words}),
                                                      makeGroup("Dark", {off}),
                                                      makeGroup("Once", {words})};
             (*g.show.cueGroups)[2].repeats = true;
             g.inputs.midi = {true, {"GO", "Panic"}, {}};
         },
         "attention|Stop it stops a cue that was deleted|Choose another cue for it to stop, or delete it. "
         "[Edit cue→Stop it]\n"
         "attention|Intro|This group stops advancing here. Set a Group duration or a finite media ending. GO takes "
         "over after the group. [Edit cue→Backdrop]\n"
         "attention|Dark|All cues in this group are disabled.\n"
         "ready|Once|repeats until GO or Stop · GO continues after the group\n"
         "ready|Keyboard|Space GO · Esc Panic · ← → slides · . safe slide · V C B jump to song sections\n"
         "attention|MIDI controller not connected|Buttons are set up (GO, Panic) but no MIDI device is plugged in. "
         "[MIDI settings]\n"},
    };
    for (const auto& row : cases) {
        Given given;
        row.tweak(given);
        const testing::FakeAudioDevices devices(given.devices);
        std::optional<ShowPackage> package;
        if (given.hasPackage) package = ShowPackage(folder / "Show.velarion");
        const std::vector<ReadyItem> items =
            ReadyCheck::evaluate(given.show, package ? &*package : nullptr, devices, given.inputs);
        EXPECT_EQ(lines(items, given.show, row.only), row.expected) << row.name;
    }
}

} // namespace
} // namespace velarion
