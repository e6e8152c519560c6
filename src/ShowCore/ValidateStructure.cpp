// Identities, parents and order ranks of the graph.

#include "ShowCore/ValidationSteps.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <unordered_set>

namespace velarion::showcore::validation {

namespace {

// Reports every repeat of an identity within one kind, at the repeat, in
// document order. Sorting the identities beats a hash set at the sizes of a
// large run (tens of thousands of actions). Only equal neighbours matter, so
// they sort as two machine words, not byte by byte.
class Identities {
public:
    Identities(Findings& findings, std::string_view kind, std::size_t expected = 0)
        : findings_(findings), kind_(kind) {
        seen_.reserve(expected);
    }
    void operator()(const Uuid& id) {
        Seen entry{0, 0, seen_.size(), id};
        std::memcpy(&entry.high, id.bytes.data(), 8);
        std::memcpy(&entry.low, id.bytes.data() + 8, 8);
        seen_.push_back(entry);
    }

    // Call once, after the last identity of the kind.
    void report() {
        std::sort(seen_.begin(), seen_.end(), [](const Seen& a, const Seen& b) {
            if (a.high != b.high) return a.high < b.high;
            if (a.low != b.low) return a.low < b.low;
            return a.place < b.place;
        });
        std::vector<const Seen*> repeats;
        for (std::size_t i = 1; i < seen_.size(); ++i) {
            if (seen_[i].high == seen_[i - 1].high && seen_[i].low == seen_[i - 1].low) repeats.push_back(&seen_[i]);
        }
        if (repeats.empty()) return;
        std::sort(repeats.begin(), repeats.end(), [](const Seen* a, const Seen* b) { return a->place < b->place; });
        for (const Seen* repeat : repeats) {
            findings_.add(ShowValidationErrorKind::duplicateIdentity, kind_, repeat->id);
        }
    }

private:
    struct Seen {
        std::uint64_t high;
        std::uint64_t low;
        std::size_t place;
        Uuid id;
    };
    Findings& findings_;
    std::string_view kind_;
    std::vector<Seen> seen_;
};

template <class List> void eachID(const List& list, Findings& findings, std::string_view kind) {
    Identities check(findings, kind, list.size());
    for (const auto& record : list) check(record.id);
    check.report();
}

// Checks the ranks of one list of siblings: each well formed, none repeated.
template <class List> void siblingRanks(const List& siblings, Findings& findings, std::string_view kind) {
    // Lists are usually stored in rank order; well-formed and strictly
    // ascending ranks can't repeat, which spares the set.
    bool ascending = true;
    for (std::size_t i = 0; i < siblings.size() && ascending; ++i) {
        ascending = siblings[i].order.isValid() && (i == 0 || siblings[i - 1].order < siblings[i].order);
    }
    if (ascending) return;
    std::unordered_set<std::string_view> seen;
    seen.reserve(siblings.size());
    for (const auto& sibling : siblings) {
        const std::string& rank = sibling.order.value;
        if (!sibling.order.isValid() || !seen.insert(rank).second) {
            findings.add(ShowValidationErrorKind::invalidOrder, kind, sibling.id);
        }
    }
}

} // namespace

void checkIdentities(const ShowDocument& document, Findings& findings) {
    eachID(document.acts, findings, "act");
    {
        std::size_t sceneCount = 0, cueCount = 0, actionCount = 0;
        forEachCue(document, [&](const Cue& cue) {
            ++cueCount;
            actionCount += cue.actions.size();
        });
        for (const ShowAct& act : document.acts) sceneCount += act.scenes.size();
        Identities scenes(findings, "scene", sceneCount);
        forEachScene(document, [&](const Scene& scene) { scenes(scene.id); });
        Identities cues(findings, "cue", cueCount);
        forEachCue(document, [&](const Cue& cue) { cues(cue.id); });
        Identities actions(findings, "action", actionCount);
        forEachAction(document, [&](const ShowAction& action) { actions(action.id); });
        scenes.report();
        cues.report();
        actions.report();
    }
    eachID(document.destinations, findings, "destination");
    {
        Identities layers(findings, "visual layer");
        for (const auto& destination : document.destinations) {
            for (const auto& layer : destination.layers) layers(layer.id);
        }
        layers.report();
    }
    eachID(document.connections, findings, "connection");
    eachID(document.assets, findings, "asset");
    eachID(document.derivedAssets, findings, "derived asset");
    eachID(document.presentations, findings, "presentation");
    {
        Identities slides(findings, "slide");
        Identities texts(findings, "native slide text");
        Identities images(findings, "native slide image");
        for (const auto& presentation : document.presentations) {
            for (const auto& slide : presentation.slides) {
                slides(slide.id);
                if (!slide.document) continue;
                for (const auto& text : slide.document->textElements) texts(text.id);
                for (const auto& image : slide.document->imageElements) images(image.id);
            }
        }
        slides.report();
        texts.report();
        images.report();
    }
    eachID(document.presentationThemes, findings, "presentation theme");
    eachID(document.providerReferences, findings, "provider reference");
    eachID(document.providerFallbackLinks, findings, "provider fallback");
    eachID(document.controlProfiles, findings, "control profile");
    {
        Identities bindings(findings, "control binding");
        Identities pages(findings, "control pad page");
        Identities slots(findings, "control pad slot");
        for (const auto& profile : document.controlProfiles) {
            for (const auto& binding : profile.bindings) bindings(binding.id);
            for (const auto& page : profile.padPages) {
                pages(page.id);
                for (const auto& slot : page.slots) slots(slot.id);
            }
        }
        bindings.report();
        pages.report();
        slots.report();
    }
    eachID(document.timers, findings, "timer");
    eachID(document.timerStyles, findings, "timer style");
    eachID(document.operatorMessages, findings, "operator message");
    eachID(document.audioBuses, findings, "audio bus");
    eachID(document.audioDuckingRules, findings, "audio ducking rule");
    eachID(document.transitions, findings, "transition");
    eachID(document.looks, findings, "look");
    {
        Identities rules(findings, "look rule");
        for (const auto& look : document.looks) {
            for (const auto& rule : look.rules) rules(rule.id);
        }
        rules.report();
    }
}

void checkParents(const ShowDocument& document, Findings& findings) {
    constexpr auto mismatch = ShowValidationErrorKind::parentMismatch;
    for (const ShowAct& act : document.acts) {
        if (act.showID != document.id) findings.add(mismatch, "act", act.id);
        for (const Scene& scene : act.scenes) {
            if (scene.actID != act.id) findings.add(mismatch, "scene", scene.id);
            for (const Cue& cue : scene.cues) {
                if (cue.sceneID != scene.id) findings.add(mismatch, "cue", cue.id);
                for (const ShowAction& action : cue.actions) {
                    if (action.cueID != cue.id) findings.add(mismatch, "action", action.id);
                }
            }
        }
    }
    for (const auto& presentation : document.presentations) {
        for (const auto& slide : presentation.slides) {
            if (slide.presentationID != presentation.id) findings.add(mismatch, "slide", slide.id);
        }
    }
    for (const auto& destination : document.destinations) {
        for (const auto& layer : destination.layers) {
            if (layer.destinationID != destination.id) findings.add(mismatch, "visual layer", layer.id);
        }
    }
}

void checkOrderRanks(const ShowDocument& document, Findings& findings) {
    siblingRanks(document.acts, findings, "act");
    for (const ShowAct& act : document.acts) {
        siblingRanks(act.scenes, findings, "scene");
        for (const Scene& scene : act.scenes) {
            siblingRanks(scene.cues, findings, "cue");
            for (const Cue& cue : scene.cues) siblingRanks(cue.actions, findings, "action");
        }
    }
    for (const auto& destination : document.destinations) siblingRanks(destination.layers, findings, "visual layer");
    for (const auto& presentation : document.presentations) siblingRanks(presentation.slides, findings, "slide");
    for (const auto& profile : document.controlProfiles) {
        siblingRanks(profile.padPages, findings, "control pad page");
        for (const auto& page : profile.padPages) siblingRanks(page.slots, findings, "control pad slot");
    }
}

} // namespace velarion::showcore::validation
