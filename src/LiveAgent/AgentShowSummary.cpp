// get_show's picture of the document: sections with their cues, cue groups,
// the library, songs, sound and the safe slide. Keys are the ones the cue
// settings of add_cue and update_cue use, so an agent can read a value and
// send it back.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/CueGroups.h"
#include "LiveModel/ScreenPreset.h"

#include <algorithm>
#include <cmath>
#include <future>
#include <string>
#include <thread>
#include <type_traits>
#include <variant>

namespace velarion::agentService {

namespace {

template <class T> JSONValue orNull(const std::optional<T>& value) {
    if (!value) return nullptr;
    return JSONValue(*value);
}

JSONValue orNull(const std::optional<Uuid>& value) {
    if (!value) return nullptr;
    return value->text();
}

JSONValue textList(const std::vector<std::string>& texts) {
    JSONValue::Array list;
    for (const std::string& text : texts) list.emplace_back(text);
    return list;
}

JSONValue idList(const std::vector<Uuid>& ids) {
    JSONValue::Array list;
    for (const Uuid& id : ids) list.emplace_back(id.text());
    return list;
}

std::string_view followWord(Follow follow) {
    switch (follow) {
    case Follow::manual: return "go";
    case Follow::withPrevious: return "with_previous";
    case Follow::afterPrevious: return "after_previous";
    }
    return "go";
}

std::string_view lookWord(LyricLook look) {
    switch (look) {
    case LyricLook::overBackground: return "over_background";
    case LyricLook::lowerThird: return "lower_third";
    case LyricLook::onBlack: return "on_black";
    }
    return "over_background";
}

JSONValue geometryObject(const CueGeometry& geometry) {
    return JSONValue::Object{{"scale", geometry.scale},
                             {"x", geometry.x},
                             {"y", geometry.y},
                             {"rotation", geometry.rotation},
                             {"opacity", geometry.opacity}};
}

void addTrack(JSONValue::Object& object, std::string_view provider, const StreamTrackCue& track) {
    object["provider"] = provider;
    object["reference"] = track.reference;
    object["title"] = track.title;
    object["artist"] = track.artist;
    object["level"] = track.level;
    object["fade_in"] = track.fadeIn;
    object["fade_out"] = track.fadeOut;
    object["start_at"] = track.startAt;
    object["play_for"] = orNull(track.playFor);
    object["shuffle"] = false;
    object["audio_output"] = "external_app";
}

// The settings of the cue's kind, under the keys of the cue settings.
void addKind(JSONValue::Object& object, const ShowLookup& lookup, const Cue& cue) {
    const Show& show = lookup.show();
    std::visit(
        [&](const auto& kind) {
            using T = std::decay_t<decltype(kind)>;
            if constexpr (std::is_same_v<T, SlidesCue>) {
                object["media"] = kind.deckID.text();
                object["start_slide"] = kind.startSlide + 1;
                object["slide_dissolve"] = orNull(kind.dissolve);
                object["effective_slide_dissolve"] = kind.dissolve.value_or(show.effectiveSlideDissolve());
                const MediaItem* deck = lookup.media(kind.deckID);
                if (deck && deck->song) object["song"] = deck->id.text();
            } else if constexpr (std::is_same_v<T, VideoCue>) {
                object["media"] = kind.mediaID.text();
                object["layer"] = toString(kind.layer);
                object["loops"] = kind.loops;
                object["fade_in"] = kind.fadeIn;
                object["fade_out"] = kind.fadeOut;
                object["level"] = kind.level;
                object["in_point"] = kind.inPoint;
                object["out_point"] = orNull(kind.outPoint);
            } else if constexpr (std::is_same_v<T, ImageCue>) {
                object["media"] = kind.mediaID.text();
                object["layer"] = toString(kind.layer);
                object["fade_in"] = kind.fadeIn;
            } else if constexpr (std::is_same_v<T, AudioCue>) {
                object["media"] = kind.mediaID.text();
                object["bus"] = toString(kind.bus);
                const std::optional<SoundRole> role =
                    Show::soundRole(cue, kind.role ? nullptr : lookup.media(kind.mediaID));
                object["role"] = role ? JSONValue(toString(*role)) : JSONValue(nullptr);
                object["loops"] = kind.loops;
                object["fade_in"] = kind.fadeIn;
                object["fade_out"] = kind.fadeOut;
                object["level"] = kind.level;
                object["in_point"] = kind.inPoint;
                object["out_point"] = orNull(kind.outPoint);
            } else if constexpr (std::is_same_v<T, PlaylistCue>) {
                object["songs"] = idList(kind.mediaIDs);
                object["repeat"] = kind.repeats;
                object["crossfade"] = kind.crossfade;
                object["shuffle"] = kind.shuffle;
                object["fade_in"] = kind.fadeIn;
                object["bus"] = toString(kind.bus);
                object["level"] = kind.level;
            } else if constexpr (std::is_same_v<T, SpotifyTrack>) {
                addTrack(object, "spotify", kind);
            } else if constexpr (std::is_same_v<T, MusicTrack>) {
                addTrack(object, "music", kind);
            } else if constexpr (std::is_same_v<T, StreamPlaylistCue>) {
                object["provider"] = "spotify";
                object["reference"] = kind.reference;
                object["title"] = kind.title;
                object["artist"] = nullptr;
                object["level"] = kind.level;
                object["fade_in"] = kind.fadeIn;
                object["start_at"] = nullptr;
                object["play_for"] = nullptr;
                object["shuffle"] = kind.shuffle;
                object["audio_output"] = "external_app";
            } else if constexpr (std::is_same_v<T, TimerCue>) {
                JSONValue seconds = nullptr;
                JSONValue time = nullptr;
                std::string_view mode = "count_up";
                if (const auto* countdown = std::get_if<CountdownMode>(&kind.mode)) {
                    mode = "countdown";
                    seconds = countdown->seconds;
                } else if (const auto* countTo = std::get_if<CountToMode>(&kind.mode)) {
                    mode = "count_to";
                    time = clockText(countTo->minuteOfDay);
                }
                object["mode"] = mode;
                object["seconds"] = seconds;
                object["time"] = time;
                object["title"] = orNull(kind.title);
                object["show_on_audience"] = kind.showOnAudience;
                object["warn_at"] = kind.warnAt;
            } else if constexpr (std::is_same_v<T, MessageCue>) {
                object["text"] = kind.text;
                object["to"] = kind.target == MessageTarget::audience ? "audience" : "speaker";
                object["duration"] = orNull(kind.duration);
            } else if constexpr (std::is_same_v<T, GraphicCue>) {
                object["title"] = kind.title;
                object["subtitle"] = kind.subtitle;
                object["duration"] = orNull(kind.duration);
                object["layer"] = "graphics";
            } else if constexpr (std::is_same_v<T, ClearCue>) {
                object["target"] = toString(kind.target);
                object["fade"] = kind.fade;
                object["stop_cue"] = orNull(kind.cueID);
            }
        },
        cue.kind);
}

JSONValue soundObject(const std::vector<AudioDevice>& devices, const AudioSetup& audio) {
    JSONValue::Array outputs;
    for (const AudioDevice& device : devices) {
        outputs.emplace_back(JSONValue::Object{
            {"uid", device.id}, {"name", device.name}, {"system_default", device.isDefault}});
    }
    return JSONValue::Object{
        {"house_device_id", orNull(audio.houseDeviceID)},
        {"headphones_device_id", orNull(audio.headphonesDeviceID)},
        {"house_level", audio.houseLevel},
        {"available_outputs", std::move(outputs)},
        {"external_music", "Spotify and Music use their own app's sound output."},
    };
}

} // namespace

ShowLookup::ShowLookup(const Show& show) : show_(show) {
    // The first item with an id is the one the show's own lookup finds.
    media_.reserve(show.library.size());
    for (const MediaItem& item : show.library) media_.emplace(item.id, &item);
    int number = 0;
    for (const Section& section : show.sections) {
        for (const Cue& cue : section.cues) numbers_[cue.id] = ++number;
    }
    if (show.cueGroups) {
        for (const CueGroup& group : *show.cueGroups) {
            // The first group that lists a cue is its group.
            for (const Uuid& id : group.cueIDs) groups_.emplace(id, group.id);
        }
    }
}

int ShowLookup::number(const Uuid& cueID) const {
    const auto found = numbers_.find(cueID);
    return found == numbers_.end() ? 0 : found->second;
}

const MediaItem* ShowLookup::media(const Uuid& id) const {
    const auto found = media_.find(id);
    return found == media_.end() ? nullptr : found->second;
}

std::optional<Uuid> ShowLookup::groupID(const Uuid& cueID) const {
    const auto found = groups_.find(cueID);
    if (found == groups_.end()) return std::nullopt;
    return found->second;
}

std::string_view cueType(const CueKind& kind) {
    switch (cueKind::kindCase(kind)) {
    case CueKindCase::slides: return "slides";
    case CueKindCase::video: return "video";
    case CueKindCase::image: return "image";
    case CueKindCase::audio: return "audio";
    case CueKindCase::playlist: return "playlist";
    case CueKindCase::spotifyTrack:
    case CueKindCase::spotifyPlaylist: return "spotify";
    case CueKindCase::musicTrack: return "music";
    case CueKindCase::timer: return "timer";
    case CueKindCase::message: return "message";
    case CueKindCase::graphic: return "lower_third";
    case CueKindCase::clear: return "clear";
    }
    return "clear";
}

JSONValue layersValue(const std::vector<LayerKind>& layers) {
    if (const auto preset = screenPreset::fromLayers(layers)) return toString(*preset);
    JSONValue::Array words;
    for (LayerKind layer : layers) words.emplace_back(toString(layer));
    return words;
}

JSONValue cueObject(const ShowLookup& lookup, const Cue& cue) {
    // Built member by member: an initializer list would copy every value,
    // and get_show makes thousands of these. Room for the longest kind.
    JSONValue::Object object;
    object.reserve(28);
    object.emplace("id", cue.id.text());
    object.emplace("number", lookup.number(cue.id));
    object.emplace("name", cue.name);
    object.emplace("type", cueType(cue.kind));
    object.emplace("follow", followWord(cue.follow));
    object.emplace("group_id", orNull(lookup.groupID(cue.id)));
    object.emplace("group_duration", orNull(cue.groupDuration));
    object.emplace("description_override", orNull(cue.descriptionOverride));
    object.emplace("keep_on_screen", orNull(cue.keepOnScreen));
    object.emplace("operator_view", cue.operatorView ? JSONValue(toString(*cue.operatorView)) : JSONValue());
    object.emplace("visual_output_ids", cue.visualOutputIDs ? textList(*cue.visualOutputIDs) : JSONValue());
    object.emplace("audio_device_id", orNull(cue.audioDeviceID));
    object.emplace("enabled", cue.isEnabled);
    object.emplace("notes", cue.notes);
    object.emplace("pre_wait", cue.preWait);
    object.emplace("geometry", geometryObject(cue.geometry.value_or(CueGeometry::full())));
    addKind(object, lookup, cue);
    return object;
}

JSONValue cueObject(const Show& show, const Uuid& cueID) {
    const Cue* cue = show.cue(cueID);
    if (!cue) throw AgentFailure("The cue went before it could be read. get_show lists the cues.");
    return cueObject(ShowLookup(show), *cue);
}

JSONValue sectionObject(const ShowLookup& lookup, const Section& section) {
    JSONValue::Array cues;
    cues.reserve(section.cues.size());
    for (const Cue& cue : section.cues) cues.push_back(cueObject(lookup, cue));
    JSONValue::Object object;
    object.emplace("id", section.id.text());
    object.emplace("title", section.title);
    object.emplace("cues", std::move(cues));
    if (section.plannedStart) object.emplace("start", clockText(*section.plannedStart));
    if (section.plannedMinutes) object.emplace("minutes", *section.plannedMinutes);
    return object;
}

JSONValue groupObject(const CueGroup& group) {
    return JSONValue::Object{{"id", group.id.text()},
                             {"name", group.name},
                             {"repeat", group.repeats},
                             {"cue_ids", idList(group.cueIDs)}};
}

JSONValue mediaObject(const MediaItem& item) {
    JSONValue::Object object{{"id", item.id.text()},
                             {"name", item.name},
                             {"kind", item.ndiSource ? std::string("ndi") : std::string(toString(item.kind))}};
    if (item.duration) object["seconds"] = *item.duration;
    if (item.deck) {
        object["slides"] = static_cast<double>(item.deck->made ? item.deck->made->size() : item.deck->pages.size());
    }
    if (item.song) object["song"] = true;
    if (item.ndiSource) {
        object["ndi_source"] = JSONValue::Object{{"name", item.ndiSource->name},
                                                 {"url", orNull(item.ndiSource->url)}};
    }
    return object;
}

JSONValue songObject(const MediaItem& item) {
    const Song& song = *item.song;
    const auto codes = song.codes();
    JSONValue::Array sections;
    for (const SongSection& section : song.sections) {
        const auto code = codes.find(section.id);
        sections.emplace_back(JSONValue::Object{
            {"code", code == codes.end() ? std::string() : code->second},
            {"name", section.name},
            {"slides", static_cast<double>(section.slides(song.linesPerSlide).size())},
        });
    }
    return JSONValue::Object{
        {"id", item.id.text()},
        {"title", song.title.empty() ? item.name : song.title},
        {"sections", std::move(sections)},
        {"order", song.orderText()},
        {"look", lookWord(song.look)},
        {"lines_per_slide", song.linesPerSlide},
        {"credits", song.showsCredits},
        {"lyrics", song.text()},
    };
}

namespace {

// A large show's sections are most of the summary's work: they are built in
// a few parts side by side where the machine has the cores.
JSONValue::Array sectionObjects(const ShowLookup& lookup, const SharedList<Section>& sections) {
    constexpr std::size_t sectionsPerPart = 8;
    const std::size_t cores = std::max(1u, std::thread::hardware_concurrency());
    const std::size_t parts =
        std::clamp<std::size_t>(sections.size() / sectionsPerPart, 1, std::min<std::size_t>(cores, 4));
    const auto build = [&](std::size_t part) {
        JSONValue::Array built;
        const std::size_t from = sections.size() * part / parts, to = sections.size() * (part + 1) / parts;
        built.reserve(to - from);
        for (std::size_t i = from; i < to; ++i) built.push_back(sectionObject(lookup, sections[i]));
        return built;
    };
    std::vector<std::future<JSONValue::Array>> others;
    for (std::size_t part = 1; part < parts; ++part) others.push_back(std::async(std::launch::async, build, part));
    JSONValue::Array all = build(0);
    all.reserve(sections.size());
    for (auto& other : others) {
        for (JSONValue& section : other.get()) all.push_back(std::move(section));
    }
    return all;
}

} // namespace

ShowSnapshot showSnapshot(const AgentCall& call) {
    return ShowSnapshot{call.show(), call.host.package(), call.host.isLocked(), call.host.audioOutputs()};
}

JSONValue showSummary(const AgentCall& call) { return showSummary(showSnapshot(call)); }

JSONValue showSummary(const ShowSnapshot& snapshot) {
    const Show& show = snapshot.show;
    const std::optional<ShowPackage>& package = snapshot.package;
    const ShowLookup lookup(show);

    JSONValue::Array sections = sectionObjects(lookup, show.sections);
    JSONValue::Array groups;
    if (show.cueGroups) {
        for (const CueGroup& group : *show.cueGroups) groups.push_back(groupObject(group));
    }
    JSONValue::Array library;
    JSONValue::Array songs;
    for (const MediaItem& item : show.library) {
        library.push_back(mediaObject(item));
        if (item.song) songs.push_back(songObject(item));
    }
    JSONValue::Object summary;
    summary.emplace("title", show.title);
    summary.emplace("subtitle", show.subtitle);
    summary.emplace("file", package ? JSONValue(package->url().string()) : JSONValue());
    summary.emplace("saved_to_a_file",
                    package && package->url().string().find("/Velarion/Unsaved/") == std::string::npos);
    summary.emplace("locked", snapshot.locked);
    summary.emplace("slide_dissolve", show.effectiveSlideDissolve());
    summary.emplace("sections", std::move(sections));
    summary.emplace("cue_groups", std::move(groups));
    summary.emplace("library", std::move(library));
    summary.emplace("songs", std::move(songs));
    summary.emplace("screens", screensSummary(show.outputs));
    summary.emplace("sound", soundObject(snapshot.outputs, show.audio));
    summary.emplace("safe_slide", JSONValue::Object{{"title", show.holding.title},
                                                    {"subtitle", show.holding.subtitle},
                                                    {"image", orNull(show.holding.mediaID)}});
    return summary;
}

} // namespace velarion::agentService
