#pragma once
// The two music applications a cue can start a song in. Which one a cue
// uses is a fact of the document (its kind), so the show, the engine and the
// Ready check share this one list.

#include "LiveModel/CueKind.h"
#include "LiveModel/EnumNames.h"

#include <optional>

namespace velarion {

enum class StreamApp { spotify, music };
VELARION_ENUM_NAMES(StreamApp, "spotify", "music");

// The app a cue plays in; none for cues of any other kind.
inline std::optional<StreamApp> streamApp(const CueKind& kind) {
    switch (cueKind::kindCase(kind)) {
    case CueKindCase::spotifyTrack:
    case CueKindCase::spotifyPlaylist: return StreamApp::spotify;
    case CueKindCase::musicTrack: return StreamApp::music;
    default: return std::nullopt;
    }
}

} // namespace velarion
