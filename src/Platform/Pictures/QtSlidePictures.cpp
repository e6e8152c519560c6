#include "Platform/Pictures/QtSlidePictures.h"

#include "Platform/Pictures/Canvas.h"
#include "Platform/Pictures/PictureFile.h"
#include "Platform/Pictures/SlideMaker.h"

namespace velarion {

std::string QtSlidePictures::pageName(const Uuid& deckID, const MadeSlide& slide) {
    return SlideMaker::pageName(deckID, slide);
}

std::optional<StillImage> QtSlidePictures::render(const MadeSlide& slide,
                                                  const std::optional<Backdrop>& background) {
    std::optional<Uuid> pictureID = slide.imageID;
    if (!pictureID && background) {
        if (const auto* media = std::get_if<backdrop::Media>(&*background)) pictureID = media->mediaID;
    }
    std::optional<QImage> picture;
    if (pictureID && !slide.isClear.value_or(false) && findMedia_) {
        if (auto file = findMedia_(*pictureID)) picture = readPicture(*file).picture;
    }
    return toStill(SlideMaker::render(slide, picture));
}

} // namespace velarion
