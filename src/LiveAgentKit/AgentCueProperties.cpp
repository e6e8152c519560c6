// The cue settings shared by add_cue and update_cue. Each description says
// which cue types read the setting, since one flat map serves every type.

#include "LiveAgentKit/AgentSchema.h"

#include <utility>

namespace velarion::agentSchema {

namespace {

JSONValue geometry() {
    JSONValue::Object members = *nullable(schema({
                                              {"scale", number("")},
                                              {"x", number("")},
                                              {"y", number("")},
                                              {"rotation", number("")},
                                              {"opacity", number("")},
                                          }))
                                     .objectValue();
    members.emplace("description",
                    "video, image, slides: placement. scale 0.05–1, x and y −1…1 (shares of the "
                    "screen, right and up), rotation in degrees, opacity 0–1. Omit for full "
                    "screen.");
    return members;
}

JSONValue groupDuration() {
    JSONValue::Object members =
        *nullableNumber("Positive seconds before a group advances past a cue that has no natural "
                        "end. Null clears the explicit duration.")
             .objectValue();
    // Enforced by the tool; the checker doesn't read it.
    members.emplace("exclusiveMinimum", 0);
    return members;
}

JSONValue visualOutputIDs() {
    JSONValue::Object members =
        *arrayOf(string(""), "Visual cue: destination IDs from get_show screens (display IDs, "
                             "network feed IDs, or test-window). Null follows the show defaults; "
                             "[] sends to no audience destinations.")
             .objectValue();
    members.insert_or_assign("type", JSONValue::Array{"array", "null"});
    return members;
}

JSONValue::Object makeCueProperties() {
    return {
        {"name", string("The cue's name in the run of show.")},
        {"follow", string("When it starts: on GO, together with the cue above, or when the cue "
                          "above ends.",
                          {"go", "with_previous", "after_previous"})},
        {"notes", string("Operator notes shown in the inspector.")},
        {"pre_wait", number("Seconds to wait after it's triggered before it starts.")},
        {"enabled", boolean("False skips the cue.")},
        {"group_duration", groupDuration()},
        {"description_override", nullable(string("Custom What It Does text. Null or blank text "
                                                 "restores the automatic description."))},
        {"keep_on_screen",
         boolean("slides, video, image: keep other full-screen pictures when this cue starts.")},
        {"visual_output_ids", visualOutputIDs()},
        {"audio_device_id",
         nullable(string("video, audio: output UID from get_show sound.available_outputs. Null "
                         "follows the show/bus defaults; system explicitly uses the computer's "
                         "default. Spotify and Music use their own app output."))},
        {"slide_dissolve",
         bounded(nullableNumber("slides: slide-change dissolve in seconds, 0 cuts. Null follows "
                                "the show default."),
                 0, 10)},
        {"operator_view",
         nullable(string("slides: operator workspace when this cue starts. Null keeps the current "
                         "workspace. Slides returns to Cues when cleared; a manual view choice "
                         "takes control back.",
                         {"cues", "slides"}))},
        {"media", string("slides, video, image, audio: the library item to play (id or name). Use "
                         "import_media first.")},
        {"layer", string("video, image: background (behind everything, for loops) or media "
                         "(default).",
                         {"background", "media"})},
        {"loops", boolean("video, audio: loop until stopped.")},
        {"fade_in", number("Seconds to fade in.")},
        {"fade_out", number("Seconds to fade out when stopped or at its end.")},
        {"level",
         number("video, audio, playlist: 0 to 1 (0 is silent). spotify, music: 0 to 100.")},
        {"in_point", number("video, audio: seconds into the file to start.")},
        {"out_point",
         nullableNumber("video, audio: seconds into the file to stop; null plays to the end.")},
        {"bus", string("audio, playlist: which sound output.", {"house", "headphones"})},
        {"role", string("audio: music (one at a time, crossfades) or effect (plays on top).",
                        {"music", "effect"})},
        {"start_slide", integer("slides: the slide to open on, from 1.")},
        {"mode", string("timer: count down from seconds, count to a clock time, or count up.",
                        {"countdown", "count_to", "count_up"})},
        {"seconds", number("timer countdown: length in seconds.")},
        {"time", string("timer count_to: the clock time, 24-hour \"HH:MM\".")},
        {"show_on_audience", boolean("timer: also show the countdown to the audience.")},
        {"warn_at", number("timer: seconds left when it turns amber.")},
        {"text", string("message: the words.")},
        {"to", string("message: who sees it.", {"speaker", "audience"})},
        {"duration",
         nullableNumber("message, lower_third: seconds before it clears itself; null stays up.")},
        {"title", nullable(string("timer: the audience title, separate from the cue name; null or "
                                  "blank shows only the time. lower_third: the name line (text "
                                  "required)."))},
        {"subtitle", string("lower_third: the second line.")},
        {"target", string("clear: what it clears.",
                          {"slides", "media", "graphics", "music", "messages", "everything"})},
        {"link", string("spotify: a Spotify song, album, or playlist link.")},
        {"reference",
         string("music: the song's Music library persistent ID (16 hexadecimal characters). "
                "spotify: a Spotify URI. Music library IDs can be copied from a captured cue in "
                "the app.")},
        {"artist", string("spotify, music: the displayed artist for a track.")},
        {"start_at", number("spotify, music tracks: seconds into the song to start. Seeking is "
                            "controlled by the music app, not sample accurate.")},
        {"play_for", nullableNumber("spotify, music tracks: seconds to play after the start "
                                    "point; null plays to the end.")},
        {"shuffle", boolean("spotify playlist or album, playlist: shuffle the songs.")},
        {"songs", arrayOf(string(""), "playlist: the library sound files to play, in order (ids "
                                      "or names). Use import_media first.")},
        {"repeat", boolean("playlist: start again after the last song (default true).")},
        {"crossfade",
         number("playlist: seconds each song overlaps the next (default 5, 0 back to back).")},
        {"fade", number("clear: seconds to fade.")},
        {"stop_cue", nullable(string("clear: stop just this cue (id, number, or name), fading over "
                                     "fade — e.g. fade out the walk-in music or stop the speaker "
                                     "timer. Null goes back to clearing target."))},
        {"geometry", geometry()},
    };
}

} // namespace

const JSONValue::Object& cueProperties() {
    static const JSONValue::Object properties = makeCueProperties();
    return properties;
}

} // namespace velarion::agentSchema
