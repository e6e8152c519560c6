#pragma once
// SlidePages: the page pictures of made slides, kept on disk in the package.
// The application model calls it when a song or a deck's slides change and
// when a show is loaded (legacy decks are redrawn, unused pages pruned).
//
// Contract.
// - `update` draws the pages of `item`'s made slides that have no file yet
//   into `package` (atomic writes) and returns the item with its deck's
//   `pages`, `notes` and `groups` rebuilt from the slides. An item without
//   made slides comes back unchanged. On failure it throws a std::exception
//   whose `what()` is one short sentence for the operator; the item passed
//   in is never changed, so the caller's deck stays as it was.
// - `prunePages` deletes page files no deck of `library` names, then the
//   folders left empty. It never throws and reports nothing.
// - Threads: main thread (text drawing needs the platform's font database).
//   Drawing takes tens of milliseconds per new page; unchanged pages cost a
//   file check.
// - Lifetime: holds no callbacks and no state between calls.
//
// Implementations: the platform's slide drawing; FakeSlidePages in tests.

#include "LiveModel/MediaItem.h"
#include "LiveModel/SharedList.h"
#include "LiveModel/ShowPackage.h"

namespace velarion {

class SlidePages {
public:
    virtual ~SlidePages() = default;

    virtual MediaItem update(const MediaItem& item, const ShowPackage& package,
                             const SharedList<MediaItem>& library) = 0;
    virtual void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) = 0;
};

} // namespace velarion
