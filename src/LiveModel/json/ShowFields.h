#pragma once
// The JSON keys of every record of the show document, in field order. One
// list serves reading and writing (see JsonCodec.h). Records with forms of
// their own (the output setup and network feeds) are coded in OutputSetupJson.cpp.

#include "LiveModel/Show.h"
#include "LiveModel/json/JsonCodec.h"

#include <type_traits>

namespace velarion::json {

// S is the record or its const form, so one list serves reading and writing.
template <class S, class R>
concept Is = std::is_base_of_v<R, std::remove_const_t<S>>;

// ------------------------------------------------------- variant forms

template <> struct VariantForm<CueKind> {
    static constexpr auto& names = enumNames<CueKindCase>;
    static constexpr bool wrapsPayload = true;
};
template <> struct VariantForm<Backdrop> {
    static constexpr auto names = std::to_array<std::string_view>({"color", "media", "builtIn", "none"});
    static constexpr bool wrapsPayload = false;
};
template <> struct VariantForm<TimerMode> {
    static constexpr auto names = std::to_array<std::string_view>({"countdown", "countTo", "countUp"});
    static constexpr bool wrapsPayload = false;
};
template <> struct VariantForm<ScreenDestination> {
    static constexpr auto names = std::to_array<std::string_view>({"display", "ndi", "placeholder"});
    static constexpr bool wrapsPayload = false;
};
template <> struct VariantForm<NetworkFeedSource> {
    static constexpr auto names = std::to_array<std::string_view>({"screen", "audience", "stage"});
    static constexpr bool wrapsPayload = false;
};

// Case payloads. Cases without payload are empty objects.
template <class V, Is<backdrop::Color> S> void visitFields(V& v, S& s) { v("_0", s.rgb); }
template <class V, Is<backdrop::Media> S> void visitFields(V& v, S& s) { v("_0", s.mediaID); }
template <class V, Is<backdrop::BuiltIn> S> void visitFields(V& v, S& s) { v("_0", s.loop); }
template <class V, Is<CountdownMode> S> void visitFields(V& v, S& s) { v("seconds", s.seconds); }
template <class V, Is<CountToMode> S> void visitFields(V& v, S& s) { v("minuteOfDay", s.minuteOfDay); }
template <class V, Is<destination::Display> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<destination::Ndi> S> void visitFields(V& v, S& s) { v("_0", s.feedID); }
template <class V, Is<feedSource::Screen> S> void visitFields(V& v, S& s) { v("_0", s.id); }

template <class V, class S>
    requires Is<S, backdrop::None> || Is<S, CountUpMode> || Is<S, destination::Placeholder> ||
             Is<S, feedSource::Audience> || Is<S, feedSource::Stage>
void visitFields(V&, S&) {}

// ------------------------------------------------------- cue payloads

template <class V, Is<SlidesCue> S> void visitFields(V& v, S& s) {
    v("deckID", s.deckID);
    v("startSlide", s.startSlide);
    v("dissolve", s.dissolve);
}

template <class V, Is<VideoCue> S> void visitFields(V& v, S& s) {
    v("mediaID", s.mediaID);
    v("layer", s.layer);
    v("inPoint", s.inPoint);
    v("outPoint", s.outPoint);
    v("loops", s.loops);
    v("crossfadesLoop", s.crossfadesLoop);
    v("holdLastFrame", s.holdLastFrame);
    v("fadeIn", s.fadeIn);
    v("fadeOut", s.fadeOut);
    v("level", s.level);
    v("musicRule", s.musicRule);
}

template <class V, Is<ImageCue> S> void visitFields(V& v, S& s) {
    v("mediaID", s.mediaID);
    v("layer", s.layer);
    v("fadeIn", s.fadeIn);
}

template <class V, Is<AudioCue> S> void visitFields(V& v, S& s) {
    v("mediaID", s.mediaID);
    v("inPoint", s.inPoint);
    v("outPoint", s.outPoint);
    v("fadeIn", s.fadeIn);
    v("fadeOut", s.fadeOut);
    v("level", s.level);
    v("loops", s.loops);
    v("crossfadesLoop", s.crossfadesLoop);
    v("bus", s.bus);
    v("role", s.role);
}

template <class V, Is<PlaylistCue> S> void visitFields(V& v, S& s) {
    v("mediaIDs", s.mediaIDs);
    v("shuffle", s.shuffle);
    v("repeats", s.repeats);
    v("crossfade", s.crossfade);
    v("fadeIn", s.fadeIn);
    v("level", s.level);
    v("bus", s.bus);
}

template <class V, Is<StreamTrackCue> S> void visitFields(V& v, S& s) {
    v("reference", s.reference);
    v("title", s.title);
    v("artist", s.artist);
    v("startAt", s.startAt);
    v("fadeIn", s.fadeIn);
    v("playFor", s.playFor);
    v("fadeOut", s.fadeOut);
    v("level", s.level);
}

template <class V, Is<StreamPlaylistCue> S> void visitFields(V& v, S& s) {
    v("reference", s.reference);
    v("title", s.title);
    v("shuffle", s.shuffle);
    v("fadeIn", s.fadeIn);
    v("level", s.level);
}

template <class V, Is<CountdownLook> S> void visitFields(V& v, S& s) {
    v("layout", s.layout);
    v("backdrop", s.backdrop);
    v("logoID", s.logoID);
}

template <class V, Is<TimerCue> S> void visitFields(V& v, S& s) {
    v("mode", s.mode);
    v("title", s.title);
    v("warnAt", s.warnAt);
    v("showOnStage", s.showOnStage);
    v("showOnAudience", s.showOnAudience);
    v("look", s.look);
}

template <class V, Is<MessageCue> S> void visitFields(V& v, S& s) {
    v("text", s.text);
    v("target", s.target);
    v("duration", s.duration);
}

template <class V, Is<GraphicCue> S> void visitFields(V& v, S& s) {
    v("title", s.title);
    v("subtitle", s.subtitle);
    v("duration", s.duration);
}

template <class V, Is<ClearCue> S> void visitFields(V& v, S& s) {
    v("target", s.target);
    v("fade", s.fade);
    v("cueID", s.cueID);
}

// ------------------------------------------------------- the run of show

template <class V, Is<CueGeometry> S> void visitFields(V& v, S& s) {
    v("scale", s.scale);
    v("x", s.x);
    v("y", s.y);
    v("rotation", s.rotation);
    v("opacity", s.opacity);
}

template <class V, Is<Cue> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("notes", s.notes);
    v("kind", s.kind);
    v("follow", s.follow);
    v("preWait", s.preWait);
    v("isEnabled", s.isEnabled);
    v("musicHandoff", s.musicHandoff);
    v("geometry", s.geometry);
    v("keepOnScreen", s.keepOnScreen);
    v("operatorView", s.operatorView);
    v("visualOutputIDs", s.visualOutputIDs);
    v("audioDeviceID", s.audioDeviceID);
    v("descriptionOverride", s.descriptionOverride);
    v("groupDuration", s.groupDuration);
}

