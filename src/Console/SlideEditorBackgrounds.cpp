// The slide editor's backgrounds: each slide's own (a colour, clear, or a
// picture of the library) and the deck's behind every slide, and the
// library pictures decoded off the main loop for the canvas and thumbnails.

#include "Console/SlideEditorCanvas.h"
#include "Console/ConsoleText.h"
#include "Console/SlideEditorWindow.h"
#include "Live/AppModel.h"
#include "Platform/Pictures/SlideMaker.h"

#include <QComboBox>
#include <QFutureWatcher>
#include <QLabel>
#include <QtConcurrent/QtConcurrent>

#include <algorithm>

namespace velarion::console {

namespace {

// Big enough for the canvas at any size the window takes.
constexpr int pictureWidthPixels = 960;

} // namespace

void SlideEditorWindow::refreshDeckBackground(const MediaItem& deck) {
    std::vector<Backdrop> backdrops{backdrop::None{}};
    QStringList words{"Nothing"};
    for (BuiltInBackdrop loop : {BuiltInBackdrop::drift, BuiltInBackdrop::ember, BuiltInBackdrop::mono,
                                 BuiltInBackdrop::dawn, BuiltInBackdrop::forest, BuiltInBackdrop::ocean}) {
        backdrops.push_back(backdrop::BuiltIn{loop});
        words << qt(std::string(displayName(loop))) + " loop";
    }
    for (const MediaItem& media : model_.show()->library)
        if (media.kind == MediaKind::image || media.kind == MediaKind::video) {
            backdrops.push_back(backdrop::Media{media.id});
            words << (media.kind == MediaKind::image ? "Picture: " : "Video: ") + qt(media.name);
        }
    filling_ = true;
    if (backdrops != deckBackdrops_) {
        deckBackground_->clear();
        deckBackground_->addItems(words);
        deckBackdrops_ = backdrops;
    }
    const Backdrop current = deck.deck->background.value_or(backdrop::None{});
    const auto found = std::find(backdrops.begin(), backdrops.end(), current);
    // A colour behind the deck has no row of its own: it reads as nothing chosen.
    const int index = found == backdrops.end() ? 0 : int(found - backdrops.begin());
    if (deckBackground_->currentIndex() != index) deckBackground_->setCurrentIndex(index);
    // Whatever is drawn while pages are being drawn would be overwritten.
    deckBackground_->setEnabled(!model_.isLocked() && !model_.isDrawingPages());
    filling_ = false;
    const int covering = deck.deck->backgroundCoveringPageCount();
    covering_->setText(covering == 0 ? QString()
                                     : (covering == 1 ? QString("1 slide hides it")
                                                      : QString::number(covering) + " slides hide it"));
}

void SlideEditorWindow::deckBackgroundChosen(int index) {
    const auto& show = model_.show();
    const MediaItem* found = show ? show->media(itemID_) : nullptr;
    if (!found || !found->deck || index < 0 || index >= int(deckBackdrops_.size())) return;
    MediaItem changed = *found;
    const Backdrop& chosen = deckBackdrops_[std::size_t(index)];
    if (std::holds_alternative<backdrop::None>(chosen)) changed.deck->background.reset();
    else changed.deck->background = chosen;
    model_.edit(edit::UpdateMedia{std::move(changed)});
}

void SlideEditorWindow::refreshBackgrounds() {
    const auto& show = model_.show();
    std::vector<std::optional<Uuid>> images;
    QStringList names;
    for (const MediaItem& media : show->library)
        if (media.kind == MediaKind::image) {
            images.push_back(media.id);
            names << "Picture: " + qt(media.name);
        }
    filling_ = true;
    if (images != backgroundImages_) {
        while (background_->count() > 2) background_->removeItem(2);
        background_->addItems(names);
        backgroundImages_ = images;
    }
    int index = 0;
    if (const MadeSlide* slide = chosenSlide()) {
        if (slide->isClear.value_or(false)) index = 1;
        else if (slide->imageID)
            for (std::size_t i = 0; i < images.size(); ++i)
                if (images[i] == slide->imageID) index = int(i) + 2;
    }
    if (background_->currentIndex() != index) background_->setCurrentIndex(index);
    filling_ = false;
}

QImage SlideEditorWindow::picture(const std::optional<Uuid>& imageID) {
    if (!imageID || !model_.show() || !model_.package()) return {};
    if (const auto found = pictures_.find(*imageID); found != pictures_.end()) return found->second;
    if (loading_.insert(*imageID).second) {
        // Decoding a photograph takes longer than a frame: a worker does it.
        const Uuid id = *imageID;
        auto* watcher = new QFutureWatcher<QImage>(this);
        connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, id] {
            pictures_[id] = watcher->result();
            loading_.erase(id);
            watcher->deleteLater();
            // The slides showing it are drawn again.
            std::erase_if(thumbnails_, [&](const auto& entry) { return entry.second.first.imageID == id; });
            shownSlides_.clear();
            refresh();
        });
        watcher->setFuture(QtConcurrent::run([package = *model_.package(), library = model_.show()->library, id] {
            const auto image = SlideMaker::libraryPicture(id, package, library);
            return image ? image->scaledToWidth(std::min(pictureWidthPixels, image->width()), Qt::SmoothTransformation)
                         : QImage();
        }));
    }
    return {};
}

void SlideEditorWindow::backgroundChosen(int index) {
    std::optional<Uuid> image;
    if (index >= 2 && index - 2 < int(backgroundImages_.size())) image = backgroundImages_[std::size_t(index - 2)];
    changeSlide([&](MadeSlide& slide) {
        slide.imageID = image;
        if (index == 1) slide.isClear = true;
        else if (slide.isClear) slide.isClear = false;
    });
}

} // namespace velarion::console
