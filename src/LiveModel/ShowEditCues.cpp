// The edit cases that add, change, remove and move cues and moments.

#include "LiveModel/CueGroups.h"
#include "LiveModel/ShowEditCases.h"

#include <algorithm>
#include <cmath>

namespace velarion::showEdit {

namespace {

constexpr const char* needsGroupDuration = "Group duration must be greater than zero seconds.";

std::ptrdiff_t offset(std::size_t index) {
    return static_cast<std::ptrdiff_t>(index);
}

std::optional<CueLocation> firstEnabledCue(const Show& show) {
    for (std::size_t s = 0; s < show.sections.size(); ++s) {
        const auto& cues = show.sections[s].cues;
        for (std::size_t i = 0; i < cues.size(); ++i) {
            if (cues[i].isEnabled) return CueLocation{s, i};
        }
    }
    return std::nullopt;
}

// The first playable cue starts by GO whatever its stored follow says. When
// cues land in front of it, that stored follow would suddenly count, so it is
// written down as manual first.
void freezeFirstEnabledCue(Show& show, const std::optional<CueLocation>& first) {
    if (!first) return;
    if (show.sections[first->section].cues[first->index].follow == Follow::manual) return;
    show.sections.edit(first->section).cues.edit(first->index).follow = Follow::manual;
}

bool comesBefore(const CueLocation& position, const CueLocation& cue) {
    return position.section < cue.section ||
           (position.section == cue.section && position.index <= cue.index);
}

// Moves the moment of `id` in front of `before` (or to the end), the common
// body of moveMoment and moveMomentToSection; `toSection` is set only for the
// latter.
Outcome moveWholeMoment(Show& show, const Uuid& id, std::optional<Uuid> before,
                        const std::optional<Uuid>& toSection) {
    std::optional<std::size_t> targetSection;
    if (toSection) {
        targetSection = sectionIndex(show, *toSection);
        if (!targetSection) fail(editError::SectionNotFound{});
    }
    const auto momentCues = moment(show, id);
    if (momentCues.empty()) fail(editError::CueNotFound{});
    std::set<Uuid> movingIDs;
    for (const Cue* cue : momentCues) movingIDs.insert(cue->id);

    if (before && movingIDs.contains(*before)) {
        if (!toSection) return Outcome::unchanged;
        before.reset();
    }
    if (before) {
        const auto beforeMoment = moment(show, *before);
        if (beforeMoment.empty()) fail(editError::CueNotFound{});
        before = beforeMoment.front()->id;
    }

    // Copies, taken before any section is unshared or changed.
    std::vector<Cue> moving;
    for (const Cue* cue : momentCues) moving.push_back(*cue);
    if (toSection) {
        for (Cue& cue : moving) {
            if (show.effectiveFollow(cue) == Follow::manual) cue.follow = Follow::manual;
        }
        const auto first = firstEnabledCue(show);
        if (first && !movingIDs.contains(show.sections[first->section].cues[first->index].id)) {
            freezeFirstEnabledCue(show, first);
        }
    } else if (show.effectiveFollow(moving.front()) == Follow::manual) {
        moving.front().follow = Follow::manual;
    }

    for (std::size_t s = 0; s < show.sections.size(); ++s) {
        const auto& cues = show.sections[s].cues;
        const bool holdsMoving = std::any_of(
            cues.begin(), cues.end(), [&](const Cue& cue) { return movingIDs.contains(cue.id); });
        if (!holdsMoving) continue;
        erase_if(show.sections.edit(s).cues,
                 [&](const Cue& cue) { return movingIDs.contains(cue.id); });
    }

    CueLocation target;
    if (before) {
        const auto location = show.location(*before);
        if (!location) fail(editError::CueNotFound{});
        target = *location;
    } else {
        const std::size_t section = targetSection.value_or(show.sections.size() - 1);
        target = {section, show.sections[section].cues.size()};
    }
    auto& cues = show.sections.edit(target.section).cues;
    cues.insert(cues.begin() + offset(target.index), moving.begin(), moving.end());
    return Outcome::reachedEnd;
}

} // namespace

Outcome applyCase(const edit::InsertCue& edit, Show& show) {
    ensureSection(show);
    if (edit.after) {
        if (const auto location = show.location(*edit.after)) {
            auto& cues = show.sections.edit(location->section).cues;
            cues.insert(cues.begin() + offset(location->index + 1), edit.cue);
            return Outcome::reachedEnd;
        }
    }
    std::size_t section = show.sections.size() - 1;
    if (edit.section) {
        const auto index = sectionIndex(show, *edit.section);
        if (!index) fail(editError::SectionNotFound{});
        section = *index;
    }
    show.sections.edit(section).cues.push_back(edit.cue);
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::InsertCues& edit, Show& show) {
    if (edit.cues.empty()) return Outcome::unchanged;
    CueLocation target;
    if (edit.before) {
        // In front of the whole moment, so a block never lands inside a chain.
        const auto beforeMoment = moment(show, *edit.before);
        if (beforeMoment.empty()) fail(editError::CueNotFound{});
        const auto location = show.location(beforeMoment.front()->id);
        if (!location) fail(editError::CueNotFound{});
        target = *location;
    } else if (edit.section) {
        const auto index = sectionIndex(show, *edit.section);
        if (!index) fail(editError::SectionNotFound{});
        target = {*index, show.sections[*index].cues.size()};
    } else {
        ensureSection(show);
        const std::size_t last = show.sections.size() - 1;
        target = {last, show.sections[last].cues.size()};
    }
    const auto first = firstEnabledCue(show);
    if (first && comesBefore(target, *first)) freezeFirstEnabledCue(show, first);

    auto& cues = show.sections.edit(target.section).cues;
    cues.insert(cues.begin() + offset(target.index), edit.cues.begin(), edit.cues.end());
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::UpdateCue& edit, Show& show) {
    const auto location = show.location(edit.cue.id);
    if (!location) fail(editError::CueNotFound{});
    const auto& duration = edit.cue.groupDuration;
    if (duration && (!std::isfinite(*duration) || *duration <= 0)) {
        fail(editError::InvalidCueGroup{needsGroupDuration});
    }
    show.sections.edit(location->section).cues.set(location->index, edit.cue);
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::DeleteCue& edit, Show& show) {
    // Clear cues that stop this one keep their reference; they describe
    // themselves as stopping a removed cue.
    const auto location = show.location(edit.id);
    if (!location) fail(editError::CueNotFound{});
    auto& cues = show.sections.edit(location->section).cues;
    cues.erase(cues.begin() + offset(location->index));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::MoveCue& edit, Show& show) {
    const auto location = show.location(edit.id);
    if (!location) fail(editError::CueNotFound{});
    const auto section = sectionIndex(show, edit.section);
    if (!section) fail(editError::SectionNotFound{});
    Cue cue = show.sections[location->section].cues[location->index];
    auto& source = show.sections.edit(location->section).cues;
    source.erase(source.begin() + offset(location->index));
    auto& target = show.sections.edit(*section).cues;
    const std::size_t index = clampedIndex(edit.index, target.size());
    target.insert(target.begin() + offset(index), std::move(cue));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::MoveMoment& edit, Show& show) {
    return moveWholeMoment(show, edit.id, edit.before, std::nullopt);
}

Outcome applyCase(const edit::MoveMomentToSection& edit, Show& show) {
    return moveWholeMoment(show, edit.id, edit.before, edit.section);
}

} // namespace velarion::showEdit