template <class V, Is<Section> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("plannedStart", s.plannedStart);
    v("plannedMinutes", s.plannedMinutes);
    v("cues", s.cues);
}

template <class V, Is<CueGroup> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("cueIDs", s.cueIDs);
    v("repeats", s.repeats);
}

// ------------------------------------------------------- the library

template <class V, Is<TextBox> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("text", s.text);
    v("x", s.x);
    v("y", s.y);
    v("width", s.width);
    v("height", s.height);
    v("font", s.font);
    v("size", s.size);
    v("bold", s.bold);
    v("color", s.color);
    v("align", s.align);
    v("bullets", s.bullets);
}

template <class V, Is<LyricSlideBaseline> S> void visitFields(V& v, S& s) {
    v("color", s.color);
    v("isClear", s.isClear);
    v("notes", s.notes);
    v("sectionName", s.sectionName);
    v("boxes", s.boxes);
}

template <class V, Is<LyricSlideSource> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("sectionID", s.sectionID);
    v("occurrence", s.occurrence);
    v("page", s.page);
    v("baseline", s.baseline);
}

template <class V, Is<MadeSlide> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("layout", s.layout);
    v("title", s.title);
    v("text", s.text);
    v("color", s.color);
    v("imageID", s.imageID);
    v("notes", s.notes);
    v("boxes", s.boxes);
    v("isClear", s.isClear);
    v("sectionName", s.sectionName);
    v("importedPage", s.importedPage);
    v("sectionNames", s.sectionNames);
    v("lyricSource", s.lyricSource);
}

