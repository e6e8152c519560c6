// Changes to the open show: edits, undo and redo, Show Mode, new cues, and
// the slide editors that follow them.

#include "Live/AppModel.h"

#include "Live/OperatorText.h"
#include "LiveModel/CueInsertionPoint.h"

#include <algorithm>

namespace velarion {

namespace {

std::set<Uuid> allCueIDs(const Show& show) {
    std::set<Uuid> ids;
    for (const Cue* cue : show.allCues()) ids.insert(cue->id);
    return ids;
}

std::string editorTitle(const MediaItem& item) {
    return item.name.empty() ? "Slides" : "Slides — " + item.name;
}

const MediaItem* madeDeck(const Show& show, const Uuid& itemID) {
    const MediaItem* item = show.media(itemID);
    return item && item->deck && item->deck->made ? item : nullptr;
}

} // namespace

bool AppModel::edit(const ShowEdit& edit) {
    if (!show_) return false;
    Show next;
    try {
        next = history_.apply(edit, *show_);
    } catch (const ShowEditError& error) {
        refuse(error.errorDescription());
        return false;
    }
    commit(std::move(next), touchedCueIDs(edit));
    return true;
}

bool AppModel::editTogether(const std::vector<ShowEdit>& edits) {
    if (!show_ || edits.empty()) return false;
    Show next;
    try {
        next = history_.apply(edits, *show_);
    } catch (const ShowEditError& error) {
        refuse(error.errorDescription());
        return false;
    }
    std::set<Uuid> touched;
    for (const ShowEdit& edit : edits) touched.merge(touchedCueIDs(edit));
    commit(std::move(next), touched);
    return true;
}

void AppModel::undo() {
    if (!show_) return;
    std::optional<Show> restored = history_.undo(*show_);
    if (!restored) return;
    bool closesEditor = false;
    for (const auto& [itemID, editor] : slideEditors_) {
        const MediaItem* item = restored->media(itemID);
        if (item && item->deck && !item->deck->made) closesEditor = true;
    }
    const std::set<Uuid> touched = allCueIDs(*restored);
    commit(std::move(*restored), touched);
    setStatus(closesEditor ? "Undone — original imported pages restored; slide editor closed" : "Undone");
}

void AppModel::redo() {
    if (!show_) return;
    std::optional<Show> restored = history_.redo(*show_);
    if (!restored) return;
    const std::set<Uuid> touched = allCueIDs(*restored);
    commit(std::move(*restored), touched);
    setStatus("Redone");
}

void AppModel::commit(Show show, const std::set<Uuid>& touched) {
    const Show old = std::move(*show_);
    show_ = std::move(show);
    if (engine_) engine_->apply(*show_, touched);
    updateSlideEditors(old);
    isDirty_ = true;
    ++editGeneration_;
    scheduleSave();
    changed();
}

void AppModel::updateSlideEditors(const Show& old) {
    for (auto editor = slideEditors_.begin(); editor != slideEditors_.end();) {
        const MediaItem* item = madeDeck(*show_, editor->first);
        if (!item) {
            editor = slideEditors_.erase(editor);
            continue;
        }
        const MediaItem* before = old.media(editor->first);
        const DeckInfo from = before && before->deck ? *before->deck : DeckInfo{};
        editor->second.selection = item->deck->editorSelection(editor->second.selection, from);
        editor->second.title = editorTitle(*item);
        ++editor;
    }
}

void AppModel::setLocked(bool locked) {
    if (history_.isLocked == locked) return;
    history_.isLocked = locked;
    if (locked) {
        rename_.reset();
        setStatus("Show Mode — editing is off; playback controls are active");
    } else {
        setStatus("Edit — changes apply live");
    }
    changed();
}

void AppModel::setPendingEdit(const void* owner, std::function<void()> pendingEdit) {
    const auto held = std::ranges::find(pendingEdits_, owner, &decltype(pendingEdits_)::value_type::first);
    if (held != pendingEdits_.end()) held->second = std::move(pendingEdit);
    else pendingEdits_.emplace_back(owner, std::move(pendingEdit));
}

void AppModel::perform(const EngineCommand& command) {
    // Half-typed changes go in before the show moves on.
    for (auto& [owner, pending] : std::exchange(pendingEdits_, {}))
        if (pending) pending();
    if (engine_) engine_->perform(command);
}

// ---- New cues ----

Cue AppModel::makeCue(const MediaItem& item) {
    Cue cue;
    cue.id = Uuid::random();
    cue.name = item.name;
    switch (item.kind) {
    case MediaKind::video:
        cue.kind = VideoCue{item.id};
        break;
    case MediaKind::image:
        cue.kind = ImageCue{item.id};
        break;
    case MediaKind::audio:
        cue.kind = AudioCue{item.id};
        break;
    case MediaKind::deck:
        cue.kind = SlidesCue{item.id, 0};
        break;
    }
    return cue;
}

bool AppModel::add(const Cue& cue) {
    if (!show_) return false;
    const auto anchor = defaultInsertionAnchor(*show_, cue, selectedCueID_);
    if (!edit(edit::InsertCue{cue, std::nullopt, anchor})) return false;
    selectedCueID_ = cue.id;
    setStatus("Added " + cue.name);
    return true;
}

// ---- Selection and editors ----

void AppModel::selectCue(const std::optional<Uuid>& cueID) {
    if (selectedCueID_ == cueID) return;
    selectedCueID_ = cueID;
    changed();
}

void AppModel::selectMedia(const std::optional<Uuid>& mediaID) {
    if (selectedMediaID_ == mediaID) return;
    selectedMediaID_ = mediaID;
    changed();
}

bool AppModel::openSlideEditor(const Uuid& itemID) {
    const MediaItem* item = show_ ? madeDeck(*show_, itemID) : nullptr;
    if (!item) return false;
    if (!slideEditors_.contains(itemID)) {
        const auto& slides = *item->deck->made;
        slideEditors_[itemID] = SlideEditor{
            slides.empty() ? std::nullopt : std::optional<Uuid>(slides.front().id), editorTitle(*item)};
        changed();
    }
    return true;
}

void AppModel::closeSlideEditor(const Uuid& itemID) {
    if (slideEditors_.erase(itemID) > 0) changed();
}

void AppModel::selectSlide(const Uuid& itemID, const std::optional<Uuid>& slideID) {
    const auto editor = slideEditors_.find(itemID);
    if (editor == slideEditors_.end() || editor->second.selection == slideID) return;
    editor->second.selection = slideID;
    changed();
}

void AppModel::setRename(std::optional<Rename> rename) {
    rename_ = std::move(rename);
    changed();
}

} // namespace velarion
