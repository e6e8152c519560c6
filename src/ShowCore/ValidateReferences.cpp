// Every identity that points at another record must find it; a few
// reference-like rules of shape (placements, slide geometry, loops) are
// reported with them under the words of what they concern.

#include "ShowCore/ValidationSteps.h"

#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace velarion::showcore::validation {

namespace {

using IDs = std::unordered_set<Uuid>;

template <class List> IDs idsOf(const List& list) {
    IDs ids;
    ids.reserve(list.size());
    for (const auto& record : list) ids.insert(record.id);
    return ids;
}

template <class List> auto byID(const List& list) {
    std::unordered_map<Uuid, const typename List::value_type*> map;
    map.reserve(list.size());
    for (const auto& record : list) map.emplace(record.id, &record); // the first of a repeated id
    return map;
}

bool finite(double value) { return std::isfinite(value); }
bool fraction(double value) { return value >= 0 && value <= 1; }

bool isFrame(double x, double y, double width, double height) {
    return finite(x) && finite(y) && finite(width) && finite(height) && width > 0 && height > 0;
}

bool isPlacementValid(const VisualPlacement& p) {
    const VisualCrop& c = p.crop;
    return isFrame(p.x, p.y, p.width, p.height) && fraction(p.opacity) && fraction(c.top) &&
           fraction(c.bottom) && fraction(c.leading) && fraction(c.trailing) && c.top + c.bottom < 1 &&
           c.leading + c.trailing < 1 && (!p.rotationDegrees || finite(*p.rotationDegrees));
}

bool isSafeAreaValid(const NativeSlideSafeArea& a) {
    auto inset = [](double value) { return value >= 0 && value < 0.5; };
    return inset(a.top) && inset(a.leading) && inset(a.bottom) && inset(a.trailing);
}

class References {
public:
    References(const ShowDocument& document, Findings& findings) : document_(document), findings_(findings) {
        std::size_t cueCount = 0;
        for (const ShowAct& act : document.acts) {
            for (const Scene& scene : act.scenes) cueCount += scene.cues.size();
        }
        cues_.reserve(cueCount);
        forEachCue(document, [&](const Cue& cue) { cues_.insert(cue.id); });
        destinations_ = byID(document.destinations);
        connections_ = idsOf(document.connections);
        assets_ = idsOf(document.assets);
        derivedAssets_ = idsOf(document.derivedAssets);
        presentations_ = byID(document.presentations);
        themes_ = idsOf(document.presentationThemes);
        providerReferences_ = idsOf(document.providerReferences);
        fallbackLinks_ = byID(document.providerFallbackLinks);
        profiles_ = idsOf(document.controlProfiles);
        for (const auto& profile : document.controlProfiles) {
            for (const auto& page : profile.padPages) {
                for (const auto& slot : page.slots) slots_.insert(slot.id);
            }
        }
        timers_ = idsOf(document.timers);
        timerStyles_ = idsOf(document.timerStyles);
        buses_ = idsOf(document.audioBuses);
        transitions_ = idsOf(document.transitions);
        looks_ = idsOf(document.looks);
    }

