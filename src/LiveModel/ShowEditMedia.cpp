// The edit cases of the show's library.

#include "LiveModel/ShowEditCases.h"

#include <algorithm>

namespace velarion::showEdit {

namespace {

bool usesAsBackdrop(const MediaItem& item, const Uuid& mediaID) {
    if (!item.deck || !item.deck->background) return false;
    const auto* media = std::get_if<backdrop::Media>(&*item.deck->background);
    return media != nullptr && media->mediaID == mediaID;
}

} // namespace

Outcome applyCase(const edit::AddMedia& edit, Show& show) {
    show.library.emplace_back(edit.item);
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::UpdateMedia& edit, Show& show) {
    const Uuid& id = edit.item.id;
    auto stored = std::find_if(show.library.begin(), show.library.end(),
                               [&](const MediaItem& item) { return item.id == id; });
    if (stored == show.library.end()) fail(editError::MediaNotFound{});
    const std::string oldName = stored->name;
    show.library.set(static_cast<std::size_t>(stored - show.library.begin()), edit.item);
    if (oldName == edit.item.name) return Outcome::reachedEnd;

    // Cues still called after the media follow its new name; a cue the
    // operator named itself keeps its name.
    auto followsName = [&](const Cue& cue) {
        return cue.name == oldName && cueKind::mediaID(cue.kind) == id;
    };
    for (std::size_t s = 0; s < show.sections.size(); ++s) {
        const auto& cues = show.sections[s].cues;
        for (std::size_t c = 0; c < cues.size(); ++c) {
            if (followsName(cues[c])) show.sections.edit(s).cues.edit(c).name = edit.item.name;
        }
    }
    return Outcome::reachedEnd;
}

Outcome applyCase(const edit::RemoveMedia& edit, Show& show) {
    const Uuid& id = edit.id;
    if (show.media(id) == nullptr) fail(editError::MediaNotFound{});

    std::vector<std::string> users;
    for (const Cue* cue : show.allCues()) {
        const auto ids = cueKind::mediaIDs(cue->kind);
        if (std::find(ids.begin(), ids.end(), id) != ids.end()) users.push_back(cue->name);
    }
    for (const MediaItem& item : show.library) {
        if (usesAsBackdrop(item, id)) users.push_back(item.name);
    }
    if (!users.empty()) fail(editError::MediaInUse{std::move(users)});

    erase_if(show.library, [&](const MediaItem& item) { return item.id == id; });
    // The safe slide is no user: it never stops a removal, it just lets go.
    if (show.holding.mediaID == id) show.holding.mediaID.reset();
    return Outcome::reachedEnd;
}

} // namespace velarion::showEdit
