// Songs and made slides: their pages are drawn on worker threads while the
// show runs on, and the finished deck goes in as one edit.

#include "Live/AppModel.h"

#include "Live/OperatorText.h"
#include "LiveModel/SongRedraw.h"

namespace velarion {

namespace {

constexpr const char* supersededWords = "Those slides were changed again before their pictures were drawn.";

} // namespace

void AppModel::drawPages(MediaItem item, std::function<void(DrawnPages)> drawn,
                         std::function<void(const std::string&)> abandoned) {
    const Uuid itemID = item.id;
    if (auto older = pageDraws_.find(itemID); older != pageDraws_.end()) {
        older->second.handle.cancel();
        auto tell = std::move(older->second.abandoned);
        pageDraws_.erase(older);
        if (tell) tell(supersededWords);
    }
    const std::uint64_t number = ++pageDrawCount_;
    pageDraws_[itemID] = PageDraw{number, {}, std::move(abandoned), item};
    setStatus(drawingPagesStatus);
    TaskHandle handle = ports_.slidePages.draw(
        std::move(item), *package_, show_->library,
        [this, alive = token(), itemID, number, drawn = std::move(drawn)](DrawnPages result) {
            if (alive.expired()) return;
            const auto entry = pageDraws_.find(itemID);
            if (entry == pageDraws_.end() || entry->second.number != number) return;
            pageDraws_.erase(entry);
            if (pageDraws_.empty() && status_ == drawingPagesStatus) setStatus("");
            drawn(std::move(result));
        });
    // A double may finish at once, before the handle is back.
    if (auto entry = pageDraws_.find(itemID); entry != pageDraws_.end() && entry->second.number == number)
        entry->second.handle = std::move(handle);
}

void AppModel::abandonPageDraws(const std::string& reason) {
    auto draws = std::move(pageDraws_);
    pageDraws_.clear();
    if (!draws.empty() && status_ == drawingPagesStatus) status_.clear();
    for (auto& [itemID, draw] : draws) {
        draw.handle.cancel();
        if (draw.abandoned) draw.abandoned(reason);
    }
}

const MediaItem* AppModel::latestItem(const Uuid& itemID) const {
    if (const auto draw = pageDraws_.find(itemID); draw != pageDraws_.end()) return &draw->second.item;
    return show_ ? show_->media(itemID) : nullptr;
}

bool AppModel::addSong(const Song& song) {
    if (!show_ || !package_ || isLocked()) return false;
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.name = song.title.empty() ? "Song" : song.title;
    item.fileName = std::string(MediaItem::madeFileName);
    item.song = song;
    item.deck = DeckInfo{};
    item.deck->source = "Velarion";
    item.deck->made = song.madeSlides();
    drawPages(std::move(item), [this](DrawnPages result) {
        if (!result.item) {
            setStatus("Couldn't make the song's slides: " + result.failure);
            return;
        }
        if (edit(edit::AddMedia{*result.item})) add(makeCue(*result.item));
    });
    return true;
}

void AppModel::redrawAndUpdate(MediaItem item, const std::string& failurePrefix) {
    drawPages(std::move(item), [this, failurePrefix](DrawnPages result) {
        if (!result.item) {
            setStatus(failurePrefix + result.failure);
            return;
        }
        edit(edit::UpdateMedia{std::move(*result.item)});
    });
}

bool AppModel::updateSong(const Uuid& itemID, const Song& song) {
    if (!show_ || !package_) return false;
    if (isLocked()) {
        // Refused before any page is drawn.
        refuse(errorDescription(editError::Locked{}));
        return false;
    }
    const MediaItem* item = latestItem(itemID);
    if (!item) {
        refuse(errorDescription(editError::MediaNotFound{}));
        return false;
    }
    redrawAndUpdate(updatingSong(*item, song), "Couldn't redraw the song: ");
    return true;
}

bool AppModel::updateSlides(const Uuid& itemID,
                            const std::function<void(std::vector<MadeSlide>&)>& change) {
    if (!show_ || !package_) return false;
    if (isLocked()) {
        refuse(errorDescription(editError::Locked{}));
        return false;
    }
    const MediaItem* found = latestItem(itemID);
    if (!found || !found->deck) {
        refuse(errorDescription(editError::MediaNotFound{}));
        return false;
    }
    MediaItem item = *found;
    if (item.song)
        prepareSongSlidesForEditing(item);
    else
        item.deck->prepareForEditing();
    if (!item.deck->made) return false;

    std::vector<MadeSlide> slides = *item.deck->made;
    change(slides);
    if (slides == *item.deck->made) return false;
    item.deck->made = std::move(slides);
    redrawAndUpdate(std::move(item), "Couldn't redraw the slides: ");
    return true;
}

} // namespace velarion
