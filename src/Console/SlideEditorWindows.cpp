#include "Console/SlideEditorWindow.h"

#include "Live/AppModel.h"
#include "LiveModel/ShowEditError.h"

namespace velarion::console {

SlideEditorWindows::SlideEditorWindows(AppModel& model, QWidget* owner) : model_(model), owner_(owner) {}

SlideEditorWindows::~SlideEditorWindows() {
    for (auto& [itemID, window] : windows_) delete window;
}

void SlideEditorWindows::refresh() {
    const auto& editors = model_.slideEditors();
    for (auto entry = windows_.begin(); entry != windows_.end();) {
        if (editors.contains(entry->first)) {
            ++entry;
            continue;
        }
        // Closed by the model (deck gone, back to imported pages, show
        // closed) or by the operator: the window goes once its events end.
        entry->second->hide();
        entry->second->deleteLater();
        entry = windows_.erase(entry);
    }
    for (const auto& [itemID, editor] : editors) {
        auto found = windows_.find(itemID);
        if (found == windows_.end()) {
            found = windows_.emplace(itemID, new SlideEditorWindow(model_, itemID, owner_)).first;
            found->second->show();
        }
        found->second->refresh();
    }

    // A deck being made opens once it has arrived.
    if (!model_.show()) {
        decksBeforeNewSong_.reset();
        madeEditable_.reset();
        return;
    }
    if (decksBeforeNewSong_)
        for (const MediaItem& item : model_.show()->library)
            if (item.song && item.deck && !decksBeforeNewSong_->contains(item.id)) {
                decksBeforeNewSong_.reset();
                open(item.id);
                break;
            }
    if (madeEditable_) {
        const MediaItem* item = model_.show()->media(*madeEditable_);
        if (!item || !item->deck) madeEditable_.reset();
        else if (item->deck->made) open(*std::exchange(madeEditable_, std::nullopt));
    }
}

SlideEditorWindow* SlideEditorWindows::open(const Uuid& itemID) {
    if (!model_.openSlideEditor(itemID)) return nullptr;
    refresh();
    SlideEditorWindow* window = windows_.at(itemID);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

SlideEditorWindow* SlideEditorWindows::window(const Uuid& itemID) const {
    const auto found = windows_.find(itemID);
    return found == windows_.end() ? nullptr : found->second;
}

std::optional<Uuid> SlideEditorWindows::deckOfCue(const Uuid& cueID) const {
    const Cue* cue = model_.show() ? model_.show()->cue(cueID) : nullptr;
    const auto* slides = cue ? std::get_if<SlidesCue>(&cue->kind) : nullptr;
    if (!slides) return std::nullopt;
    const MediaItem* item = model_.show()->media(slides->deckID);
    return item && item->deck ? std::optional<Uuid>(item->id) : std::nullopt;
}

QString SlideEditorWindows::actionWords(const std::optional<Uuid>& cueID) const {
    const auto deck = cueID ? deckOfCue(*cueID) : std::nullopt;
    return deck && model_.show()->media(*deck)->deck->made ? "Edit Slides" : "Make Slides";
}

void SlideEditorWindows::editOrMake(const std::optional<Uuid>& cueID) {
    if (!model_.show()) return;
    const auto deck = cueID ? deckOfCue(*cueID) : std::nullopt;
    if (deck && model_.show()->media(*deck)->deck->made) {
        open(*deck);
        return;
    }
    if (model_.isLocked()) {
        model_.setStatus(errorDescription(editError::Locked{}));
        return;
    }
    if (!deck) {
        std::set<Uuid> decks;
        for (const MediaItem& item : model_.show()->library) decks.insert(item.id);
        decksBeforeNewSong_ = std::move(decks);
        model_.addSong(Song{});
        return;
    }
    // Imported pages become made slides standing for them, drawn as one
    // edit; the editor opens when they are in the show.
    MediaItem item = *model_.show()->media(*deck);
    item.deck->prepareForEditing();
    madeEditable_ = item.id;
    model_.drawPages(std::move(item), [&model = model_](DrawnPages drawn) {
        if (drawn.item) model.edit(edit::UpdateMedia{std::move(*drawn.item)});
        else model.setStatus("Couldn't redraw the slides: " + drawn.failure);
    });
}

} // namespace velarion::console
