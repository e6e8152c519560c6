#pragma once
// QtSlidePages: the application model's slide pages, drawn with SlideMaker
// on a small pool of worker threads.
//
// Contract: as SlidePages. `draw` on the main thread; a deck's missing pages
// are drawn side by side, one a worker, and `done` is posted once the last
// is written. The workers run at a lower priority, so the main loop never
// waits for a busy worker. Destruction waits for the pages under way and
// drops what was queued; `scheduler` must outlive this object.

#include "Live/ports/SlidePages.h"

#include <QThreadPool>

namespace velarion {

class QtSlidePages final : public SlidePages {
public:
    explicit QtSlidePages(Scheduler& scheduler);
    ~QtSlidePages() override;
    QtSlidePages(const QtSlidePages&) = delete;
    QtSlidePages& operator=(const QtSlidePages&) = delete;

    TaskHandle draw(MediaItem item, ShowPackage package, SharedList<MediaItem> library, Done done) override;
    MediaItem update(const MediaItem& item, const ShowPackage& package,
                     const SharedList<MediaItem>& library) override;
    void prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) override;

private:
    struct Job;
    void finishPage(const std::shared_ptr<Job>& job);

    Scheduler& scheduler_;
    QThreadPool pool_;
};

} // namespace velarion
