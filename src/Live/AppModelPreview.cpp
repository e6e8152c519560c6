// The library's preview: one file at a time on the Headphones output, with
// its own player, so that the operator can listen before the room does.

#include "Live/AppModel.h"

namespace velarion {

bool AppModel::previewMedia(const Uuid& itemID) {
    if (!show_ || !package_) return false;
    const MediaItem* item = show_->media(itemID);
    // Decks and network inputs have no sound file to listen to.
    if (!item || item->deck || item->ndiSource) return false;
    const std::optional<std::string>& device = show_->audio.headphonesDeviceID;
    if (!device) {
        setStatus(noHeadphones);
        return false;
    }
    const std::filesystem::path file = package_->mediaURL(item->fileName);
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        setStatus(MediaPreviewPlayer::missingFile);
        return false;
    }
    if (!preview_) {
        preview_ = std::make_unique<MediaPreviewPlayer>(ports_.players, ports_.scheduler, ports_.devices);
        const std::weak_ptr<int> alive = token();
        preview_->onChange = [this, alive] {
            if (alive.expired() || !preview_) return;
            if (previewStarts_ && preview_->isReady()) {
                previewStarts_ = false;
                preview_->play();
            }
            // A broken preview says why once; the player stays stopped.
            if (preview_->error() && previewedMediaID_) {
                previewedMediaID_.reset();
                setStatus(*preview_->error());
            }
        };
    }
    previewedMediaID_ = itemID;
    preview_->load(file, item->duration);
    if (preview_->error()) return false;
    previewStarts_ = true;
    preview_->setSound(device, 1);
    setStatus("Previewing " + item->name + " on Headphones");
    return true;
}

void AppModel::stopPreview() {
    if (!previewedMediaID_) return;
    previewedMediaID_.reset();
    previewStarts_ = false;
    if (preview_) preview_->stop();
    changed();
}

void AppModel::tickPreview() {
    if (!preview_ || !previewedMediaID_) return;
    // The item went (deleted, another show opened): so does its sound.
    if (!show_ || !show_->media(*previewedMediaID_)) return stopPreview();
    preview_->tick();
    if (previewedMediaID_ && !previewStarts_ && !preview_->isPlaying()) stopPreview();
}

} // namespace velarion