    void run() {
        for (const ShowAct& act : document_.acts) {
            for (const Scene& scene : act.scenes) {
                failurePolicy(scene.failurePolicy, scene.id);
                for (const Cue& cue : scene.cues) {
                    failurePolicy(cue.failurePolicy, cue.id);
                    for (const ShowAction& action : cue.actions) this->action(action);
                }
            }
        }
        for (const auto& destination : document_.destinations) {
            optional(destination.lookID, looks_, "destination look", destination.id);
            optional(destination.connectionID, connections_, "destination connection", destination.id);
            optional(destination.transitionID, transitions_, "destination transition", destination.id);
        }
        for (const auto& derived : document_.derivedAssets) {
            require(derived.sourceAssetID, assets_, "derived source asset", derived.id);
        }
        for (const auto& presentation : document_.presentations) this->presentation(presentation);
        for (const auto& link : document_.providerFallbackLinks) {
            require(link.primaryCueID, cues_, "provider primary cue", link.id);
            optional(link.fallbackCueID, cues_, "provider fallback cue", link.id);
        }
        for (const auto& profile : document_.controlProfiles) controlProfile(profile);
        optional(document_.activeControlProfileID, profiles_, "active control profile", document_.id);
        for (const auto& timer : document_.timers) this->timer(timer);
        for (const auto& message : document_.operatorMessages) {
            for (const Uuid& destination : message.destinationIDs) {
                check(destinations_.contains(destination), "message destination", message.id);
            }
            check(!message.expiresAt || *message.expiresAt > message.createdAt, "operator message", message.id);
        }
        for (const auto& rule : document_.audioDuckingRules) {
            check(buses_.contains(rule.triggerBusID) && buses_.contains(rule.affectedBusID), "audio ducking bus",
                  rule.id);
            check(rule.triggerBusID != rule.affectedBusID, "audio ducking rule", rule.id);
        }
        for (const auto& transition : document_.transitions) {
            check(transition.style != TransitionStyle::cut || transition.duration.seconds() == 0,
                  "transition duration", transition.id);
        }
        optional(document_.defaultTransitionID, transitions_, "default transition", document_.id);
        for (const auto& look : document_.looks) {
            for (const auto& rule : look.rules) lookRule(rule);
        }
    }

private:
    void check(bool holds, std::string_view words, const Uuid& holder) {
        if (!holds) findings_.add(ShowValidationErrorKind::unresolvedReference, words, holder);
    }
    template <class Set> void require(const Uuid& id, const Set& set, std::string_view words, const Uuid& holder) {
        check(set.contains(id), words, holder);
    }
    template <class Set>
    void optional(const std::optional<Uuid>& id, const Set& set, std::string_view words, const Uuid& holder) {
        if (id) require(*id, set, words, holder);
    }

    void failurePolicy(const ShowFailurePolicy& policy, const Uuid& holder) {
        if (auto* fallback = std::get_if<failure::UseVerifiedFallback>(&policy)) {
            require(fallback->cueID, cues_, "failure fallback cue", holder);
        }
    }

    bool holdsLayer(const Uuid& destinationID, const Uuid& layerID) const {
        auto found = destinations_.find(destinationID);
        if (found == destinations_.end()) return false;
        for (const auto& layer : found->second->layers) {
            if (layer.id == layerID) return true;
        }
        return false;
    }

    void action(const ShowAction& action) {
        const Uuid& id = action.id;
        if (auto* t = std::get_if<target::Destination>(&action.target)) {
            require(t->id, destinations_, "action destination", id);
        } else if (auto* t = std::get_if<target::AudioBus>(&action.target)) {
            require(t->id, buses_, "action audio bus", id);
        } else if (auto* t = std::get_if<target::VisualLayer>(&action.target)) {
            check(holdsLayer(t->destinationID, t->layerID), "action visual layer", id);
        } else if (auto* t = std::get_if<target::Timer>(&action.target)) {
            require(t->id, timers_, "action timer target", id);
        }
        failurePolicy(action.failurePolicy, id);
        std::visit([&](const auto& payload) { this->payload(payload, id); }, action.payload);
    }

    void payload(const payload::Wait&, const Uuid&) {}
    void payload(const payload::InternalCommand&, const Uuid&) {}
    void payload(const OSCOutPayload&, const Uuid&) {}

