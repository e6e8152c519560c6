#include "Platform/Pictures/QtSlidePages.h"

#include "Platform/Pictures/SlideMaker.h"

namespace velarion {

MediaItem QtSlidePages::update(const MediaItem& item, const ShowPackage& package,
                               const SharedList<MediaItem>& library) {
    return SlideMaker::update(item, package, library);
}

void QtSlidePages::prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) {
    SlideMaker::prunePages(package, library);
}

} // namespace velarion
