#pragma once
// The JSON keys of everything the run of the show refers to (destinations,
// assets, presentations, music references, timers, buses, transitions,
// looks, settings) and of the document itself, in field order. One list
// serves reading and writing.

#include "ShowCore/ShowDocument.h"
#include "ShowCore/json/FieldsControl.h"
#include "ShowCore/json/FieldsGraph.h"

namespace velarion::showcore::json {

template <> struct VariantForm<AssetLocator> {
    static constexpr auto names = std::to_array<std::string_view>({"managed", "linked"});
    static constexpr auto wrapped = noneWrapped<2>();
};
template <> struct VariantForm<ShowTimerKind> {
    static constexpr auto names =
        std::to_array<std::string_view>({"countdown", "targetTime", "countUp", "stopwatch", "timeOfDay"});
    static constexpr auto wrapped = noneWrapped<5>();
};
template <> struct VariantForm<ShowTimerCompletionPolicy> {
    static constexpr auto names = std::to_array<std::string_view>(
        {"changeStyle", "fireCue", "sendControl", "holdAtZero", "continueNegative"});
    static constexpr auto wrapped = noneWrapped<5>();
};

template <class V, Is<locator::Managed> S> void visitFields(V& v, S& s) {
    v("contentHash", s.contentHash);
    v("filename", s.filename);
}
template <class V, Is<locator::Linked> S> void visitFields(V& v, S& s) {
    v("fileURL", s.fileURL);
    v("fingerprint", s.fingerprint);
}
template <class V, Is<timerKind::Countdown> S> void visitFields(V& v, S& s) { v("duration", s.duration); }
template <class V, Is<timerKind::TargetTime> S> void visitFields(V& v, S& s) { v("_0", s.time); }
template <class V, Is<completion::ChangeStyle> S> void visitFields(V& v, S& s) { v("styleID", s.styleID); }
template <class V, Is<completion::FireCue> S> void visitFields(V& v, S& s) { v("cueID", s.cueID); }
template <class V, Is<completion::SendControl> S> void visitFields(V& v, S& s) { v("_0", s.target); }

template <class V, Is<DestinationFormat> S> void visitFields(V& v, S& s) {
    v("pixelWidth", s.pixelWidth);
    v("pixelHeight", s.pixelHeight);
    v("framesPerSecond", s.framesPerSecond);
}

template <class V, Is<DestinationConnection> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("kind", s.kind);
    v("persistentIdentity", s.persistentIdentity);
    v("name", s.name);
}

template <class V, Is<VisualLayerDefinition> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("destinationID", s.destinationID);
    v("name", s.name);
    v("order", s.order);
    v("concurrencyPolicy", s.concurrencyPolicy);
}

template <class V, Is<ShowDestination> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("role", s.role);
    v("format", s.format);
    v("lookID", s.lookID);
    v("clearPolicy", s.clearPolicy);
    v("connectionID", s.connectionID);
    v("transitionID", s.transitionID);
    v("layers", s.layers);
}

template <class V, Is<ShowAsset> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("contentHash", s.contentHash);
    v("mediaKind", s.mediaKind);
    v("storagePolicy", s.storagePolicy);
    v("locator", s.locator);
    v("metadata", s.metadata);
}

template <class V, Is<DerivedAsset> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("sourceAssetID", s.sourceAssetID);
    v("kind", s.kind);
    v("contentHash", s.contentHash);
    v("generatorVersion", s.generatorVersion);
    v("filename", s.filename);
}

template <class V, Is<NativeSlideText> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("text", s.text);
    v("x", s.x);
    v("y", s.y);
    v("width", s.width);
    v("height", s.height);
    v("fontName", s.fontName);
    v("fontSize", s.fontSize);
    v("foregroundHex", s.foregroundHex);
    v("weight", s.weight);
    v("alignment", s.alignment);
    v("lineSpacing", s.lineSpacing);
    v("listStyle", s.listStyle);
    v("overflowBehavior", s.overflowBehavior);
}

template <class V, Is<NativeSlideImage> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("assetID", s.assetID);
    v("x", s.x);
    v("y", s.y);
    v("width", s.width);
    v("height", s.height);
    v("scaling", s.scaling);
    v("opacity", s.opacity);
}

template <class V, Is<NativeSlideSafeArea> S> void visitFields(V& v, S& s) {
    v("top", s.top);
    v("leading", s.leading);
    v("bottom", s.bottom);
    v("trailing", s.trailing);
}

template <class V, Is<NativeSlideDocument> S> void visitFields(V& v, S& s) {
    v("backgroundHex", s.backgroundHex);
    v("backgroundAssetID", s.backgroundAssetID);
    v("textElements", s.textElements);
    v("imageElements", s.imageElements);
    v("safeArea", s.safeArea);
}

template <class V, Is<PresentationSlide> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("presentationID", s.presentationID);
    v("sourcePageIndex", s.sourcePageIndex);
    v("fingerprint", s.fingerprint);
    v("order", s.order);
    v("isSkipped", s.isSkipped);
    v("notes", s.notes);
    v("group", s.group);
    v("pageAssetID", s.pageAssetID);
    v("document", s.document);
    v("transitionID", s.transitionID);
}

