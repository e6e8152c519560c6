#pragma once
// The rules of the graph check, one function per rule, each appending its
// findings in document order (see ShowValidation.h for the overall order).
// Internal to ShowCore.

#include "ShowCore/ShowDocument.h"

#include <string_view>
#include <vector>

namespace velarion::showcore::validation {

struct Findings {
    std::vector<ShowValidationError>& list;
    void add(ShowValidationErrorKind kind, std::string_view subject, const Uuid& id) {
        list.emplace_back(kind, std::string(subject), id);
    }
};

void checkIdentities(const ShowDocument& document, Findings& findings);
void checkParents(const ShowDocument& document, Findings& findings);
void checkOrderRanks(const ShowDocument& document, Findings& findings);
void checkReferences(const ShowDocument& document, Findings& findings);
void checkManagedAssets(const ShowDocument& document, const ManagedAssetProbe& probe, Findings& findings);
void checkValues(const ShowDocument& document, Findings& findings);

} // namespace velarion::showcore::validation

namespace velarion::showcore::validation {

// Every scene, cue and action of the run, in document order.
template <class F> void forEachScene(const ShowDocument& document, F&& f) {
    for (const ShowAct& act : document.acts) {
        for (const Scene& scene : act.scenes) f(scene);
    }
}
template <class F> void forEachCue(const ShowDocument& document, F&& f) {
    forEachScene(document, [&](const Scene& scene) {
        for (const Cue& cue : scene.cues) f(cue);
    });
}
template <class F> void forEachAction(const ShowDocument& document, F&& f) {
    forEachCue(document, [&](const Cue& cue) {
        for (const ShowAction& action : cue.actions) f(action);
    });
}

} // namespace velarion::showcore::validation