    void payload(const LocalAudioPayload& p, const Uuid& id) {
        optional(p.assetID, assets_, "local audio asset", id);
        optional(p.busID, buses_, "local audio bus target", id);
        check(p.assetID || p.sourceURL.isFileURL(), "unbound local audio", id);
        if (!p.loopStartOffset && !p.loopEndOffset) return;
        // Loop points lie within the part that plays, the end after the start.
        const DurationValue loopStart = p.loopStartOffset.value_or(p.startOffset);
        const std::optional<DurationValue> loopEnd = p.loopEndOffset ? p.loopEndOffset : p.endOffset;
        const bool loopInside = loopStart >= p.startOffset && (!loopEnd || *loopEnd > loopStart) &&
                                (!loopEnd || !p.endOffset || *loopEnd <= *p.endOffset);
        check(loopInside, "local audio loop", id);
    }

    void payload(const PresentationSlidePayload& p, const Uuid& id) {
        auto found = presentations_.find(p.presentationID);
        if (found == presentations_.end()) {
            check(false, "presentation action", id);
            return;
        }
        bool holdsSlide = false;
        for (const auto& slide : found->second->slides) holdsSlide = holdsSlide || slide.id == p.slideID;
        check(holdsSlide, "presentation slide", id);
    }

    void payload(const ProviderAudioPayload& p, const Uuid& id) {
        require(p.providerReferenceID, providerReferences_, "provider reference", id);
        const ProviderFallbackLink* link = nullptr;
        if (p.fallbackLinkID) {
            auto found = fallbackLinks_.find(*p.fallbackLinkID);
            check(found != fallbackLinks_.end(), "provider fallback", id);
            if (found != fallbackLinks_.end()) link = found->second;
        }
        if (p.requiresVerifiedFallbackForShow) {
            check(link && link->fallbackCueID, "provider fallback action", id);
        }
    }

    void payload(const TimerActionPayload& p, const Uuid& id) { require(p.timerID, timers_, "timer action", id); }

    void visual(const std::optional<Uuid>& transitionID, const VisualPlacement& placement, const Uuid& id) {
        optional(transitionID, transitions_, "visual transition", id);
        check(isPlacementValid(placement), "visual placement", id);
    }
    void payload(const VideoPayload& p, const Uuid& id) {
        require(p.assetID, assets_, "visual asset", id);
        visual(p.transitionID, p.placement, id);
    }
    void payload(const ImagePayload& p, const Uuid& id) {
        require(p.assetID, assets_, "visual asset", id);
        visual(p.transitionID, p.placement, id);
    }
    void payload(const TextPayload& p, const Uuid& id) { visual(p.transitionID, p.placement, id); }

    void payload(const LookActionPayload& p, const Uuid& id) { require(p.lookID, looks_, "look action", id); }
    void payload(const StopCuePayload& p, const Uuid& id) { require(p.targetCueID, cues_, "stop cue target", id); }
    void payload(const FadeCuePayload& p, const Uuid& id) { require(p.targetCueID, cues_, "fade cue target", id); }

    void presentation(const ShowPresentation& presentation) {
        const Uuid& id = presentation.id;
        optional(presentation.sourceAssetID, assets_, "presentation source asset", id);
        optional(presentation.themeID, themes_, "presentation theme", id);
        optional(presentation.transitionID, transitions_, "presentation transition", id);
        for (const PresentationSlide& slide : presentation.slides) {
            if (slide.pageAssetID) {
                check(assets_.contains(*slide.pageAssetID) || derivedAssets_.contains(*slide.pageAssetID),
                      "slide page asset", slide.id);
            }
            check(slide.pageAssetID || slide.document, "slide render source", slide.id);
            if (slide.document) nativeSlide(*slide.document, slide.id);
            optional(slide.transitionID, transitions_, "slide transition", slide.id);
        }
    }

    void nativeSlide(const NativeSlideDocument& document, const Uuid& slideID) {
        optional(document.backgroundAssetID, assets_, "native slide background", slideID);
        for (const NativeSlideText& text : document.textElements) {
            check(isFrame(text.x, text.y, text.width, text.height) && text.fontSize > 0 && finite(text.fontSize) &&
                      text.lineSpacing > 0 && finite(text.lineSpacing),
                  "native slide text", text.id);
        }
        for (const NativeSlideImage& image : document.imageElements) {
            check(assets_.contains(image.assetID) && isFrame(image.x, image.y, image.width, image.height) &&
                      fraction(image.opacity),
                  "native slide image", image.id);
        }
        check(isSafeAreaValid(document.safeArea), "native slide safe area", slideID);
    }

