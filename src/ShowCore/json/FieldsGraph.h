#pragma once
// The JSON keys of the run of the show (acts, scenes, cues, actions, their
// timing, policies, targets and payloads), in field order. One list serves
// reading and writing.

#include "ShowCore/ShowGraph.h"
#include "ShowCore/json/JsonRead.h"

#include <type_traits>

namespace velarion::showcore::json {

// S is the record or its const form, so one list serves reading and writing.
template <class S, class R>
concept Is = std::is_same_v<R, std::remove_const_t<S>>;

// A case that carries nothing is an empty object.
template <class V, class S>
    requires std::is_empty_v<std::remove_const_t<S>>
void visitFields(V&, S&) {}

template <std::size_t N> constexpr std::array<bool, N> noneWrapped() { return {}; }

template <> struct VariantForm<CueProgression> {
    static constexpr auto names = std::to_array<std::string_view>({"startWithNext", "startAfterThis", "manual"});
    static constexpr auto wrapped = noneWrapped<3>();
};
template <> struct VariantForm<ShowFailurePolicy> {
    static constexpr auto names = std::to_array<std::string_view>(
        {"useVerifiedFallback", "holdOnRequiredFailure", "continueWithWarning", "stopScene"});
    static constexpr auto wrapped = noneWrapped<4>();
};
template <> struct VariantForm<ActionTarget> {
    static constexpr auto names = std::to_array<std::string_view>(
        {"destination", "audioBus", "visualLayer", "providerPlayer", "timer", "control", "none"});
    static constexpr auto wrapped = noneWrapped<7>();
};
template <> struct VariantForm<ShowTimerOperation> {
    static constexpr auto names =
        std::to_array<std::string_view>({"adjust", "set", "start", "pause", "resume", "reset", "complete"});
    static constexpr auto wrapped = noneWrapped<7>();
};
template <> struct VariantForm<ActionPayload> {
    static constexpr auto names = std::to_array<std::string_view>(
        {"wait", "internalCommand", "localAudio", "presentationSlide", "providerAudio", "timer", "video", "image",
         "text", "look", "stopCue", "fadeCue", "oscOut"});
    // The cases that carry a whole payload record hold it under "_0".
    static constexpr auto wrapped = std::to_array<bool>(
        {false, false, true, true, true, true, true, true, true, true, true, true, true});
};

template <class V, Is<SortRank> S> void visitFields(V& v, S& s) { v("value", s.value); }

template <class V, Is<progression::StartWithNext> S> void visitFields(V& v, S& s) { v("delay", s.delay); }
template <class V, Is<progression::StartAfterThis> S> void visitFields(V& v, S& s) { v("delay", s.delay); }
template <class V, Is<failure::UseVerifiedFallback> S> void visitFields(V& v, S& s) { v("cueID", s.cueID); }

template <class V, Is<target::Destination> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<target::AudioBus> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<target::VisualLayer> S> void visitFields(V& v, S& s) {
    v("destinationID", s.destinationID);
    v("layerID", s.layerID);
}
template <class V, Is<target::ProviderPlayer> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<target::Timer> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<target::Control> S> void visitFields(V& v, S& s) { v("_0", s.id); }

template <class V, Is<timerOperation::Adjust> S> void visitFields(V& v, S& s) { v("seconds", s.seconds); }
template <class V, Is<timerOperation::Set> S> void visitFields(V& v, S& s) { v("seconds", s.seconds); }
template <class V, Is<payload::Wait> S> void visitFields(V& v, S& s) { v("duration", s.duration); }
template <class V, Is<payload::InternalCommand> S> void visitFields(V& v, S& s) { v("message", s.message); }

template <class V, Is<CueTiming> S> void visitFields(V& v, S& s) {
    v("preWait", s.preWait);
    v("playDuration", s.playDuration);
    v("postWait", s.postWait);
    v("progression", s.progression);
    v("timebase", s.timebase);
}

template <class V, Is<VisualCrop> S> void visitFields(V& v, S& s) {
    v("top", s.top);
    v("leading", s.leading);
    v("bottom", s.bottom);
    v("trailing", s.trailing);
}

template <class V, Is<VisualPlacement> S> void visitFields(V& v, S& s) {
    v("x", s.x);
    v("y", s.y);
    v("width", s.width);
    v("height", s.height);
    v("scaling", s.scaling);
    v("crop", s.crop);
    v("opacity", s.opacity);
    v("rotationDegrees", s.rotationDegrees);
}

template <class V, Is<VideoPayload> S> void visitFields(V& v, S& s) {
    v("assetID", s.assetID);
    v("startOffset", s.startOffset);
    v("endOffset", s.endOffset);
    v("loops", s.loops);
    v("isMuted", s.isMuted);
    v("gain", s.gain);
    v("fadeIn", s.fadeIn);
    v("fadeOut", s.fadeOut);
    v("placement", s.placement);
    v("transitionID", s.transitionID);
    v("holdAtEnd", s.holdAtEnd);
}

template <class V, Is<ImagePayload> S> void visitFields(V& v, S& s) {
    v("assetID", s.assetID);
    v("placement", s.placement);
    v("transitionID", s.transitionID);
}

template <class V, Is<TextPayload> S> void visitFields(V& v, S& s) {
    v("text", s.text);
    v("fontName", s.fontName);
    v("fontSize", s.fontSize);
    v("foregroundHex", s.foregroundHex);
    v("backgroundHex", s.backgroundHex);
    v("alignment", s.alignment);
    v("placement", s.placement);
    v("transitionID", s.transitionID);
}

template <class V, Is<LocalAudioPayload> S> void visitFields(V& v, S& s) {
    v("assetID", s.assetID);
    v("sourceURL", s.sourceURL);
    v("startOffset", s.startOffset);
    v("endOffset", s.endOffset);
    v("gain", s.gain);
    v("pan", s.pan);
    v("busID", s.busID);
    v("fadeIn", s.fadeIn);
    v("fadeOut", s.fadeOut);
    v("loops", s.loops);
    v("loopStartOffset", s.loopStartOffset);
    v("loopEndOffset", s.loopEndOffset);
}

template <class V, Is<PresentationSlidePayload> S> void visitFields(V& v, S& s) {
    v("presentationID", s.presentationID);
    v("slideID", s.slideID);
}

template <class V, Is<ProviderPlaybackWindow> S> void visitFields(V& v, S& s) {
    v("start", s.start);
    v("end", s.end);
}

template <class V, Is<ProviderAudioPayload> S> void visitFields(V& v, S& s) {
    v("providerReferenceID", s.providerReferenceID);
    v("playbackWindow", s.playbackWindow);
    v("fallbackLinkID", s.fallbackLinkID);
    v("requiresVerifiedFallbackForShow", s.requiresVerifiedFallbackForShow);
}

template <class V, Is<TimerActionPayload> S> void visitFields(V& v, S& s) {
    v("timerID", s.timerID);
    v("operation", s.operation);
}

template <class V, Is<LookActionPayload> S> void visitFields(V& v, S& s) { v("lookID", s.lookID); }

template <class V, Is<StopCuePayload> S> void visitFields(V& v, S& s) {
    v("targetCueID", s.targetCueID);
    v("fade", s.fade);
}

template <class V, Is<FadeCuePayload> S> void visitFields(V& v, S& s) {
    v("targetCueID", s.targetCueID);
    v("level", s.level);
    v("duration", s.duration);
    v("curve", s.curve);
}

template <class V, Is<OSCOutPayload> S> void visitFields(V& v, S& s) {
    v("host", s.host);
    v("port", s.port);
    v("path", s.path);
    v("value", s.value);
}

template <class V, Is<ShowAction> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("cueID", s.cueID);
    v("title", s.title);
    v("order", s.order);
    v("isEnabled", s.isEnabled);
    v("notes", s.notes);
    v("timing", s.timing);
    v("target", s.target);
    v("concurrencyPolicy", s.concurrencyPolicy);
    v("failurePolicy", s.failurePolicy);
    v("payload", s.payload);
}

template <class V, Is<Cue> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("sceneID", s.sceneID);
    v("type", s.type);
    v("title", s.title);
    v("order", s.order);
    v("isEnabled", s.isEnabled);
    v("notes", s.notes);
    v("tags", s.tags);
    v("timing", s.timing);
    v("failurePolicy", s.failurePolicy);
    v("actions", s.actions);
}

template <class V, Is<Scene> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("actID", s.actID);
    v("title", s.title);
    v("order", s.order);
    v("isEnabled", s.isEnabled);
    v("notes", s.notes);
    v("triggerMode", s.triggerMode);
    v("failurePolicy", s.failurePolicy);
    v("cues", s.cues);
}

template <class V, Is<ShowAct> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("showID", s.showID);
    v("title", s.title);
    v("order", s.order);
    v("isEnabled", s.isEnabled);
    v("notes", s.notes);
    v("scenes", s.scenes);
}

} // namespace velarion::showcore::json
