// Songs from lyrics: a song deck in the library and a slides cue that plays
// it, and changes to a song whose slides then redraw, live ones included.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/SongRedraw.h"

#include <algorithm>
#include <exception>
#include <string>

namespace velarion::agentService {

namespace {

// The name a song without a title line goes by.
constexpr const char* untitledSong = "Untitled song";

std::optional<LyricLook> look(const JSONValue* value) {
    if (!value) return std::nullopt;
    const std::string word = value->stringValue().value_or("");
    if (word == "over_background") return LyricLook::overBackground;
    if (word == "lower_third") return LyricLook::lowerThird;
    if (word == "on_black") return LyricLook::onBlack;
    throw AgentFailure("look must be over_background, lower_third, or on_black.");
}

bool hasWords(const Song& song) {
    return std::any_of(song.sections.begin(), song.sections.end(), [](const SongSection& section) {
        return section.text.find_first_not_of(" \t\r\n") != std::string::npos;
    });
}

std::string joined(const std::vector<std::string>& words, std::string_view separator) {
    std::string result;
    for (const std::string& word : words) {
        if (!result.empty()) result += separator;
        result += word;
    }
    return result;
}

// The song from the arguments; on `base` every setting not given keeps its
// value.
Song makeSong(const JSONValue& arguments, const std::optional<Song>& base) {
    const std::optional<LyricLook> givenLook = look(arguments["look"]);
    const LyricLook chosenLook = givenLook.value_or(base ? base->look : LyricLook::overBackground);
    int lines = base ? base->linesPerSlide : 4;
    if (const JSONValue* given = arguments["lines_per_slide"]) {
        lines = static_cast<int>(std::clamp<std::int64_t>(given->intValue().value_or(lines), Song::minLinesPerSlide,
                                                          Song::maxLinesPerSlide));
    }
    Song song;
    if (const JSONValue* lyrics = arguments["lyrics"]) {
        song = Song::parsing(lyrics->stringValue().value_or(""), chosenLook, lines);
        if (!hasWords(song)) throw AgentFailure("Those lyrics have no words.");
        if (base) song = song.preservingSectionIDs(*base);
    } else if (base) {
        song = *base;
    } else {
        throw AgentFailure("Give the lyrics.");
    }
    song.look = chosenLook;
    song.linesPerSlide = lines;
    song.showsCredits = flag(arguments["credits"], base ? base->showsCredits : true);
    if (const JSONValue* order = arguments["order"]) {
        const std::vector<std::string> unknown = song.setOrder(order->stringValue().value_or(""));
        if (!unknown.empty()) {
            const auto codes = song.codes();
            std::vector<std::string> known;
            for (const SongSection& section : song.sections) {
                if (const auto code = codes.find(section.id); code != codes.end()) known.push_back(code->second);
            }
            throw AgentFailure("Not sections of this song: " + joined(unknown, ", ") + ". Its codes are " +
                               joined(known, ", ") + ".");
        }
    }
    return song;
}

} // namespace

JSONValue addSong(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Song song = makeSong(arguments, std::nullopt);
    Cue cue;
    cue.id = Uuid::random();
    if (const JSONValue* follow = arguments["follow"]) applyCommon(JSONValue::Object{{"follow", *follow}}, cue, show);
    std::optional<Uuid> section;
    std::optional<Uuid> after;
    if (arguments["section"]) section = findSection(arguments["section"], show).id;
    if (arguments["after"]) after = findCue(arguments["after"], show).id;

    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.name = song.title.empty() ? untitledSong : song.title;
    item.fileName = MediaItem::madeFileName;
    // The pictures are drawn off the main loop; the song and its cue go in
    // once they are all written.
    call.afterDrawing = AfterDrawing{
        updatingSong(item, song), "Couldn't make the song's slides: ",
        [cue, section, after](AgentCall& later, const MediaItem& drawn) mutable -> JSONValue {
            cue.name = drawn.name;
            cue.kind = SlidesCue{drawn.id};
            apply(later, edit::AddMedia{drawn});
            apply(later, edit::InsertCue{cue, section, after});
            const Show changed = later.show();
            const MediaItem* stored = changed.media(drawn.id);
            return JSONValue::Object{{"song", stored ? songObject(*stored) : JSONValue()},
                                     {"cue", cueObject(changed, cue.id)}};
        }};
    return JSONValue();
}

JSONValue updateSong(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const JSONValue* reference = arguments["song"];
    // A song is reached through its cue first, then as a library item.
    const Cue* cue = nullptr;
    try {
        cue = &findCue(reference, show);
    } catch (const AgentFailure&) {
    }
    const MediaItem* item = nullptr;
    if (cue) {
        const auto* slides = std::get_if<SlidesCue>(&cue->kind);
        item = slides ? show.media(slides->deckID) : nullptr;
        if (!item) throw AgentFailure("That isn't a song. Give a song's cue or library item.");
    } else {
        item = &findMedia(reference, show, "song", std::nullopt);
    }
    if (!item->song) throw AgentFailure("That isn't a song. Give a song's cue or library item.");

    const Song song = makeSong(arguments, item->song);
    MediaItem updated = updatingSong(*item, song);
    if (!song.title.empty() && item->song->title != song.title && item->name == item->song->title) {
        updated.name = song.title;
    }
    call.afterDrawing = AfterDrawing{
        std::move(updated), "Couldn't redraw the song: ", [](AgentCall& later, const MediaItem& drawn) -> JSONValue {
            apply(later, edit::UpdateMedia{drawn});
            const Show changed = later.show();
            const MediaItem* stored = changed.media(drawn.id);
            if (!stored || !stored->song)
                throw AgentFailure("The song went before it could be read. get_show lists the songs.");
            return songObject(*stored);
        }};
    return JSONValue();
}

} // namespace velarion::agentService
