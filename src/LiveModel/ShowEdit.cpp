// The edit function itself, the group check that ends every edit, and the
// cases that work on the document as a whole: title, sections, settings,
// groups and overrides. Cue and media cases sit in ShowEditCues.cpp and
// ShowEditMedia.cpp.

#include "LiveModel/ShowEdit.h"

#include "LiveModel/CueGroupIndex.h"
#include "LiveModel/CueGroups.h"
#include "LiveModel/ShowEditCases.h"
#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace showEdit {

void fail(ShowEditErrorCase reason) {
    throw ShowEditError(std::move(reason));
}

std::optional<std::size_t> sectionIndex(const Show& show, const Uuid& id) {
    for (std::size_t i = 0; i < show.sections.size(); ++i) {
        if (show.sections[i].id == id) return i;
    }
    return std::nullopt;
}

std::size_t clampedIndex(long long index, std::size_t count) {
    return static_cast<std::size_t>(std::clamp(index, 0LL, static_cast<long long>(count)));
}

void ensureSection(Show& show) {
    if (!show.sections.empty()) return;
    Section section;
    section.id = Uuid::random();
    section.title = runOfShowTitle;
    show.sections.emplace_back(std::move(section));
}

namespace {

std::optional<std::size_t> groupIndex(const Show& show, const Uuid& id) {
    if (!show.cueGroups) return std::nullopt;
    const auto& groups = *show.cueGroups;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (groups[i].id == id) return i;
    }
    return std::nullopt;
}

// Groups follow their cues: ids of removed cues drop out, a group left with
// fewer than two ends, and what remains must still be a valid group, so no
// edit can break a group from outside.
void checkGroups(Show& show) {
    if (!show.cueGroups) return;
    std::optional<CueGroupIndex> index(std::in_place, show, nullptr);
    std::vector<CueGroup> remaining;
    for (CueGroup group : *show.cueGroups) {
        std::erase_if(group.cueIDs, [&](const Uuid& id) { return !index->contains(id); });
        if (group.cueIDs.size() >= 2) remaining.push_back(std::move(group));
    }
    if (remaining.empty()) {
        show.cueGroups.reset();
        return;
    }
    const bool droppedAny = remaining.size() < show.cueGroups->size();
    show.cueGroups = std::move(remaining);
    // A dropped group no longer claims the cue it had left.
    if (droppedAny) index.emplace(show, nullptr);

    std::vector<CueGroup> validated;
    validated.reserve(show.cueGroups->size());
    for (const CueGroup& group : *show.cueGroups) {
        validated.push_back(validatedCueGroup(group, *index));
    }
    show.cueGroups = std::move(validated);
}

// An edit may unshare a section and leave it as it was (a cue moved to where
// it stood, a cue updated to its own value). Such sections, and such library
// items, take back the original storage, so that equal parts are always
// shared between snapshots and comparing them stays a pointer check.
template <class T>
void reshareUnchanged(SharedList<T>& list, const SharedList<T>& from) {
    if (list.sharesStorageWith(from)) return;
    const auto& original = from.sharedItems();
    auto& parts = list.items();
    for (std::size_t i = 0; i < parts.size(); ++i) {
        Shared<T>& part = parts[i];
        // Most parts are still shared, at their place or one step off after
        // a single insertion or removal.
        bool shared = false;
        for (std::size_t j : {i, i + 1, i - 1}) {
            shared = shared || (j < original.size() && part.sharesStorageWith(original[j]));
        }
        if (shared) continue;
        auto match = std::find_if(original.begin(), original.end(),
                                  [&](const Shared<T>& old) { return old->id == part->id; });
        if (match != original.end() && *match == part) part = *match;
    }
}

template <class Member> Outcome clearOnEveryCue(Show& show, Member member) {
    for (std::size_t s = 0; s < show.sections.size(); ++s) {
        const auto& cues = show.sections[s].cues;
        for (std::size_t c = 0; c < cues.size(); ++c) {
            if ((cues[c].*member).has_value()) (show.sections.edit(s).cues.edit(c).*member).reset();
        }
    }
    return Outcome::reachedEnd;
}

} // namespace

