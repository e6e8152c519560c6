#include "LiveModel/CueInsertionPoint.h"

#include "LiveModel/CueGroups.h"

#include <algorithm>

namespace velarion {

std::optional<Uuid> defaultInsertionAnchor(const Show& show, const Cue& forCue,
                                           const std::optional<Uuid>& after) {
    if (forCue.follow != Follow::manual || !after) return after;
    const auto selectedMoment = moment(show, *after);
    if (selectedMoment.empty()) return after;
    return selectedMoment.back()->id;
}

std::optional<CueInsertionPoint> insertionPoint(const Show& show, const Uuid& near, bool after) {
    const auto nearMoment = moment(show, near);
    if (nearMoment.empty()) return std::nullopt;
    const Cue* anchor = after ? nearMoment.back() : nearMoment.front();
    const auto location = show.location(anchor->id);
    if (!location) return std::nullopt;
    const Section& section = show.sections[location->section];
    CueInsertionPoint point{section.id, std::nullopt};
    if (!after) {
        point.before = anchor->id;
    } else if (location->index + 1 < section.cues.size()) {
        point.before = section.cues[location->index + 1].id;
    }
    return point;
}

std::optional<CueInsertionPoint> insertionPoint(const Show& show,
                                                const std::optional<Uuid>& atEndOf) {
    if (!atEndOf) return CueInsertionPoint{};
    for (const Section& section : show.sections) {
        if (section.id != *atEndOf) continue;
        if (section.cues.empty()) return CueInsertionPoint{section.id, std::nullopt};
        return insertionPoint(show, section.cues.back().id, true);
    }
    return std::nullopt;
}

std::optional<CueInsertionPoint> reorderDestination(const Show& show, const Uuid& forCue,
                                                    CueMoveDirection direction) {
    const auto cueMoment = moment(show, forCue);
    if (cueMoment.empty()) return std::nullopt;
    const auto all = show.allCues();
    const auto first = std::find(all.begin(), all.end(), cueMoment.front());
    const auto last = std::find(all.begin(), all.end(), cueMoment.back());
    if (first == all.end() || last == all.end()) return std::nullopt;
    if (direction == CueMoveDirection::down) {
        if (last + 1 == all.end()) return std::nullopt;
        return insertionPoint(show, (*(last + 1))->id, true);
    }
    if (first == all.begin()) return std::nullopt;
    return insertionPoint(show, (*(first - 1))->id, false);
}

} // namespace velarion
