#pragma once
// Presentations: imported decks (pages rendered from PDF, Keynote or
// PowerPoint) and native slides made in the show. Canvas sizes are in points;
// element frames and safe-area insets are fractions of the slide. Plain
// values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/SortRank.h"
#include "ShowCore/VisualPlacement.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion::showcore {

enum class PresentationImportKind { pdf, keynote, powerPoint, native };
SHOWCORE_CASE_NAMES(PresentationImportKind, "pdf", "keynote", "powerPoint", "native");

enum class PresentationRefreshState { current, sourceUnavailable, refreshAvailable, reviewRequired };
SHOWCORE_CASE_NAMES(PresentationRefreshState, "current", "sourceUnavailable", "refreshAvailable", "reviewRequired");

enum class NativeTextWeight { regular, medium, semibold, bold };
SHOWCORE_CASE_NAMES(NativeTextWeight, "regular", "medium", "semibold", "bold");

enum class NativeTextAlignment { leading, center, trailing };
SHOWCORE_CASE_NAMES(NativeTextAlignment, "leading", "center", "trailing");

enum class NativeTextListStyle { none, bullets, numbered };
SHOWCORE_CASE_NAMES(NativeTextListStyle, "none", "bullets", "numbered");

enum class NativeTextOverflowBehavior { autoFit, warn, clip };
SHOWCORE_CASE_NAMES(NativeTextOverflowBehavior, "autoFit", "warn", "clip");

struct NativeSlideText {
    Uuid id;
    std::string text;
    double x = 0;
    double y = 0;
    double width = 1;
    double height = 1;
    std::string fontName;
    double fontSize = 48;
    std::string foregroundHex = "#FFFFFF";
    NativeTextWeight weight = NativeTextWeight::regular;
    NativeTextAlignment alignment = NativeTextAlignment::center;
    double lineSpacing = 1;
    NativeTextListStyle listStyle = NativeTextListStyle::none;
    NativeTextOverflowBehavior overflowBehavior = NativeTextOverflowBehavior::autoFit;
    bool operator==(const NativeSlideText&) const = default;
};

struct NativeSlideImage {
    Uuid id;
    Uuid assetID;
    double x = 0;
    double y = 0;
    double width = 1;
    double height = 1;
    VisualScalingMode scaling = VisualScalingMode::fit;
    double opacity = 1;
    bool operator==(const NativeSlideImage&) const = default;
};

struct NativeSlideSafeArea {
    double top = 0;
    double leading = 0;
    double bottom = 0;
    double trailing = 0;
    bool operator==(const NativeSlideSafeArea&) const = default;
};

struct NativeSlideDocument {
    std::string backgroundHex = "#000000";
    std::optional<Uuid> backgroundAssetID;
    std::vector<NativeSlideText> textElements;
    std::vector<NativeSlideImage> imageElements;
    NativeSlideSafeArea safeArea;
    bool operator==(const NativeSlideDocument&) const = default;
};

struct PresentationSlide {
    Uuid id;
    Uuid presentationID;
    std::optional<int> sourcePageIndex;
    std::string fingerprint;
    SortRank order = SortRank::initial();
    bool isSkipped = false;
    std::string notes;
    std::optional<std::string> group;
    std::optional<Uuid> pageAssetID;
    std::optional<NativeSlideDocument> document;
    std::optional<Uuid> transitionID;
    bool operator==(const PresentationSlide&) const = default;
};

struct ShowPresentation {
    Uuid id;
    std::optional<Uuid> sourceAssetID;
    std::string title;
    PresentationImportKind importKind = PresentationImportKind::native;
    PresentationRefreshState refreshState = PresentationRefreshState::current;
    std::optional<Uuid> themeID;
    std::optional<Uuid> transitionID;
    std::vector<PresentationSlide> slides;
    bool operator==(const ShowPresentation&) const = default;
};

struct PresentationTheme {
    Uuid id;
    std::string title;
    double canvasWidth = 1920;
    double canvasHeight = 1080;
    std::string backgroundHex = "#000000";
    std::string foregroundHex = "#FFFFFF";
    bool operator==(const PresentationTheme&) const = default;
};

} // namespace velarion::showcore
