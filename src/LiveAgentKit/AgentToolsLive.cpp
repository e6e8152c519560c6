// The tools that read the show, run it and look after the application
// itself, in catalogue order.

#include "LiveAgentKit/AgentSchema.h"
#include "LiveAgentKit/AgentTools.h"

#include <string>
#include <utility>
#include <vector>

namespace velarion::agentTools {

using namespace agentSchema;

namespace {

std::vector<std::string> clearTargets() {
    return {"slides", "media", "graphics", "music", "messages", "everything"};
}

AgentTool observe(std::string name, std::string description, JSONValue inputSchema = schema({})) {
    return {std::move(name), AgentTier::observe, std::move(description), std::move(inputSchema)};
}

AgentTool run(std::string name, std::string description, JSONValue inputSchema = schema({})) {
    return {std::move(name), AgentTier::run, std::move(description), std::move(inputSchema)};
}

} // namespace

std::vector<AgentTool> liveTools() {
    return {
        observe("get_show",
                "The open show: its title and file, whether Show Mode is on, every section and "
                "cue (with ids, numbers, types, and settings), cue groups, the media library, "
                "songs, and how the screens are set up. Call this first, and again after "
                "changes."),
        observe("get_state",
                "What's live right now: the next cue, cues running, the live deck and slide, the "
                "timer, messages, the safe slide, Panic, and the active cue group's step, repeat "
                "setting, and wait for GO."),
        observe("ready_check", "The pre-show Ready check: screens, sound, music apps, missing "
                               "files, and schedule, each with what to fix."),
        observe("list_displays",
                "Displays connected to this computer, with the ids set_screens uses."),
        observe("list_ndi_sources",
                "Discover NDI senders on the local network. Does not start a cue. Requires the "
                "NDI runtime and local-network access. An empty list means no sources were "
                "discovered during this wait.",
                schema({{"wait_seconds",
                         bounded(number("Seconds to wait for discovery, 0.3–5 (default 2)."), 0.3,
                                 5)}})),
        run("go", "GO: fire the cue marked Next."),
        run("fire_cue", "Fire one cue now, out of order. The show continues after it.",
            schema({{"cue", cueRef()}}, {"cue"})),
        run("set_next", "Mark a cue as Next without firing it.",
            schema({{"cue", cueRef()}}, {"cue"})),
        run("panic", "Panic: fade everything out. Called again during the fade, stops at once."),
        run("pause_all", "Pause everything playing."),
        run("resume_all", "Resume everything paused."),
        run("talk_over",
            "Dip all music while someone talks over it (on: true), or bring it back (on: false). "
            "It also ends by itself when the music ends.",
            schema({{"on", boolean("true dips the music, false brings it back.")}}, {"on"})),
        run("clear", "Clear one layer, or everything.",
            schema(
                {
                    {"target", string("What to clear.", clearTargets())},
                    {"fade", number("Seconds to fade (default 1).")},
                },
                {"target"})),
        run("safe_slide", "Put the safe slide up on every screen, or take it down.",
            schema({{"on", boolean("True puts it up.")}}, {"on"})),
        run("slide",
            "Move the live deck: next or previous slide (a lyric slide shown in parts steps "
            "through its parts), a slide number, or the next section starting with a name or "
            "letter (\"Chorus\", \"V\").",
            schema(
                {
                    {"action", string("What to do.", {"next", "previous", "goto", "section"})},
                    {"index", integer("goto: the slide number, from 1.")},
                    {"section", string("section: a section name or its first letter.")},
                },
                {"action"})),
        run("send_message",
            "Show a message to the speaker (confidence screen only) or the audience. Empty text "
            "clears it.",
            schema(
                {
                    {"text", string("The message.")},
                    {"to", string("Who sees it.", {"speaker", "audience"})},
                },
                {"text", "to"})),
        run("adjust_timer", "Add or take away time from the running timer.",
            schema({{"seconds", number("Seconds to add (negative takes away).")}}, {"seconds"})),
        run("quit_app",
            "Save the show and quit Velarion. Refused while cues are playing unless force is "
            "true, since quitting stops the screens and sound.",
            schema({{"force", boolean("Quit even though cues are playing.")}})),
        run("restart_app",
            "Save the show, quit Velarion, and open it again with the same show. Waits until "
            "it's back. Refused while cues are playing unless force is true.",
            schema({{"force", boolean("Restart even though cues are playing.")}})),
        observe("launch_app", "Open Velarion if it isn't running and wait until agent control is "
                              "ready. Agent control must have been left on in its Settings."),
        run("lock_show", "Enter Show Mode so nothing can be edited (the operator returns to "
                         "Edit). Live controls keep working."),
    };
}

} // namespace velarion::agentTools
