#pragma once
// Tracks in a music service, the part of one to play, and the local cue
// that stands in when the service is lost. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/DurationValue.h"
#include "ShowCore/ShowDate.h"

#include <optional>
#include <string>

namespace velarion::showcore {

enum class MusicProvider { appleMusic, spotifyMetadataOnly };
SHOWCORE_CASE_NAMES(MusicProvider, "appleMusic", "spotifyMetadataOnly");

struct ProviderMetadataSnapshot {
    std::string title;
    std::string artist;
    std::optional<std::string> album;
    std::optional<DurationValue> duration;
    bool operator==(const ProviderMetadataSnapshot&) const = default;
};

struct ProviderReference {
    Uuid id;
    MusicProvider provider = MusicProvider::appleMusic;
    std::string catalogID;
    std::optional<std::string> storefront;
    ProviderMetadataSnapshot metadataSnapshot;
    bool operator==(const ProviderReference&) const = default;
};

struct ProviderPlaybackWindow {
    static constexpr const char* invalidMessage = "Provider playback end must be after start";

    DurationValue start;
    std::optional<DurationValue> end;
    // False when an end is set and isn't after the start.
    bool isValid() const { return !end || *end > start; }
    bool operator==(const ProviderPlaybackWindow&) const = default;
};

enum class ProviderLossPolicy { useVerifiedLocalFallback, holdProgression, failAndContinue };
SHOWCORE_CASE_NAMES(ProviderLossPolicy, "useVerifiedLocalFallback", "holdProgression", "failAndContinue");

struct ProviderFallbackLink {
    static constexpr const char* invalidMessage = "A local-fallback policy requires an exact fallback cue";

    Uuid id;
    Uuid primaryCueID;
    std::optional<Uuid> fallbackCueID;
    ProviderLossPolicy policy = ProviderLossPolicy::holdProgression;
    std::optional<ShowDate> lastVerifiedAt;
    // False for a local-fallback policy without a fallback cue.
    bool isValid() const { return policy != ProviderLossPolicy::useVerifiedLocalFallback || fallbackCueID; }
    bool operator==(const ProviderFallbackLink&) const = default;
};

} // namespace velarion::showcore
