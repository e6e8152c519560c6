#include "LiveAgentKit/AgentGuide.h"

namespace velarion::agentGuide {

namespace {

constexpr std::string_view guideOpening =
    "# Velarion — instructions for AI agents\n\nVelarion is show-control software for live events "
    "on this computer: slides, video, music, song lyrics, lower thirds, and timers, fired from a "
    "run of show (cues in sections). You can build and run shows through its MCP server.\n\n"
    "## Connect\nThe MCP server is a local program (stdio transport, no network, no API key):\n"
    "  command: ";

constexpr std::string_view guideBeforeClaudeCode =
    "\n\nClaude Code:     claude mcp add --scope user velarion -- \"";

constexpr std::string_view guideBeforeOtherClients =
    "\"\nClaude Desktop, Cursor, and most MCP clients — add to \"mcpServers\":\n"
    "  \"velarion\": { \"command\": \"";

constexpr std::string_view guideRest =
    "\" }\n\nVelarion must be open. Its local agent connection is always available. If a tool "
    "says it isn't running, call launch_app. Run and Edit permissions are set separately in "
    "Settings → Agent control.\n\n"
    "## Rules\n"
    "- Everything is live: changes reach the audience screens at once. Don't use go, fire_cue, "
    "panic, clear, quit_app, or restart_app unless the operator asks.\n"
    "- Call get_show first, and again after changes. Refer to cues by id, number, or exact name.\n"
    "- Edits are refused in Show Mode, and tiers the operator hasn't allowed are refused with a "
    "message saying which switch to turn on. Report that; don't try to work around it.\n"
    "- Actions that change the show or playback are recorded in Velarion's history. Document "
    "edits can be undone; playback already performed cannot be reversed.\n\n"
    "## Building a show\n"
    "1. new_show (give a path to save it) or open_show.\n"
    "2. import_media with file paths for videos, images, sound files, and PDF, Keynote, or "
    "PowerPoint decks.\n"
    "3. add_section for each part of the event (optionally with a planned start \"HH:MM\").\n"
    "4. add_cue for each moment: slides, video (layer \"background\" and loops for motion "
    "backgrounds), image, audio, timer, message, lower_third, clear, spotify. Use follow "
    "\"with_previous\" to start cues together on one GO.\n"
    "5. add_song with lyrics for worship or music sets: [Verse 1] / [Chorus] / [Bridge] headings, "
    "a blank line between slides, look over_background above a looping background video.\n"
    "6. set_screens for the audience screens (list_displays gives ids), then save_show.\n"
    "7. ready_check, and tell the operator anything it flags.";

} // namespace

std::string claudeCodeCommand(std::string_view helperPath) {
    std::string text = "claude mcp add --scope user velarion -- \"";
    text += helperPath;
    text += "\"";
    return text;
}

std::string claudeDesktopEntry(std::string_view helperPath) {
    std::string text = "\"velarion\": { \"command\": \"";
    text += helperPath;
    text += "\" }";
    return text;
}

std::string agentInstructions(std::string_view helperPath) {
    std::string text(guideOpening);
    text += helperPath;
    text += guideBeforeClaudeCode;
    text += helperPath;
    text += guideBeforeOtherClients;
    text += helperPath;
    text += guideRest;
    return text;
}

} // namespace velarion::agentGuide