template <class V, Is<ShowPresentation> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("sourceAssetID", s.sourceAssetID);
    v("title", s.title);
    v("importKind", s.importKind);
    v("refreshState", s.refreshState);
    v("themeID", s.themeID);
    v("transitionID", s.transitionID);
    v("slides", s.slides);
}

template <class V, Is<PresentationTheme> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("canvasWidth", s.canvasWidth);
    v("canvasHeight", s.canvasHeight);
    v("backgroundHex", s.backgroundHex);
    v("foregroundHex", s.foregroundHex);
}

template <class V, Is<ProviderMetadataSnapshot> S> void visitFields(V& v, S& s) {
    v("title", s.title);
    v("artist", s.artist);
    v("album", s.album);
    v("duration", s.duration);
}

template <class V, Is<ProviderReference> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("provider", s.provider);
    v("catalogID", s.catalogID);
    v("storefront", s.storefront);
    v("metadataSnapshot", s.metadataSnapshot);
}

template <class V, Is<ProviderFallbackLink> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("primaryCueID", s.primaryCueID);
    v("fallbackCueID", s.fallbackCueID);
    v("policy", s.policy);
    v("lastVerifiedAt", s.lastVerifiedAt);
}

template <class V, Is<BackupRetentionPolicy> S> void visitFields(V& v, S& s) {
    v("hourlyHours", s.hourlyHours);
    v("dailyDays", s.dailyDays);
    v("showModeEntries", s.showModeEntries);
}

template <class V, Is<ShowSettings> S> void visitFields(V& v, S& s) {
    v("goRepeatLockoutMilliseconds", s.goRepeatLockoutMilliseconds);
    v("structuralEditingLockedInShow", s.structuralEditingLockedInShow);
    v("requireVerifiedMusicFallbackInShow", s.requireVerifiedMusicFallbackInShow);
    v("reduceMotion", s.reduceMotion);
    v("reduceTransparency", s.reduceTransparency);
    v("workspaceDensity", s.workspaceDensity);
    v("uiScale", s.uiScale);
    v("autosaveJournalIntervalSeconds", s.autosaveJournalIntervalSeconds);
    v("backupRetention", s.backupRetention);
}

template <class V, Is<ShowTimer> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("kind", s.kind);
    v("completionPolicy", s.completionPolicy);
    v("styleID", s.styleID);
    v("destinationIDs", s.destinationIDs);
    v("isOperatorOnly", s.isOperatorOnly);
}

template <class V, Is<ShowTimerStyle> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("foregroundHex", s.foregroundHex);
    v("backgroundHex", s.backgroundHex);
    v("completionForegroundHex", s.completionForegroundHex);
}

template <class V, Is<OperatorMessage> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("text", s.text);
    v("destinationIDs", s.destinationIDs);
    v("createdAt", s.createdAt);
    v("expiresAt", s.expiresAt);
}

template <class V, Is<AudioBusDefinition> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("role", s.role);
    v("gain", s.gain);
    v("isMuted", s.isMuted);
    v("outputPersistentIdentity", s.outputPersistentIdentity);
}

template <class V, Is<AudioDuckingRule> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("triggerBusID", s.triggerBusID);
    v("affectedBusID", s.affectedBusID);
    v("reductionDecibels", s.reductionDecibels);
    v("attack", s.attack);
    v("release", s.release);
    v("isEnabled", s.isEnabled);
}

template <class V, Is<ShowTransition> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("style", s.style);
    v("duration", s.duration);
    v("direction", s.direction);
}

template <class V, Is<DestinationLookRule> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("destinationID", s.destinationID);
    v("backgroundHex", s.backgroundHex);
    v("hiddenLayerIDs", s.hiddenLayerIDs);
}

template <class V, Is<ShowLook> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("rules", s.rules);
}

template <class V, Is<ShowDocument> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("schemaVersion", s.schemaVersion);
    v("modelRevision", s.modelRevision);
    v("createdAt", s.createdAt);
    v("modifiedAt", s.modifiedAt);
    v("notes", s.notes);
    v("acts", s.acts);
    v("destinations", s.destinations);
    v("connections", s.connections);
    v("assets", s.assets);
    v("derivedAssets", s.derivedAssets);
    v("presentations", s.presentations);
    v("presentationThemes", s.presentationThemes);
    v("providerReferences", s.providerReferences);
    v("providerFallbackLinks", s.providerFallbackLinks);
    v("controlProfiles", s.controlProfiles);
    v("activeControlProfileID", s.activeControlProfileID);
    v("settings", s.settings);
    v("timers", s.timers);
    v("timerStyles", s.timerStyles);
    v("operatorMessages", s.operatorMessages);
    v("audioBuses", s.audioBuses);
    v("audioDuckingRules", s.audioDuckingRules);
    v("transitions", s.transitions);
    v("defaultTransitionID", s.defaultTransitionID);
    v("looks", s.looks);
}

} // namespace velarion::showcore::json
