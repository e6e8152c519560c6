#include "Console/CueText.h"

#include "LiveModel/TimeText.h"

#include <variant>

namespace velarion::console {

namespace {

template <class... Cases> struct Overloaded : Cases... {
    using Cases::operator()...;
};

std::optional<double> mediaSeconds(const Show& show, const Uuid& id, double inPoint,
                                   const std::optional<double>& outPoint) {
    if (outPoint) return *outPoint - inPoint;
    const MediaItem* item = show.media(id);
    if (!item || !item->duration) return std::nullopt;
    return *item->duration - inPoint;
}

std::string seconds(const std::optional<double>& value) {
    return value ? TimeText::duration(*value) : std::string();
}

std::string busName(AudioBus bus) { return bus == AudioBus::house ? "House" : "Headphones"; }

} // namespace

std::string cueLengthText(const Cue& cue, const Show& show) {
    return std::visit(
        Overloaded{
            [&](const SlidesCue& slides) -> std::string {
                const MediaItem* item = show.media(slides.deckID);
                if (!item || !item->deck) return {};
                const std::size_t count =
                    item->deck->made ? item->deck->made->size() : item->deck->pages.size();
                return std::to_string(count) + (count == 1 ? " slide" : " slides");
            },
            [&](const VideoCue& video) -> std::string {
                if (video.loops) return "Loop";
                return seconds(mediaSeconds(show, video.mediaID, video.inPoint, video.outPoint));
            },
            [&](const ImageCue&) -> std::string { return {}; },
            [&](const AudioCue& audio) -> std::string {
                if (audio.loops) return "Loop";
                return seconds(mediaSeconds(show, audio.mediaID, audio.inPoint, audio.outPoint));
            },
            [&](const PlaylistCue& list) -> std::string {
                if (list.repeats) return "Loop";
                double total = 0;
                for (const Uuid& id : list.mediaIDs) {
                    const MediaItem* item = show.media(id);
                    if (!item || !item->duration) return {};
                    total += *item->duration;
                }
                return TimeText::duration(total);
            },
            [&](const SpotifyTrack& track) { return seconds(track.playFor); },
            [&](const MusicTrack& track) { return seconds(track.playFor); },
            [&](const StreamPlaylistCue&) -> std::string { return {}; },
            [&](const TimerCue& timer) -> std::string {
                if (const auto* down = std::get_if<CountdownMode>(&timer.mode)) return TimeText::duration(down->seconds);
                if (const auto* to = std::get_if<CountToMode>(&timer.mode))
                    return "until " + TimeText::clock(to->minuteOfDay);
                return "Counts up";
            },
            [&](const MessageCue& message) { return seconds(message.duration); },
            [&](const GraphicCue& graphic) { return seconds(graphic.duration); },
            [&](const ClearCue& clear) -> std::string {
                return clear.fade > 0 ? "Fade " + TimeText::duration(clear.fade) : std::string();
            },
        },
        cue.kind);
}

std::string followText(Follow follow) {
    switch (follow) {
    case Follow::manual: return {};
    case Follow::withPrevious: return "With previous";
    case Follow::afterPrevious: return "After previous";
    }
    return {};
}

std::string targetsText(const Cue& cue, const Show& show) {
    const CueKind& kind = cue.kind;
    if (const auto* audio = std::get_if<AudioCue>(&kind)) return busName(audio->bus);
    if (const auto* list = std::get_if<PlaylistCue>(&kind)) return busName(list->bus);
    if (std::holds_alternative<SpotifyTrack>(kind) || std::holds_alternative<StreamPlaylistCue>(kind))
        return "Spotify";
    if (std::holds_alternative<MusicTrack>(kind)) return "Music";
    if (const auto* message = std::get_if<MessageCue>(&kind))
        return message->target == MessageTarget::stage ? "Stage" : "Audience";
    if (std::holds_alternative<TimerCue>(kind) || std::holds_alternative<ClearCue>(kind)) return {};
    const auto outputs = show.visualOutputs(cue);
    if (!outputs) return "All screens";
    std::string text;
    for (const std::string& id : *outputs) {
        std::string name = id;
        for (const LogicalScreen& screen : show.outputs.screens)
            if (screen.id == id) name = screen.name;
        if (id == OutputSetup::testWindowID) name = "Test window";
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "No screen" : text;
}

std::string sectionPlanText(const Section& section) {
    std::string text;
    if (section.plannedStart) text = TimeText::clock(*section.plannedStart);
    if (section.plannedMinutes)
        text += (text.empty() ? "" : " · ") + std::to_string(*section.plannedMinutes) + " min";
    return text;
}

std::string scheduleText(int deltaMinutes) {
    if (deltaMinutes == 0) return "On time";
    const int minutes = deltaMinutes < 0 ? -deltaMinutes : deltaMinutes;
    return std::to_string(minutes) + " min " + (deltaMinutes > 0 ? "behind" : "ahead");
}

} // namespace velarion::console
