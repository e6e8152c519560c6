#include "LiveModel/Show.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {
bool isPositiveFinite(std::optional<double> value) {
    return value && *value > 0 && std::isfinite(*value);
}
} // namespace

CueGeometry CueGeometry::make(double scale, double x, double y, double rotation, double opacity) {
    return {std::clamp(scale, 0.05, 4.0), std::clamp(x, -1.0, 1.0), std::clamp(y, -1.0, 1.0),
            rotation, std::clamp(opacity, 0.0, 1.0)};
}

CueLink CueLink::make(const std::vector<const Cue*>& cues, std::size_t index) {
    // An index outside the list is the caller's bug, not the operator's.
    const Cue& cue = *cues.at(index);
    CueLink link;
    link.above = cue.follow != Follow::manual;
    link.below = index + 1 < cues.size() && cues[index + 1]->follow != Follow::manual;
    return link;
}

std::vector<const Cue*> Show::allCues() const {
    std::vector<const Cue*> cues;
    std::size_t count = 0;
    for (const Section& section : sections) count += section.cues.size();
    cues.reserve(count);
    for (const Section& section : sections) {
        for (const Cue& cue : section.cues) cues.push_back(&cue);
    }
    return cues;
}

const Cue* Show::cue(const Uuid& id) const {
    for (const Section& section : sections) {
        for (const Cue& cue : section.cues) {
            if (cue.id == id) return &cue;
        }
    }
    return nullptr;
}

const MediaItem* Show::media(const Uuid& id) const {
    for (const MediaItem& item : library) {
        if (item.id == id) return &item;
    }
    return nullptr;
}

std::optional<CueLocation> Show::location(const Uuid& cueID) const {
    for (std::size_t s = 0; s < sections.size(); ++s) {
        const auto& cues = sections[s].cues;
        for (std::size_t i = 0; i < cues.size(); ++i) {
            if (cues[i].id == cueID) return CueLocation{s, i};
        }
    }
    return std::nullopt;
}

std::optional<int> Show::number(const Uuid& cueID) const {
    int position = 0;
    for (const Section& section : sections) {
        for (const Cue& cue : section.cues) {
            ++position;
            if (cue.id == cueID) return position;
        }
    }
    return std::nullopt;
}

double Show::effectiveSlideDissolve() const {
    return std::clamp(slideDissolve.value_or(defaultSlideDissolveSeconds), 0.0, 10.0);
}

std::optional<std::set<std::string>> Show::visualOutputs(const Cue& cue) const {
    const auto& ids = cue.visualOutputIDs ? cue.visualOutputIDs : outputs.defaultVisualOutputIDs;
    if (!ids) return std::nullopt;
    return std::set<std::string>(ids->begin(), ids->end());
}

Follow Show::effectiveFollow(const Cue& cue) const {
    if (cue.follow == Follow::manual) return Follow::manual;
    for (const Section& section : sections) {
        for (const Cue& candidate : section.cues) {
            if (!candidate.isEnabled) continue;
            return candidate.id == cue.id ? Follow::manual : cue.follow;
        }
    }
    return cue.follow;
}

std::optional<SoundRole> Show::soundRole(const Cue& cue) const {
    const auto* audio = std::get_if<AudioCue>(&cue.kind);
    return soundRole(cue, audio && !audio->role ? media(audio->mediaID) : nullptr);
}

std::optional<SoundRole> Show::soundRole(const Cue& cue, const MediaItem* audioItem) {
    switch (cueKind::kindCase(cue.kind)) {
    case CueKindCase::playlist:
    case CueKindCase::spotifyTrack:
    case CueKindCase::spotifyPlaylist:
    case CueKindCase::musicTrack: return SoundRole::music;
    case CueKindCase::audio: break;
    default: return std::nullopt;
    }
    const auto& audio = std::get<AudioCue>(cue.kind);
    if (audio.role) return audio.role;
    if (audioItem == nullptr) return SoundRole::music;
    return soundRole::automatic(audioItem->duration);
}

bool Show::groupCueHasEnd(const Cue& cue) const {
    if (cue.groupDuration) return isPositiveFinite(cue.groupDuration);
    return std::visit(
        [&](const auto& payload) -> bool {
            using T = std::decay_t<decltype(payload)>;
            if constexpr (std::is_same_v<T, VideoCue>) {
                if (payload.loops) return false;
                const MediaItem* item = media(payload.mediaID);
                return item == nullptr || !item->ndiSource;
            } else if constexpr (std::is_same_v<T, AudioCue>) {
                return !payload.loops;
            } else if constexpr (std::is_same_v<T, PlaylistCue>) {
                return !payload.repeats && !payload.mediaIDs.empty();
            } else if constexpr (std::is_base_of_v<StreamTrackCue, T>) {
                return isPositiveFinite(payload.playFor);
            } else if constexpr (std::is_same_v<T, TimerCue>) {
                if (auto* countdown = std::get_if<CountdownMode>(&payload.mode)) {
                    return countdown->seconds > 0;
                }
                return std::holds_alternative<CountToMode>(payload.mode);
            } else if constexpr (std::is_same_v<T, GraphicCue>) {
                return isPositiveFinite(payload.duration);
            } else {
                return false;
            }
        },
        cue.kind);
}

bool Show::nameMachineNamedMedia() {
    bool changed = false;
    for (std::size_t i = 0; i < library.size(); ++i) {
        const MediaItem& item = library[i];
        if (!MediaItem::isMachineName(item.name)) continue;
        std::string name(displayName(item.kind));
        for (const Section& section : sections) {
            auto it = std::find_if(section.cues.begin(), section.cues.end(), [&](const Cue& cue) {
                return cueKind::mediaID(cue.kind) == item.id;
            });
            if (it != section.cues.end()) {
                name = it->name;
                break;
            }
        }
        library.edit(i).name = std::move(name);
        changed = true;
    }
    return changed;
}

} // namespace velarion
