#pragma once
// Where pictures go: destinations with their layers, and the connections
// that put them on a real screen or window. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/ShowPolicies.h"
#include "ShowCore/SortRank.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion::showcore {

enum class DestinationRole { main, confidence, preview, stream, auxiliary };
SHOWCORE_CASE_NAMES(DestinationRole, "main", "confidence", "preview", "stream", "auxiliary");

enum class DestinationClearPolicy { holdLastFrame, clearToBlack, clearToTransparent };
SHOWCORE_CASE_NAMES(DestinationClearPolicy, "holdLastFrame", "clearToBlack", "clearToTransparent");

enum class DestinationConnectionKind { placeholder, display, outputWindow, operatorPreviewWindow };
SHOWCORE_CASE_NAMES(DestinationConnectionKind, "placeholder", "display", "outputWindow", "operatorPreviewWindow");

struct DestinationFormat {
    int pixelWidth = 1920;
    int pixelHeight = 1080;
    double framesPerSecond = 60;
    bool operator==(const DestinationFormat&) const = default;
};

struct DestinationConnection {
    Uuid id;
    DestinationConnectionKind kind = DestinationConnectionKind::placeholder;
    std::optional<std::string> persistentIdentity;
    std::string name;
    bool operator==(const DestinationConnection&) const = default;
};

struct VisualLayerDefinition {
    Uuid id;
    Uuid destinationID;
    std::string name;
    SortRank order = SortRank::initial();
    ActionConcurrencyPolicy concurrencyPolicy = ActionConcurrencyPolicy::replace;
    bool operator==(const VisualLayerDefinition&) const = default;
};

struct ShowDestination {
    Uuid id;
    std::string name;
    DestinationRole role = DestinationRole::main;
    DestinationFormat format;
    std::optional<Uuid> lookID;
    DestinationClearPolicy clearPolicy = DestinationClearPolicy::clearToBlack;
    std::optional<Uuid> connectionID;
    std::optional<Uuid> transitionID;
    std::vector<VisualLayerDefinition> layers;
    bool operator==(const ShowDestination&) const = default;
};

} // namespace velarion::showcore
