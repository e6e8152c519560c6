// Building what a cue does from the agent's settings: which settings belong
// to which type, and each type's payload, new or changed from its present
// value. Everything here refuses before any edit is made.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <set>
#include <string>

namespace velarion::agentService {

namespace {

using Keys = std::set<std::string_view>;

const Keys& commonKeys() {
    static const Keys keys{"type", "cue", "section", "after", "name", "follow", "notes",
                           "pre_wait", "enabled", "group_duration", "description_override"};
    return keys;
}

const Keys& typeKeys(std::string_view type) {
    static const std::map<std::string_view, Keys> keys{
        {"slides", {"media", "start_slide", "geometry", "keep_on_screen", "visual_output_ids",
                    "slide_dissolve", "operator_view"}},
        {"video", {"media", "layer", "loops", "fade_in", "fade_out", "level", "in_point", "out_point",
                   "geometry", "keep_on_screen", "visual_output_ids", "audio_device_id"}},
        {"image", {"media", "layer", "fade_in", "geometry", "keep_on_screen", "visual_output_ids"}},
        {"audio", {"media", "loops", "fade_in", "fade_out", "level", "in_point", "out_point", "bus",
                   "role", "audio_device_id"}},
        {"playlist", {"songs", "shuffle", "repeat", "crossfade", "fade_in", "level", "bus",
                      "audio_device_id"}},
        {"timer", {"mode", "seconds", "time", "title", "show_on_audience", "warn_at", "visual_output_ids"}},
        {"message", {"text", "to", "duration", "visual_output_ids"}},
        {"lower_third", {"title", "subtitle", "duration", "visual_output_ids"}},
        {"clear", {"target", "fade", "fade_out", "stop_cue"}},
        {"spotify", {"link", "reference", "artist", "level", "fade_in", "fade_out", "start_at",
                     "play_for", "shuffle"}},
        {"music", {"reference", "artist", "level", "fade_in", "fade_out", "start_at", "play_for"}},
    };
    static const Keys none;
    const auto found = keys.find(type);
    return found == keys.end() ? none : found->second;
}

// The settings of one call, read with the defaults of a new cue or the
// values of the present one.
class Settings {
public:
    explicit Settings(const JSONValue& arguments) : arguments_(arguments) {}

    bool has(std::string_view key) const { return arguments_[key] != nullptr; }
    const JSONValue* operator[](std::string_view key) const { return arguments_[key]; }

    double seconds(std::string_view key, double present) const {
        const std::optional<double> value = number(key);
        return value ? std::max(0.0, *value) : present;
    }
    // Null clears; absent keeps.
    std::optional<double> optionalSeconds(std::string_view key, std::optional<double> present) const {
        const JSONValue* value = arguments_[key];
        if (!value) return present;
        if (value->isNull()) return std::nullopt;
        const std::optional<double> given = number(key);
        return given ? std::optional(std::max(0.0, *given)) : present;
    }
    double level(double present) const {
        const std::optional<double> value = number("level");
        return value ? std::clamp(*value, 0.0, 1.0) : present;
    }
    bool flag(std::string_view key, bool present) const { return agentService::flag(arguments_[key], present); }
    std::string words(std::string_view key, std::string present) const {
        const JSONValue* value = arguments_[key];
        return value ? trimmingWhitespace(value->stringValue().value_or("")) : present;
    }

private:
    std::optional<double> number(std::string_view key) const {
        const JSONValue* value = arguments_[key];
        const std::optional<double> number = value ? value->doubleValue() : std::nullopt;
        if (!number || !std::isfinite(*number)) return std::nullopt;
        return number;
    }

