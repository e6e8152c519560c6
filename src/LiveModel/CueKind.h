#pragma once
// What a cue does: one payload record per kind. The order of the cases is the
// kind's rank, which the rest of the system compares (pictures below 3, music
// from 3 to 7).

#include "LiveModel/EnumNames.h"
#include "LiveModel/LayerKind.h"
#include "LiveModel/TimerMode.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velarion {

enum class VideoMusicRule { fadeOut, dip, leave };
VELARION_ENUM_NAMES(VideoMusicRule, "fadeOut", "dip", "leave");

enum class AudioBus { house, headphones };
VELARION_ENUM_NAMES(AudioBus, "house", "headphones");

enum class SoundRole { music, effect };
VELARION_ENUM_NAMES(SoundRole, "music", "effect");

namespace soundRole {
// Sounds longer than this are music; this long or shorter, an effect.
inline constexpr double musicThresholdSeconds = 60.0;
SoundRole automatic(std::optional<double> durationSeconds);
} // namespace soundRole

enum class MessageTarget { stage, audience };
VELARION_ENUM_NAMES(MessageTarget, "stage", "audience");

enum class ClearTarget { slides, media, graphics, music, messages, everything };
VELARION_ENUM_NAMES(ClearTarget, "slides", "media", "graphics", "music", "messages", "everything");

struct SlidesCue {
    Uuid deckID;
    int startSlide = 0;
    std::optional<double> dissolve;
    friend bool operator==(const SlidesCue&, const SlidesCue&) = default;
};

struct VideoCue {
    Uuid mediaID;
    LayerKind layer = LayerKind::media;
    double inPoint = 0;
    std::optional<double> outPoint;
    bool loops = false;
    std::optional<bool> crossfadesLoop;
    bool holdLastFrame = false;
    double fadeIn = 0;
    double fadeOut = 0;
    double level = 1;
    std::optional<VideoMusicRule> musicRule;

    VideoMusicRule effectiveMusicRule() const { return musicRule.value_or(VideoMusicRule::fadeOut); }
    friend bool operator==(const VideoCue&, const VideoCue&) = default;
};

struct ImageCue {
    Uuid mediaID;
    LayerKind layer = LayerKind::media;
    double fadeIn = 0;
    friend bool operator==(const ImageCue&, const ImageCue&) = default;
};

struct AudioCue {
    Uuid mediaID;
    double inPoint = 0;
    std::optional<double> outPoint;
    double fadeIn = 0;
    double fadeOut = 0;
    double level = 1;
    bool loops = false;
    std::optional<bool> crossfadesLoop;
    AudioBus bus = AudioBus::house;
    std::optional<SoundRole> role;
    friend bool operator==(const AudioCue&, const AudioCue&) = default;
};

struct PlaylistCue {
    std::vector<Uuid> mediaIDs;
    bool shuffle = false;
    bool repeats = false;
    double crossfade = 0;
    double fadeIn = 0;
    double level = 1;
    AudioBus bus = AudioBus::house;
    friend bool operator==(const PlaylistCue&, const PlaylistCue&) = default;
};

// A track in a music app; serves both spotifyTrack and musicTrack.
struct StreamTrackCue {
    std::string reference;
    std::string title;
    std::string artist;
    double startAt = 0;
    double fadeIn = 0;
    std::optional<double> playFor;
    double fadeOut = 0;
    int level = 100; // whole percent
    friend bool operator==(const StreamTrackCue&, const StreamTrackCue&) = default;
};

struct StreamPlaylistCue {
    std::string reference;
    std::string title;
    bool shuffle = false;
    double fadeIn = 0;
    int level = 100; // whole percent
    friend bool operator==(const StreamPlaylistCue&, const StreamPlaylistCue&) = default;
};

struct TimerCue {
    TimerMode mode = CountdownMode{300};
    std::optional<std::string> title;
    double warnAt = 0;
    bool showOnStage = true;
    bool showOnAudience = false;
    std::optional<CountdownLook> look;

    CountdownLook effectiveLook() const { return look.value_or(CountdownLook{}); }
    friend bool operator==(const TimerCue&, const TimerCue&) = default;
};

struct MessageCue {
    std::string text;
    MessageTarget target = MessageTarget::stage;
    std::optional<double> duration;
    friend bool operator==(const MessageCue&, const MessageCue&) = default;
};

// A lower third.
struct GraphicCue {
    std::string title;
    std::string subtitle;
    std::optional<double> duration;
    friend bool operator==(const GraphicCue&, const GraphicCue&) = default;
};

struct ClearCue {
    ClearTarget target = ClearTarget::everything;
    double fade = 0;
    std::optional<Uuid> cueID; // stops that one cue instead of a target
    friend bool operator==(const ClearCue&, const ClearCue&) = default;
};

// The two music-app track kinds share a payload but are distinct cases.
struct SpotifyTrack : StreamTrackCue {
    friend bool operator==(const SpotifyTrack&, const SpotifyTrack&) = default;
};
struct MusicTrack : StreamTrackCue {
    friend bool operator==(const MusicTrack&, const MusicTrack&) = default;
};

using CueKind = std::variant<SlidesCue, VideoCue, ImageCue, AudioCue, PlaylistCue, SpotifyTrack,
                             StreamPlaylistCue, MusicTrack, TimerCue, MessageCue, GraphicCue,
                             ClearCue>;

// Case names in rank order, as stored in JSON.
enum class CueKindCase {
    slides,
    video,
    image,
    audio,
    playlist,
    spotifyTrack,
    spotifyPlaylist,
    musicTrack,
    timer,
    message,
    graphic,
    clear
};
VELARION_ENUM_NAMES(CueKindCase, "slides", "video", "image", "audio", "playlist", "spotifyTrack",
                    "spotifyPlaylist", "musicTrack", "timer", "message", "graphic", "clear");

namespace cueKind {
inline CueKindCase kindCase(const CueKind& kind) { return static_cast<CueKindCase>(kind.index()); }
inline int rank(const CueKind& kind) { return static_cast<int>(kind.index()); }
// The operator's name of the kind: "Slides", "Spotify song", "Lower third" …
std::string_view label(CueKindCase kindCase);
inline std::string_view label(const CueKind& kind) { return label(kindCase(kind)); }
inline bool isPicture(const CueKind& kind) { return rank(kind) < 3; }
inline bool isMusic(const CueKind& kind) { return rank(kind) >= 3 && rank(kind) <= 7; }
// A playlist in a music app; a `playlist` cue of local files is not one.
inline bool isPlaylist(const CueKind& kind) { return std::holds_alternative<StreamPlaylistCue>(kind); }
// The single library reference of slides, video, image and audio cues.
std::optional<Uuid> mediaID(const CueKind& kind);
// Every library reference: the single one, or a playlist's list.
std::vector<Uuid> mediaIDs(const CueKind& kind);
} // namespace cueKind

} // namespace velarion