Outcome applyCase(const edit::SetTitle& edit, Show& show) {
    std::string title = trimmingWhitespace(edit.title);
    if (title.empty()) fail(editError::EmptyName{});
    show.title = std::move(title);
    show.subtitle = trimmingWhitespace(edit.subtitle);
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::AddSection& edit, Show& show) {
    const std::size_t count = show.sections.size();
    const std::size_t at = clampedIndex(edit.at.value_or(static_cast<int>(count)), count);
    show.sections.insert(show.sections.begin() + static_cast<std::ptrdiff_t>(at),
                         Shared<Section>(edit.section));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::RenameSection& edit, Show& show) {
    std::string title = trimmingWhitespace(edit.title);
    if (title.empty()) fail(editError::EmptyName{});
    const auto index = sectionIndex(show, edit.id);
    if (!index) fail(editError::SectionNotFound{});
    show.sections.edit(*index).title = std::move(title);
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::SetSectionSchedule& edit, Show& show) {
    const auto index = sectionIndex(show, edit.id);
    if (!index) fail(editError::SectionNotFound{});
    Section& section = show.sections.edit(*index);
    section.plannedStart = edit.plannedStart;
    section.plannedMinutes = edit.plannedMinutes;
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::DeleteSection& edit, Show& show) {
    const auto index = sectionIndex(show, edit.id);
    if (!index) fail(editError::SectionNotFound{});
    show.sections.erase(show.sections.begin() + static_cast<std::ptrdiff_t>(*index));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::MoveSection& edit, Show& show) {
    const auto index = sectionIndex(show, edit.id);
    if (!index) fail(editError::SectionNotFound{});
    Shared<Section> section = show.sections[*index];
    show.sections.erase(show.sections.begin() + static_cast<std::ptrdiff_t>(*index));
    const std::size_t to = clampedIndex(edit.to, show.sections.size());
    show.sections.insert(show.sections.begin() + static_cast<std::ptrdiff_t>(to),
                         std::move(section));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::SetOutputs& edit, Show& show) {
    show.outputs = edit.outputs;
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::SetAudio& edit, Show& show) {
    show.audio = edit.audio;
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::SetHolding& edit, Show& show) {
    show.holding = edit.holding;
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::SetSlideDissolve& edit, Show& show) {
    show.slideDissolve = std::isfinite(edit.seconds) ? std::clamp(edit.seconds, 0.0, 10.0)
                                                     : Show::defaultSlideDissolveSeconds;
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::CreateCueGroup& edit, Show& show) {
    if (groupIndex(show, edit.group.id)) {
        fail(editError::InvalidCueGroup{"That cue group already exists."});
    }
    CueGroup group = validatedCueGroup(show, edit.group);
    if (!show.cueGroups) show.cueGroups.emplace();
    show.cueGroups->push_back(std::move(group));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::UpdateCueGroup& edit, Show& show) {
    const auto index = groupIndex(show, edit.group.id);
    if (!index) fail(editError::CueGroupNotFound{});
    (*show.cueGroups)[*index] = validatedCueGroup(show, edit.group);
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::RemoveCueGroup& edit, Show& show) {
    const auto index = groupIndex(show, edit.id);
    if (!index) fail(editError::CueGroupNotFound{});
    show.cueGroups->erase(show.cueGroups->begin() + static_cast<std::ptrdiff_t>(*index));
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::ResetVisualOverrides&, Show& show) {
    return clearOnEveryCue(show, &Cue::visualOutputIDs);
}

Outcome applyCase(const edit::ResetAudioOverrides&, Show& show) {
    return clearOnEveryCue(show, &Cue::audioDeviceID);
}

} // namespace showEdit

Show apply(const ShowEdit& edit, const Show& to) {
    // A copy shares every section and item; handlers unshare what they change.
    Show show = to;
    const auto outcome =
        std::visit([&](const auto& payload) { return showEdit::applyCase(payload, show); }, edit);
    if (outcome == showEdit::Outcome::unchanged) return to;
    showEdit::checkGroups(show);
    showEdit::reshareUnchanged(show.sections, to.sections);
    showEdit::reshareUnchanged(show.library, to.library);
    return show;
}

std::set<Uuid> touchedCueIDs(const ShowEdit& edit) {
    if (auto* update = std::get_if<edit::UpdateCue>(&edit)) return {update->cue.id};
    if (auto* removal = std::get_if<edit::DeleteCue>(&edit)) return {removal->id};
    if (auto* move = std::get_if<edit::MoveMomentToSection>(&edit)) return {move->id};
    if (auto* insertion = std::get_if<edit::InsertCues>(&edit)) {
        std::set<Uuid> ids;
        for (const Cue& cue : insertion->cues) ids.insert(cue.id);
        return ids;
    }
    if (auto* creation = std::get_if<edit::CreateCueGroup>(&edit)) {
        return {creation->group.cueIDs.begin(), creation->group.cueIDs.end()};
    }
    if (auto* update = std::get_if<edit::UpdateCueGroup>(&edit)) {
        return {update->group.cueIDs.begin(), update->group.cueIDs.end()};
    }
    return {};
}

} // namespace velarion
