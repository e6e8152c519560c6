// The tools that build and edit shows, in catalogue order. All of them are
// of the edit tier.

#include "LiveAgentKit/AgentSchema.h"
#include "LiveAgentKit/AgentTools.h"

#include <string>
#include <utility>
#include <vector>

namespace velarion::agentTools {

using namespace agentSchema;

namespace {

std::vector<std::string> followNames() {
    return {"go", "with_previous", "after_previous"};
}

std::vector<std::string> songLooks() {
    return {"over_background", "lower_third", "on_black"};
}

constexpr const char* lyricsDescription =
    "Lyrics as plain text. [Verse 1], [Chorus], [Bridge] headings (or a heading alone on its "
    "line) make sections; a heading with no words repeats that section; a blank line starts a "
    "new slide. Title:, Author:, Copyright:, and CCLI: lines fill the credits. Without headings, "
    "a block sung more than once becomes the Chorus.";

AgentTool edit(std::string name, std::string description, JSONValue inputSchema = schema({})) {
    return {std::move(name), AgentTier::edit, std::move(description), std::move(inputSchema)};
}

// The shared cue settings and the tool's own keys.
JSONValue cueSchema(JSONValue::Object ownKeys, std::vector<std::string> required) {
    JSONValue::Object properties = cueProperties();
    for (auto& [key, value] : ownKeys)
        properties.insert_or_assign(key, std::move(value));
    return schema(std::move(properties), std::move(required));
}

std::vector<AgentTool> documentTools() {
    return {
        edit("new_show",
             "Start a new show and make it the open show (the current one is saved first). Give "
             "a path to save it there right away; otherwise it saves itself until save_show "
             "names it.",
             schema(
                 {
                     {"title", string("The show's title.")},
                     {"template", string("A starting layout.", {"blank", "presentation",
                                                                "conference", "panel", "awards"})},
                     {"path", string("Where to save it: a .velarion path. Omit to decide later.")},
                 },
                 {"title"})),
        edit("open_show", "Open a saved show (.velarion).",
             schema({{"path", string("The show's path.")}}, {"path"})),
        edit("save_show",
             "Save the show. With a path, saves it there (a .velarion) and keeps working in that "
             "copy.",
             schema({{"path", string("A .velarion path, to save as.")}})),
        edit("set_title", "Rename the show.",
             schema(
                 {
                     {"title", string("The title.")},
                     {"subtitle", string("A subtitle.")},
                 },
                 {"title"})),
        edit("import_media",
             "Copy files into the show: videos, images, sound files, and PDF, Keynote, or "
             "PowerPoint decks (decks become slides with notes). Returns each new library item's "
             "id. With add_cues, also adds a cue for each at the end of the run of show.",
             schema(
                 {
                     {"paths", arrayOf(string(""), "File paths.")},
                     {"add_cues", boolean("Also add a cue for each file.")},
                 },
                 {"paths"})),
        edit("add_ndi_source",
             "Add a discovered NDI source to the media library, optionally with a video cue. "
             "Nothing fires. This is a live network source, not a file copied into the show.",
             schema(
                 {
                     {"name", string("Exact advertised source name from list_ndi_sources.")},
                     {"url", nullable(string("Optional source URL returned by list_ndi_sources."))},
                     {"add_cue", boolean("Also add a video cue (default false).")},
                     {"cue_name", string("Optional name for the new cue.")},
                 },
                 {"name"})),
        edit("set_network_feeds",
             "Set the complete list of NDI picture outputs. Omitted feeds stop sending; [] stops "
             "all NDI outputs. Changes are live. Include an existing feed's id from get_show to "
             "preserve cue routing. In a show with logical screens, new feeds receive a screen "
             "and removed feeds leave placeholders. With sound true, a feed also sends the sound "
             "of playing videos (not sound files, Spotify, or Music).",
             schema({{"feeds", arrayOf(feedObject())}}, {"feeds"})),
    };
}

std::vector<AgentTool> rundownTools() {
    return {
        edit("add_section", "Add a section to the run of show.",
             schema(
                 {
                     {"title", string("The section's title.")},
                     {"index", integer("Position, from 1. Omit for the end.")},
                     {"start", string("Planned start, 24-hour \"HH:MM\".")},
                     {"minutes", integer("Planned length in minutes.")},
                 },
                 {"title"})),
        edit("update_section", "Rename, reschedule, or move a section.",
             schema(
                 {
                     {"section", sectionRef()},
                     {"title", string("A new title.")},
                     {"start", string("Planned start, \"HH:MM\"; empty clears it.")},
                     {"minutes", integer("Planned length in minutes; 0 clears it.")},
                     {"index", integer("Move to this position, from 1.")},
                 },
                 {"section"})),
        edit("delete_section", "Delete a section and its cues.",
             schema({{"section", sectionRef()}}, {"section"})),
        edit("add_cue",
             "Add a cue. Types: slides (a deck), video, image, audio (a library item), playlist "
             "(several library sound files that crossfade — walk-in music), timer, message, "
             "lower_third, clear, spotify, music. Music uses a library persistent ID; Spotify "
             "uses a link. Both play through their own app's sound output. It goes after `after`, "
             "or at the end of `section`, or at the end of the run of show. Returns the cue.",
             cueSchema(
                 {
                     {"type", string("The kind of cue.",
                                     {"slides", "video", "image", "audio", "playlist", "timer",
                                      "message", "lower_third", "clear", "spotify", "music"})},
                     {"section", sectionRef()},
                     {"after", string("Insert after this cue (id, number, or name).")},
                 },
                 {"type"})),
        edit("update_cue",
             "Change a cue's settings. Only the settings you give change; its type stays the "
             "same.",
             cueSchema({{"cue", cueRef()}}, {"cue"})),
        edit("delete_cue", "Delete a cue.", schema({{"cue", cueRef()}}, {"cue"})),
        edit("move_cue", "Move a cue to a position in a section.",
             schema(
                 {
                     {"cue", cueRef()},
                     {"section", sectionRef()},
                     {"index", integer("Position, from 1.")},
                 },
                 {"cue", "section", "index"})),
    };
}

JSONValue makeCueList() {
    JSONValue::Object members = *arrayOf(cueRef()).objectValue();
    // Enforced by the tool, which says why in its own words.
    members.emplace("minItems", 2);
    return members;
}

std::vector<AgentTool> groupAndSongTools() {
    return {
        edit("create_cue_group",
             "Group two or more consecutive cues in one section. Include whole With Previous "
             "bundles. Cues cannot belong to another group. Member order follows the rundown and "
             "stored follow settings are preserved.",
             schema(
                 {
                     {"name", string("The group's name.")},
                     {"cues", makeCueList()},
                     {"repeat", boolean("Repeat the group until stopped; defaults to false.")},
                 },
                 {"name", "cues"})),
        edit("update_cue_group",
             "Rename a cue group or change whether it repeats. Group membership and each cue's "
             "follow settings stay the same.",
             schema(
                 {
                     {"group", cueGroupRef()},
                     {"name", string("The new group name.")},
                     {"repeat", boolean("Repeat the group until stopped.")},
                 },
                 {"group"})),
        edit("remove_cue_group",
             "Remove a group while preserving all its cues and their stored follow settings.",
             schema({{"group", cueGroupRef()}}, {"group"})),
        edit("add_song",
             "Make a song from lyrics and add a cue that plays it. Songs play as slides with "
             "Verse, Chorus, and Bridge sections the operator can jump to.",
             schema(
                 {
                     {"lyrics", string(lyricsDescription)},
                     {"look", string("over_background: see-through words over the background "
                                     "loop; lower_third: words along the bottom; on_black.",
                                     songLooks())},
                     {"lines_per_slide", integer("Most lines on one slide, 1–8 (default 4).")},
                     {"order", string("The sung order as section codes or names, e.g. \"V1 C V2 "
                                      "C B C\". Omit to follow the lyrics.")},
                     {"credits", boolean("Show title, author, copyright, and CCLI on the first "
                                         "slide (default true).")},
                     {"section", sectionRef()},
                     {"after", string("Insert the cue after this cue.")},
                     {"follow", string("When the song's cue starts.", followNames())},
                 },
                 {"lyrics"})),
        edit("update_song",
             "Change a song's lyrics, order, look, or lines per slide. Its slides redraw at once, "
             "even live.",
             schema(
                 {
                     {"song", string("The song: its cue, or its library item (id or name).")},
                     {"lyrics", string(lyricsDescription)},
                     {"look", string("How the words sit.", songLooks())},
                     {"lines_per_slide", integer("Most lines on one slide, 1–8.")},
                     {"order", string("The sung order as codes or names.")},
                     {"credits", boolean("Show credits on the first slide.")},
                 },
                 {"song"})),
    };
}

std::vector<AgentTool> screenAndHistoryTools() {
    return {
        edit("set_screens",
             "Configure screens and reusable looks. logical_screens replaces all logical screens; "
             "keep existing ids to preserve cue routing and use destination type placeholder for "
             "a disconnected screen. looks replaces the saved looks when supplied. The legacy "
             "screens list replaces audience display connections only, preserving other logical "
             "screens. Do not combine logical_screens with screens, speaker_display, or "
             "test_window. Changes are live. A named look and custom shows/lyric_lines cannot be "
             "set together.",
             schema({
                 {"screens", arrayOf(legacyScreenObject())},
                 {"logical_screens", arrayOf(screenObject())},
                 {"looks", arrayOf(lookObject())},
                 {"speaker_display", string("The confidence screen's display id; empty for none.")},
                 {"test_window", boolean("Use a test window when no screen is chosen.")},
             })),
        edit("set_safe_slide",
             "What the safe slide shows: a title and subtitle, or a library image.",
             schema({
                 {"title", string("The title.")},
                 {"subtitle", string("The subtitle.")},
                 {"image", string("A library image (id or name); empty for a title card.")},
             })),
        edit("undo", "Undo the last change."),
        edit("redo", "Redo the last undone change."),
    };
}

} // namespace

std::vector<AgentTool> showTools() {
    std::vector<AgentTool> tools;
    for (auto part : {documentTools, rundownTools, groupAndSongTools, screenAndHistoryTools}) {
        std::vector<AgentTool> some = part();
        tools.insert(tools.end(), std::make_move_iterator(some.begin()),
                     std::make_move_iterator(some.end()));
    }
    return tools;
}

} // namespace velarion::agentTools
