#pragma once
// The words that tell an agent, and the operator connecting one, how to use
// Velarion: the instructions the MCP bridge gives at the handshake, and the
// texts the settings view offers for copying, composed with the bridge's
// path. They are kept word for word; where the original wording names the
// operating system, it says "computer".
//
// The path is put in as it is, unquoted and unescaped: these are snippets for
// a person to paste, and bundle paths hold no double quotes.
//
// Thread: pure functions and constants; any thread.

#include <string>
#include <string_view>

namespace velarion::agentGuide {

// The "instructions" of the MCP handshake.
inline constexpr std::string_view mcpInstructions =
    "Velarion runs live events: slides, video, music, lyrics, and timers, cued in a run of show. "
    "Start with get_show. Cues are referred to by id, number, or name. To build a show: new_show, "
    "import_media for files, add_section, add_cue and add_song, set_screens, then save_show. "
    "Edits are refused in Show Mode, and tiers the operator hasn't allowed are refused with a "
    "message saying so. Everything is live: changes reach the screens at once, so avoid run tools "
    "(go, fire_cue, panic) unless asked.";

// Settings view: the introduction, the two tier switches, and the labels of
// the texts to copy.
inline constexpr std::string_view introduction =
    "Let an AI agent such as Claude work with Velarion on this computer. It connects locally and "
    "uses the same controls you do. Your own GO and Panic stay available. Actions that change the "
    "show or playback are recorded in history. Document edits can be undone; playback already "
    "performed cannot be reversed.";
inline constexpr std::string_view runSwitchLabel =
    "Run the show — GO, Panic, slides, messages, clears";
inline constexpr std::string_view editSwitchLabel =
    "Build and edit shows — cues, songs, media, screens (never in Show Mode)";
inline constexpr std::string_view directConnectionLabel = "Or connect Claude directly";
inline constexpr std::string_view claudeCodeLabel = "In Claude Code, run this once in Terminal:";
inline constexpr std::string_view claudeDesktopLabel =
    "In Claude Desktop, add this under \"mcpServers\" in its config:";
inline constexpr std::string_view instructionsLabel = "Instructions for your agent";
inline constexpr std::string_view copyInstructionsButton = "Copy instructions";
inline constexpr std::string_view instructionsNote =
    "One text to paste into any AI agent: how to connect, the rules, and how to build a show.";

// `claude mcp add …` for Claude Code.
std::string claudeCodeCommand(std::string_view helperPath);

// The "velarion" entry for a client's "mcpServers".
std::string claudeDesktopEntry(std::string_view helperPath);

// The whole guide for an agent: how to connect, the rules, how to build a
// show.
std::string agentInstructions(std::string_view helperPath);

} // namespace velarion::agentGuide