template <class V, Is<DeckGroup> S> void visitFields(V& v, S& s) {
    v("name", s.name);
    v("firstSlide", s.firstSlide);
}

template <class V, Is<DeckInfo> S> void visitFields(V& v, S& s) {
    v("pages", s.pages);
    v("notes", s.notes);
    v("groups", s.groups);
    v("source", s.source);
    v("made", s.made);
    v("lyricSources", s.lyricSources);
    v("background", s.background);
}

template <class V, Is<SongSection> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("text", s.text);
}

template <class V, Is<Song> S> void visitFields(V& v, S& s) {
    v("title", s.title);
    v("author", s.author);
    v("copyright", s.copyright);
    v("ccli", s.ccli);
    v("sections", s.sections);
    v("order", s.order);
    v("look", s.look);
    v("linesPerSlide", s.linesPerSlide);
    v("showsCredits", s.showsCredits);
}

template <class V, Is<NDISource> S> void visitFields(V& v, S& s) {
    v("name", s.name);
    v("url", s.url);
}

template <class V, Is<MediaItem> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("kind", s.kind);
    v("name", s.name);
    v("fileName", s.fileName);
    v("duration", s.duration);
    v("posterSeconds", s.posterSeconds);
    v("bin", s.bin);
    v("deck", s.deck);
    v("song", s.song);
    v("ndiSource", s.ndiSource);
}

// ------------------------------------------------------- outputs

// Coded by hand: every key of the setup is optional on reading, feeds keep
// their legacy keys, and line limits are clamped as they are read.
void read(const Value& value, OutputSetup& out, DecodeContext& context);
Value write(const OutputSetup& setup, EncodeContext& context);
void read(const Value& value, NetworkFeed& out, DecodeContext& context);
Value write(const NetworkFeed& feed, EncodeContext& context);

template <class V, Is<VideoFrameRate> S> void visitFields(V& v, S& s) {
    v("numerator", s.numerator);
    v("denominator", s.denominator);
}

template <class V, Is<LogicalScreen> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("role", s.role);
    v("destination", s.destination);
    v("layers", s.layers);
    v("lyricLines", s.lyricLines);
    v("lookID", s.lookID);
}

template <class V, Is<OutputLook> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("layers", s.layers);
    v("lyricLines", s.lyricLines);
}

// ------------------------------------------------------- the show

template <class V, Is<AudioSetup> S> void visitFields(V& v, S& s) {
    v("houseDeviceID", s.houseDeviceID);
    v("headphonesDeviceID", s.headphonesDeviceID);
    v("houseLevel", s.houseLevel);
    v("newSoundFadesOld", s.newSoundFadesOld);
}

template <class V, Is<HoldingScreen> S> void visitFields(V& v, S& s) {
    v("mediaID", s.mediaID);
    v("title", s.title);
    v("subtitle", s.subtitle);
}

template <class V, Is<Show> S> void visitFields(V& v, S& s) {
    v("formatVersion", s.formatVersion);
    v("id", s.id);
    v("title", s.title);
    v("subtitle", s.subtitle);
    v("sections", s.sections);
    v("library", s.library);
    v("outputs", s.outputs);
    v("audio", s.audio);
    v("holding", s.holding);
    v("slideDissolve", s.slideDissolve);
    v("cueGroups", s.cueGroups);
}

} // namespace velarion::json