    const JSONValue& arguments_;
};

template <class Kind> Kind baseOr(const std::optional<CueKind>& base) {
    if (base) {
        if (const auto* kind = std::get_if<Kind>(&*base)) return *kind;
    }
    return Kind{};
}

Uuid media(const Settings& settings, const Show& show, std::string_view kindWord, MediaKind kind,
           const std::optional<Uuid>& present) {
    if (!settings.has("media")) {
        if (present) return *present;
        throw AgentFailure("Give the " + std::string(kindWord) + " to play as media (id or name).");
    }
    return findMedia(settings["media"], show, kindWord, kind).id;
}

LayerKind layer(const Settings& settings, LayerKind present) {
    if (!settings.has("layer")) return present;
    const std::string word = settings.words("layer", "");
    if (word == "background") return LayerKind::background;
    if (word == "media") return LayerKind::media;
    throw AgentFailure("layer must be background or media.");
}

AudioBus bus(const Settings& settings, AudioBus present) {
    const std::string word = settings.words("bus", std::string(toString(present)));
    if (const auto parsed = parseEnum<AudioBus>(word)) return *parsed;
    throw AgentFailure("bus must be house or headphones.");
}

template <class Kind> std::optional<Uuid> presentMedia(const std::optional<CueKind>& base) {
    if (!base || !std::holds_alternative<Kind>(*base)) return std::nullopt;
    return cueKind::mediaID(*base);
}

CueKind timerKind(const Settings& settings, const std::optional<CueKind>& base) {
    TimerCue timer = baseOr<TimerCue>(base);
    std::string mode = std::holds_alternative<CountToMode>(timer.mode)   ? "count_to"
                       : std::holds_alternative<CountUpMode>(timer.mode) ? "count_up"
                                                                          : "countdown";
    if (settings.has("mode")) mode = settings.words("mode", mode);
    if (mode == "countdown") {
        const auto* present = std::get_if<CountdownMode>(&timer.mode);
        timer.mode = CountdownMode{settings.seconds("seconds", present ? present->seconds : 300)};
    } else if (mode == "count_to") {
        std::optional<int> minute = clock(settings["time"]);
        if (const auto* present = std::get_if<CountToMode>(&timer.mode); !minute && present) {
            minute = present->minuteOfDay;
        }
        if (!minute) throw AgentFailure("count_to needs time as \"HH:MM\".");
        timer.mode = CountToMode{*minute};
    } else if (mode == "count_up") {
        timer.mode = CountUpMode{};
    } else {
        throw AgentFailure("mode must be countdown, count_to, or count_up.");
    }
    if (const JSONValue* title = settings["title"]) {
        const std::string words = trimmingWhitespace(title->stringValue().value_or(""));
        timer.title = words.empty() ? std::nullopt : std::optional(words);
    }
    timer.showOnAudience = settings.flag("show_on_audience", timer.showOnAudience);
    timer.warnAt = settings.seconds("warn_at", timer.warnAt);
    return timer;
}

CueKind playlistKind(const Settings& settings, const Show& show, const std::optional<CueKind>& base) {
    const bool isNew = !base || !std::holds_alternative<PlaylistCue>(*base);
    PlaylistCue playlist = baseOr<PlaylistCue>(base);
    if (isNew) {
        playlist.repeats = true;
        playlist.crossfade = 5;
    }
    if (const JSONValue* songs = settings["songs"]) {
        const JSONValue::Array* list = songs->arrayValue();
        if (!list) throw AgentFailure("songs must be a list.");
        playlist.mediaIDs.clear();
        for (const JSONValue& song : *list) {
            playlist.mediaIDs.push_back(findMedia(&song, show, "sound file", MediaKind::audio).id);
        }
    }
    if (playlist.mediaIDs.empty()) throw AgentFailure("A playlist needs songs (library sound files).");
    playlist.shuffle = settings.flag("shuffle", playlist.shuffle);
    playlist.repeats = settings.flag("repeat", playlist.repeats);
    playlist.crossfade = settings.seconds("crossfade", playlist.crossfade);
    playlist.fadeIn = settings.seconds("fade_in", playlist.fadeIn);
    playlist.level = settings.level(playlist.level);
    playlist.bus = bus(settings, playlist.bus);
    return playlist;
}

// Settings shared by Spotify and Music tracks.
void applyTrackSettings(const Settings& settings, StreamTrackCue& track) {
    track.artist = settings.words("artist", track.artist);
    if (const JSONValue* level = settings["level"]) {
        const std::optional<double> percent = level->doubleValue();
        if (percent && std::isfinite(*percent)) track.level = static_cast<int>(std::lround(std::clamp(*percent, 0.0, 100.0)));
    }
    track.startAt = settings.seconds("start_at", track.startAt);
    track.playFor = settings.optionalSeconds("play_for", track.playFor);
    track.fadeIn = settings.seconds("fade_in", track.fadeIn);
    track.fadeOut = settings.seconds("fade_out", track.fadeOut);
}

CueKind spotifyKind(const Settings& settings, const std::optional<CueKind>& base) {
    std::string reference;
    std::string title;
    if (base) {
        if (const auto* track = std::get_if<SpotifyTrack>(&*base)) reference = track->reference, title = track->title;
        if (const auto* list = std::get_if<StreamPlaylistCue>(&*base)) reference = list->reference, title = list->title;
    }
    const char* given = settings.has("link") ? "link" : settings.has("reference") ? "reference" : nullptr;
    if (given) {
        const std::optional<std::string> uri = spotifyURI(settings.words(given, ""));
        if (!uri) throw AgentFailure("That isn't a Spotify song, album, or playlist link.");
        if (*uri != reference) title.clear(); // a new link's title is learned when it plays
        reference = *uri;
    }
    if (reference.empty()) throw AgentFailure("A spotify cue needs a link.");

    if (reference.starts_with("spotify:track:")) {
        if (settings.has("shuffle")) throw AgentFailure("shuffle is for Spotify playlists or albums.");
        SpotifyTrack track = baseOr<SpotifyTrack>(base);
        track.reference = reference;
        track.title = title;
        applyTrackSettings(settings, track);
        return track;
    }
    for (const char* key : {"start_at", "play_for"}) {
        if (settings.has(key)) {
            throw AgentFailure(std::string(key) + " is for a single song, not a Spotify playlist or album.");
        }
    }
    StreamPlaylistCue list = baseOr<StreamPlaylistCue>(base);
    list.reference = reference;
    list.title = title;
    // The track settings that a playlist has.
    StreamTrackCue levels;
    levels.level = list.level;
    levels.fadeIn = list.fadeIn;
    applyTrackSettings(settings, levels);
    list.level = levels.level;
    list.fadeIn = levels.fadeIn;
    list.shuffle = settings.flag("shuffle", list.shuffle);
    return list;
}

CueKind musicKind(const Settings& settings, const std::optional<CueKind>& base) {
    MusicTrack track = baseOr<MusicTrack>(base);
    if (settings.has("reference")) {
        const std::string reference = settings.words("reference", "");
        const bool isPersistentID = reference.size() == 16 && std::all_of(reference.begin(), reference.end(), [](char c) {
                                        return std::isxdigit(static_cast<unsigned char>(c)) != 0;
                                    });
        if (!isPersistentID) {
            throw AgentFailure("reference must be the song's Music library persistent ID (16 hexadecimal "
                               "characters).");
        }
        if (reference != track.reference) track.title.clear();
        track.reference = reference;
    }
    if (track.reference.empty()) throw AgentFailure("A music cue needs a reference: the song's Music library persistent ID.");
    applyTrackSettings(settings, track);
    return track;
}

CueKind clearKind(const Settings& settings, const Show& show, const std::optional<CueKind>& base) {
    ClearCue clear = baseOr<ClearCue>(base);
    if (settings.has("target")) clear.target = choice(settings["target"], "target");
    clear.fade = settings.seconds("fade_out", settings.seconds("fade", clear.fade));
    if (const JSONValue* stop = settings["stop_cue"]) {
        if (stop->isNull()) clear.cueID.reset();
        else clear.cueID = findCue(stop, show).id;
    }
    return clear;
}

} // namespace

void validateCueArguments(const JSONValue& arguments, std::string_view type) {
    const JSONValue::Object* members = arguments.objectValue();
    if (!members) return;
    const Keys& own = typeKeys(type);
    // Keys come sorted, so the first stray key named is always the same one.
    for (const auto& [key, value] : *members) {
        if (!commonKeys().contains(key) && !own.contains(key)) {
            throw AgentFailure(key + " isn't a setting for a " + std::string(type) + " cue. No changes were made.");
        }
    }
    if (arguments["link"] && arguments["reference"]) {
        throw AgentFailure("Give link or reference, not both. No changes were made.");
    }
    if (type == "lower_third" && arguments["title"] && arguments["title"]->isNull()) {
        throw AgentFailure("A lower third title must be text. No changes were made.");
    }
}

CueKind makeKind(const JSONValue& arguments, std::string_view type, const Show& show,
                 const std::optional<CueKind>& base) {
    const Settings settings(arguments);
    if (type == "slides") {
        SlidesCue slides = baseOr<SlidesCue>(base);
        slides.deckID = media(settings, show, "deck", MediaKind::deck, presentMedia<SlidesCue>(base));
        if (const JSONValue* start = settings["start_slide"]) {
            slides.startSlide = static_cast<int>(std::clamp<std::int64_t>(start->intValue().value_or(1), 1, 100'000)) - 1;
        }
        if (const JSONValue* dissolve = settings["slide_dissolve"]) {
            if (dissolve->isNull()) slides.dissolve.reset();
            else slides.dissolve = std::clamp(settings.seconds("slide_dissolve", 0), 0.0, 10.0);
        }
        return slides;
    }
    if (type == "video") {
        VideoCue video = baseOr<VideoCue>(base);
        video.mediaID = media(settings, show, "video", MediaKind::video, presentMedia<VideoCue>(base));
        video.layer = layer(settings, video.layer);
        video.loops = settings.flag("loops", video.loops);
        video.fadeIn = settings.seconds("fade_in", video.fadeIn);
        video.fadeOut = settings.seconds("fade_out", video.fadeOut);
        video.level = settings.level(video.level);
        video.inPoint = settings.seconds("in_point", video.inPoint);
        video.outPoint = settings.optionalSeconds("out_point", video.outPoint);
        return video;
    }
    if (type == "image") {
        ImageCue image = baseOr<ImageCue>(base);
        image.mediaID = media(settings, show, "image", MediaKind::image, presentMedia<ImageCue>(base));
        image.layer = layer(settings, image.layer);
        image.fadeIn = settings.seconds("fade_in", image.fadeIn);
        return image;
    }
    if (type == "audio") {
        AudioCue audio = baseOr<AudioCue>(base);
        audio.mediaID = media(settings, show, "sound file", MediaKind::audio, presentMedia<AudioCue>(base));
        audio.loops = settings.flag("loops", audio.loops);
        audio.fadeIn = settings.seconds("fade_in", audio.fadeIn);
        audio.fadeOut = settings.seconds("fade_out", audio.fadeOut);
        audio.level = settings.level(audio.level);
        audio.inPoint = settings.seconds("in_point", audio.inPoint);
        audio.outPoint = settings.optionalSeconds("out_point", audio.outPoint);
        audio.bus = bus(settings, audio.bus);
        if (settings.has("role")) {
            const auto role = parseEnum<SoundRole>(settings.words("role", ""));
            if (!role) throw AgentFailure("role must be music or effect.");
            audio.role = role;
        }
        return audio;
    }
    if (type == "playlist") return playlistKind(settings, show, base);
    if (type == "timer") return timerKind(settings, base);
    if (type == "message") {
        MessageCue message = baseOr<MessageCue>(base);
        if (settings.has("text") || !base) message.text = text(settings["text"], "text");
        if (settings.has("to")) {
            message.target = settings.words("to", "") == "audience" ? MessageTarget::audience : MessageTarget::stage;
        }
        message.duration = settings.optionalSeconds("duration", message.duration);
        return message;
    }
    if (type == "lower_third") {
        GraphicCue graphic = baseOr<GraphicCue>(base);
        if (settings.has("title") || !base) graphic.title = text(settings["title"], "title");
        graphic.subtitle = settings.words("subtitle", graphic.subtitle);
        graphic.duration = settings.optionalSeconds("duration", graphic.duration);
        return graphic;
    }
    if (type == "clear") return clearKind(settings, show, base);
    if (type == "spotify") return spotifyKind(settings, base);
    if (type == "music") return musicKind(settings, base);
    throw AgentFailure("type must be one of: slides, video, image, audio, playlist, timer, message, "
                       "lower_third, clear, spotify, music.");
}

std::string defaultName([[maybe_unused]] std::string_view type, const CueKind& kind, const JSONValue& arguments, const Show& show) {
    if (const auto* timer = std::get_if<TimerCue>(&kind)) {
        // A count to a clock time is what operators call a countdown.
        return std::holds_alternative<CountToMode>(timer->mode) ? "Countdown" : "Timer";
    }
    if (const auto* message = std::get_if<MessageCue>(&kind)) {
        return message->target == MessageTarget::audience ? "Audience message" : "Speaker message";
    }
    if (const auto* graphic = std::get_if<GraphicCue>(&kind)) return "Lower third — " + graphic->title;
    if (const auto* clear = std::get_if<ClearCue>(&kind)) {
        if (arguments["stop_cue"] && clear->cueID) {
            const Cue* stopped = show.cue(*clear->cueID);
            return "Stop " + (stopped ? stopped->name : std::string("cue"));
        }
        return "Clear " + std::string(toString(clear->target));
    }
    const std::vector<Uuid> items = cueKind::mediaIDs(kind);
    if (!items.empty()) {
        if (const MediaItem* item = show.media(items.front())) return item->name;
    }
    if (const auto* track = std::get_if<SpotifyTrack>(&kind); track && !track->title.empty()) return track->title;
    if (const auto* track = std::get_if<MusicTrack>(&kind); track && !track->title.empty()) return track->title;
    if (const auto* list = std::get_if<StreamPlaylistCue>(&kind); list && !list->title.empty()) return list->title;
    return std::string(cueKind::label(kind));
}

} // namespace velarion::agentService
