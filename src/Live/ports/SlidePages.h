#pragma once
// SlidePages: the page pictures of made slides, kept on disk in the package.
// The application model asks for them when a song or a deck's slides change
// (drawn in the background) and when a show is loaded (legacy decks are
// redrawn, unused pages pruned).
//
// Contract.
// - `draw` is called on the main thread and returns at once. It draws the
//   pages of `item`'s made slides that have no file yet into `package`
//   (atomic writes), off the main loop, several pages at once where the
//   machine has the cores. When all are written, `done` runs on the main
//   loop (Scheduler::post) with the item whose deck's `pages`, `notes` and
//   `groups` are rebuilt from the slides, or with one short sentence for the
//   operator when a page couldn't be written. An item without made slides
//   comes back unchanged. Cancelling the returned handle before `done` ran
//   means `done` never runs; pages already written stay (unused ones go at
//   the next prune).
// - `update` is the same drawing, done on the calling thread (any thread);
//   it throws a std::exception whose `what()` is the sentence. The item
//   passed in is never changed, so the caller's deck stays as it was.
// - `prunePages` deletes page files no deck of `library` names, then the
//   folders left empty. It never throws and reports nothing.
// - Drawing takes tens of milliseconds per new page; unchanged pages cost a
//   file check, since a page's name follows from what it shows.
// - Lifetime: destroying the implementation waits for drawing under way and
//   posts nothing afterwards; the scheduler must outlive it, and `done` must
//   hold what it captures weakly.
//
// Implementations: the platform's slide drawing; FakeSlidePages in tests.

#include "LiveEngine/ports/Scheduler.h"
#include "LiveModel/MediaItem.h"
#include "LiveModel/SharedList.h"
#include "LiveModel/ShowPackage.h"

#include <functional>
#include <optional>
#include <string>

namespace velarion {

// What a background draw ends with: the redrawn item, or why not.
struct DrawnPages {
    std::optional<MediaItem> item;
    std::string failure;
};

class SlidePages {
public:
    using Done = std::function<void(DrawnPages)>;

    virtual ~SlidePages() = default;

    virtual TaskHandle draw(MediaItem item, ShowPackage package, SharedList<MediaItem> library,
                            Done done) = 0;
    virtual MediaItem update(const MediaItem& item, const ShowPackage& package,
                             const SharedList<MediaItem>& library) = 0;
    virtual void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) = 0;
};

} // namespace velarion
