// The nested objects of set_network_feeds and set_screens: feeds, legacy
// screens, logical screens and looks. Only ranges the checker can enforce are
// given as bounds; evenness of a width and uniqueness of names are the
// tools' own checks.

#include "LiveAgentKit/AgentSchema.h"

#include <string>
#include <vector>

namespace velarion::agentSchema {

namespace {

// Functions rather than globals: the catalogue may be built during another
// file's static initialisation.
std::vector<std::string> layerNames() {
    return {"background", "media", "slides", "graphics", "holding", "messages"};
}

std::vector<std::string> presetNames() {
    return {"everything", "clean", "overlay", "backdrop"};
}

JSONValue lyricLines(std::string_view description) {
    return bounded(nullable(integer(description)), 1, 8);
}

// What a screen or look shows: a preset or its own list of layers.
JSONValue shows() {
    const std::vector<std::string> layers = layerNames();
    std::string description = "everything | clean | overlay | backdrop, or an array of layers: ";
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (i > 0)
            description += ", ";
        description += layers[i];
    }
    return anyOf({string("Screen preset.", presetNames()), arrayOf(string("Layer.", layers))},
                 description);
}

JSONValue makeFeedObject() {
    return schema(
        {
            {"id", string("Existing feed UUID; omit to create a feed.")},
            {"name", string("Name shown to NDI receivers; must be unique within this show.")},
            {"preset", string("Picture selection.", presetNames())},
            {"layers", arrayOf(string("Custom layer; use instead of preset.", layerNames()))},
            {"transparent", boolean("Keep a transparent background for an overlay feed.")},
            {"sound", boolean("Also send the sound of playing videos. Default false.")},
            {"alpha_mode", string("Alpha encoding. off is opaque; straight and premultiplied "
                                  "preserve transparency.",
                                  {"off", "straight", "premultiplied"})},
            {"source",
             anyOf({string("Picture to send.", {"audience", "stage"}),
                    schema({{"screen", string("Logical screen id from get_show.")}}, {"screen"})},
                   "audience uses this feed's layers; stage uses the confidence picture; {screen: "
                   "id} mirrors that logical screen and its look.")},
            {"lyric_lines", lyricLines("Maximum lyric lines, 1–8; null shows whole slides.")},
            {"width", bounded(integer("Even pixel width."), 16, 8192)},
            {"height", bounded(integer(""), 16, 8192)},
            {"fps", bounded(integer(""), 1, 120)},
            {"frame_rate", schema(
                               {
                                   {"numerator", bounded(integer(""), 1, 120000)},
                                   {"denominator", bounded(integer(""), 1, 120000)},
                               },
                               {"numerator", "denominator"})},
        },
        {"name"});
}

JSONValue makeLegacyScreenObject() {
    return schema(
        {
            {"display", string("")},
            {"shows", shows()},
            {"lyric_lines", bounded(integer(""), 0, 8)},
        },
        {"display"});
}

JSONValue makeScreenObject() {
    return schema({
        {"id", string("Stable logical screen id; omit to reuse its connection or create one.")},
        {"name", string("Operator-facing screen name.")},
        {"role", string("Picture role.", {"audience", "stage", "stream", "lobby"})},
        {"destination",
         schema(
             {
                 {"type", string("Connection kind.", {"display", "ndi", "placeholder"})},
                 {"id", string("Display id or name from list_displays, or NDI feed UUID. Omit for "
                               "placeholder.")},
             },
             {"type"})},
        {"look_id", nullable(string("Saved look UUID; null uses custom settings."))},
        {"shows", shows()},
        {"lyric_lines", lyricLines("")},
    });
}

JSONValue makeLookObject() {
    return schema(
        {
            {"id", string("Saved look UUID; omit to reuse a matching name or create one.")},
            {"name", string("Unique look name.")},
            {"shows", shows()},
            {"lyric_lines", lyricLines("")},
        },
        {"name"});
}

} // namespace

const JSONValue& feedObject() {
    static const JSONValue object = makeFeedObject();
    return object;
}

const JSONValue& legacyScreenObject() {
    static const JSONValue object = makeLegacyScreenObject();
    return object;
}

const JSONValue& screenObject() {
    static const JSONValue object = makeScreenObject();
    return object;
}

const JSONValue& lookObject() {
    static const JSONValue object = makeLookObject();
    return object;
}

} // namespace velarion::agentSchema
