#include "LiveModel/CueKind.h"

namespace velarion {

SoundRole soundRole::automatic(std::optional<double> durationSeconds) {
    if (!durationSeconds || *durationSeconds > musicThresholdSeconds) return SoundRole::music;
    return SoundRole::effect;
}

std::string_view cueKind::label(CueKindCase kindCase) {
    constexpr std::string_view labels[] = {
        "Slides",   "Video",           "Image",   "Audio",   "Playlist",    "Spotify song",
        "Spotify playlist", "Apple Music song", "Timer", "Message", "Lower third", "Clear"};
    return labels[static_cast<int>(kindCase)];
}

std::optional<Uuid> cueKind::mediaID(const CueKind& kind) {
    if (auto* slides = std::get_if<SlidesCue>(&kind)) return slides->deckID;
    if (auto* video = std::get_if<VideoCue>(&kind)) return video->mediaID;
    if (auto* image = std::get_if<ImageCue>(&kind)) return image->mediaID;
    if (auto* audio = std::get_if<AudioCue>(&kind)) return audio->mediaID;
    return std::nullopt;
}

std::vector<Uuid> cueKind::mediaIDs(const CueKind& kind) {
    if (auto* playlist = std::get_if<PlaylistCue>(&kind)) return playlist->mediaIDs;
    if (auto single = mediaID(kind)) return {*single};
    return {};
}

} // namespace velarion
