#pragma once
// The persisted show graph: the run of acts, and every resource the run
// refers to by identity. A plain value with full equality; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/AudioBus.h"
#include "ShowCore/ControlProfile.h"
#include "ShowCore/ProviderReference.h"
#include "ShowCore/ShowAsset.h"
#include "ShowCore/ShowDate.h"
#include "ShowCore/ShowDestination.h"
#include "ShowCore/ShowGraph.h"
#include "ShowCore/ShowLook.h"
#include "ShowCore/ShowPresentation.h"
#include "ShowCore/ShowSettings.h"
#include "ShowCore/ShowTimer.h"
#include "ShowCore/ShowValidation.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velarion::showcore {

struct ShowDocument {
    // The graph's revision of this schema, written into new documents.
    static constexpr std::int64_t currentSchemaVersion = 8;

    Uuid id;
    std::string title;
    std::int64_t schemaVersion = currentSchemaVersion;
    std::int64_t modelRevision = 0;
    ShowDate createdAt;
    ShowDate modifiedAt;
    std::string notes;
    std::vector<ShowAct> acts;
    std::vector<ShowDestination> destinations;
    std::vector<DestinationConnection> connections;
    std::vector<ShowAsset> assets;
    std::vector<DerivedAsset> derivedAssets;
    std::vector<ShowPresentation> presentations;
    std::vector<PresentationTheme> presentationThemes;
    std::vector<ProviderReference> providerReferences;
    std::vector<ProviderFallbackLink> providerFallbackLinks;
    std::vector<ControlProfile> controlProfiles;
    std::optional<Uuid> activeControlProfileID;
    ShowSettings settings;
    std::vector<ShowTimer> timers;
    std::vector<ShowTimerStyle> timerStyles;
    std::vector<OperatorMessage> operatorMessages;
    std::vector<AudioBusDefinition> audioBuses;
    std::vector<AudioDuckingRule> audioDuckingRules;
    std::vector<ShowTransition> transitions;
    std::optional<Uuid> defaultTransitionID;
    std::vector<ShowLook> looks;

    // Throws the first of `validationFindings` as a ShowValidationError.
    void validateForPersistence(const ManagedAssetProbe& managedAssetExists = {}) const;

    bool operator==(const ShowDocument&) const = default;
};

} // namespace velarion::showcore
