#include "LiveModel/CueDescription.h"

#include "LiveModel/TimeText.h"

#include <cmath>
#include <cstdio>
#include <string_view>
#include <vector>

namespace velarion {

namespace {

class Parts {
public:
    void add(std::string part) {
        if (!part.empty()) parts_.push_back(std::move(part));
    }
    std::string joined() const {
        std::string out;
        for (const auto& part : parts_) {
            if (!out.empty()) out += " · ";
            out += part;
        }
        return out;
    }

private:
    std::vector<std::string> parts_;
};

// "2s", "1.5s": fades and crossfades are short, so one decimal is plenty.
std::string secondsText(double seconds) {
    char text[32];
    const double rounded = std::round(seconds * 10) / 10;
    if (rounded == std::floor(rounded)) {
        std::snprintf(text, sizeof text, "%.0fs", rounded);
    } else {
        std::snprintf(text, sizeof text, "%.1fs", rounded);
    }
    return text;
}

std::string mediaName(const Show& show, const Uuid& id) {
    const MediaItem* item = show.media(id);
    return item ? item->name : "missing media";
}

std::string counted(std::size_t count, std::string_view one) {
    return std::to_string(count) + " " + std::string(one) + (count == 1 ? "" : "s");
}

std::size_t slideCount(const MediaItem& item) {
    if (!item.deck) return 0;
    return item.deck->made ? item.deck->made->size() : item.deck->pages.size();
}

void describeStreamTrack(const Cue& cue, const StreamTrackCue& track, Parts& parts) {
    parts.add(track.title);
    parts.add(track.artist);
    if (track.startAt > 0) parts.add("starts " + TimeText::duration(track.startAt));
    if (track.fadeIn > 0) parts.add("fade in " + secondsText(track.fadeIn));
    if (track.playFor) parts.add("plays " + TimeText::duration(*track.playFor));
    if (cue.musicHandoff == MusicHandoff::cut) parts.add("hard cut");
}

} // namespace

std::string cueDescription(const Cue& cue, const Show& show) {
    if (cue.descriptionOverride) return *cue.descriptionOverride;
    Parts parts;
    std::visit(
        [&](const auto& payload) {
            using T = std::decay_t<decltype(payload)>;
            if constexpr (std::is_same_v<T, SlidesCue>) {
                const MediaItem* deck = show.media(payload.deckID);
                parts.add(deck ? deck->name : "missing media");
                if (deck) parts.add(counted(slideCount(*deck), "slide"));
            } else if constexpr (std::is_same_v<T, VideoCue>) {
                parts.add(mediaName(show, payload.mediaID));
                if (payload.loops) parts.add("loops");
                if (payload.layer == LayerKind::background) parts.add("background");
                if (payload.fadeIn > 0) parts.add("fade in " + secondsText(payload.fadeIn));
                if (payload.musicRule == VideoMusicRule::dip) {
                    parts.add("dips music");
                } else if (payload.musicRule == VideoMusicRule::leave) {
                    parts.add("leaves music");
                } else if (cue.musicHandoff == MusicHandoff::cut) {
                    parts.add("cuts music");
                }
            } else if constexpr (std::is_same_v<T, ImageCue>) {
                parts.add(mediaName(show, payload.mediaID));
            } else if constexpr (std::is_same_v<T, AudioCue>) {
                parts.add(show.soundRole(cue) == SoundRole::effect ? "Effect" : "Music");
                parts.add(mediaName(show, payload.mediaID));
                if (payload.inPoint > 0) parts.add("starts " + TimeText::duration(payload.inPoint));
                if (payload.fadeIn > 0) parts.add("fade in " + secondsText(payload.fadeIn));
                if (payload.loops) parts.add("loops");
                if (payload.bus == AudioBus::headphones) parts.add("headphones only");
            } else if constexpr (std::is_same_v<T, PlaylistCue>) {
                parts.add(counted(payload.mediaIDs.size(), "song"));
                parts.add(payload.shuffle ? "shuffle" : "in order");
                if (payload.crossfade > 0) parts.add("crossfade " + secondsText(payload.crossfade));
                parts.add(payload.repeats ? "repeats" : "plays once");
                if (payload.bus == AudioBus::headphones) parts.add("headphones only");
            } else if constexpr (std::is_base_of_v<StreamTrackCue, T>) {
                describeStreamTrack(cue, payload, parts);
            } else if constexpr (std::is_same_v<T, StreamPlaylistCue>) {
                parts.add(payload.title);
                parts.add(payload.shuffle ? "shuffle" : "in order");
            } else if constexpr (std::is_same_v<T, TimerCue>) {
                if (auto* countdown = std::get_if<CountdownMode>(&payload.mode)) {
                    parts.add(TimeText::duration(countdown->seconds) + " countdown");
                } else if (auto* countTo = std::get_if<CountToMode>(&payload.mode)) {
                    parts.add("Counts to " + TimeText::clock(countTo->minuteOfDay));
                } else {
                    parts.add("Counts up");
                }
            } else if constexpr (std::is_same_v<T, MessageCue>) {
                parts.add(payload.target == MessageTarget::stage ? "To the speaker"
                                                                  : "To the audience");
            } else if constexpr (std::is_same_v<T, GraphicCue>) {
                parts.add(payload.title);
                parts.add(payload.subtitle);
            } else if constexpr (std::is_same_v<T, ClearCue>) {
                if (payload.cueID) {
                    const Cue* target = show.cue(*payload.cueID);
                    parts.add(target ? "Stops " + target->name : "Stops a removed cue");
                } else {
                    parts.add("Clears " + std::string(toString(payload.target)));
                }
            }
        },
        cue.kind);
    return parts.joined();
}

} // namespace velarion
