#pragma once
// QtSlidePages: the application model's slide pages, drawn with SlideMaker.
//
// Contract: as SlidePages. Main thread (Qt text drawing). Stateless.

#include "Live/ports/SlidePages.h"

namespace velarion {

class QtSlidePages final : public SlidePages {
public:
    MediaItem update(const MediaItem& item, const ShowPackage& package,
                     const SharedList<MediaItem>& library) override;
    void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) override;
};

} // namespace velarion