    // `slots` holds the slots a target may name: its own profile's, or every
    // profile's for a timer.
    void controlTarget(const ControlTarget& target, const IDs& slots, const Uuid& holder) {
        if (auto* cue = std::get_if<controlTarget::Cue>(&target)) {
            require(cue->id, cues_, "control cue", holder);
        } else if (auto* slot = std::get_if<controlTarget::Slot>(&target)) {
            require(slot->id, slots, "control pad slot", holder);
        } else if (auto* focus = std::get_if<controlTarget::Focus>(&target)) {
            const auto& presentation = std::get<focus::Presentation>(focus->target);
            require(presentation.id, presentations_, "control presentation", holder);
        }
    }

    void controlProfile(const ControlProfile& profile) {
        IDs slots;
        for (const auto& page : profile.padPages) {
            for (const auto& slot : page.slots) slots.insert(slot.id);
        }
        for (const ControlBinding& binding : profile.bindings) {
            if (auto* pad = std::get_if<PadControlDescriptor>(&binding.source)) {
                const ControlPadPage* page = nullptr;
                for (const auto& candidate : profile.padPages) {
                    if (candidate.id == pad->pageID) page = &candidate;
                }
                check(page != nullptr, "control pad page", binding.id);
                bool holdsSlot = false;
                if (page) {
                    for (const auto& slot : page->slots) holdsSlot = holdsSlot || slot.id == pad->slotID;
                }
                check(!page || holdsSlot, "pad binding source", binding.id);
            }
            controlTarget(binding.target, slots, binding.id);
        }
        for (const auto& page : profile.padPages) {
            for (const auto& slot : page.slots) controlTarget(slot.target, slots, slot.id);
        }
    }

    void timer(const ShowTimer& timer) {
        optional(timer.styleID, timerStyles_, "timer style", timer.id);
        for (const Uuid& destination : timer.destinationIDs) {
            check(destinations_.contains(destination), "timer destination", timer.id);
        }
        if (auto* style = std::get_if<completion::ChangeStyle>(&timer.completionPolicy)) {
            require(style->styleID, timerStyles_, "timer completion style", timer.id);
        } else if (auto* fire = std::get_if<completion::FireCue>(&timer.completionPolicy)) {
            require(fire->cueID, cues_, "timer completion cue", timer.id);
        } else if (auto* send = std::get_if<completion::SendControl>(&timer.completionPolicy)) {
            controlTarget(send->target, slots_, timer.id);
        }
    }

    void lookRule(const DestinationLookRule& rule) {
        auto found = destinations_.find(rule.destinationID);
        check(found != destinations_.end(), "look destination", rule.id);
        if (found == destinations_.end()) return;
        for (const Uuid& layer : rule.hiddenLayerIDs) {
            check(holdsLayer(rule.destinationID, layer), "look layer", rule.id);
        }
    }

    const ShowDocument& document_;
    Findings& findings_;
    IDs cues_;
    std::unordered_map<Uuid, const ShowDestination*> destinations_;
    IDs connections_;
    IDs assets_;
    IDs derivedAssets_;
    std::unordered_map<Uuid, const ShowPresentation*> presentations_;
    IDs themes_;
    IDs providerReferences_;
    std::unordered_map<Uuid, const ProviderFallbackLink*> fallbackLinks_;
    IDs profiles_;
    IDs slots_;
    IDs timers_;
    IDs timerStyles_;
    IDs buses_;
    IDs transitions_;
    IDs looks_;
};

} // namespace

void checkReferences(const ShowDocument& document, Findings& findings) { References(document, findings).run(); }

} // namespace velarion::showcore::validation
