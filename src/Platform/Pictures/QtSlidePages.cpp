#include "Platform/Pictures/QtSlidePages.h"

#include "Platform/Pictures/SlideMaker.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace velarion {

namespace {

// One core stays for the main loop and the output windows.
int workerCount() {
    const int cores = static_cast<int>(std::thread::hardware_concurrency());
    return std::clamp(cores - 1, 1, 4);
}

// Linux gives each thread its own nice value; drawing must give way to the
// main loop on a busy machine, never the reverse.
constexpr int workerNiceness = 10;

void lowerThisThread() {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), workerNiceness);
}

} // namespace

// One deck being drawn: its pages are shared out to the workers, and the
// worker that finishes the last one posts the result.
struct QtSlidePages::Job {
    Job(MediaItem named, ShowPackage package, SharedList<MediaItem> library, Done done)
        : named(std::move(named)), package(std::move(package)), library(std::move(library)),
          done(std::move(done)) {}

    MediaItem named;
    ShowPackage package;
    SharedList<MediaItem> library;
    Done done;
    std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);
    std::mutex lock;
    std::size_t pagesLeft = 0;
    std::string failure;
    std::atomic<bool> failed{false};
};

QtSlidePages::QtSlidePages(Scheduler& scheduler) : scheduler_(scheduler) {
    pool_.setMaxThreadCount(workerCount());
}

QtSlidePages::~QtSlidePages() {
    pool_.clear();
    pool_.waitForDone();
}

TaskHandle QtSlidePages::draw(MediaItem item, ShowPackage package, SharedList<MediaItem> library,
                              Done done) {
    auto job = std::make_shared<Job>(std::move(item), std::move(package), std::move(library),
                                     std::move(done));
    TaskHandle handle(job->cancelled);
    pool_.start([this, job] {
        lowerThisThread();
        if (job->cancelled->load()) return;
        job->named = SlideMaker::withPages(job->named);
        const std::vector<std::size_t> missing = SlideMaker::missingPages(job->named, job->package);
        if (missing.empty()) {
            job->pagesLeft = 1;
            finishPage(job);
            return;
        }
        job->pagesLeft = missing.size();
        for (const std::size_t index : missing) {
            pool_.start([this, job, index] {
                lowerThisThread();
                if (!job->cancelled->load() && !job->failed.load()) {
                    try {
                        SlideMaker::drawPage(job->named, index, job->package, job->library);
                    } catch (const std::exception& error) {
                        std::lock_guard guard(job->lock);
                        if (job->failure.empty()) job->failure = error.what();
                        // The rest would be drawn for nothing.
                        job->failed.store(true);
                    }
                }
                finishPage(job);
            });
        }
    });
    return handle;
}

void QtSlidePages::finishPage(const std::shared_ptr<Job>& job) {
    {
        std::lock_guard guard(job->lock);
        if (--job->pagesLeft > 0) return;
    }
    if (job->cancelled->load()) return;
    DrawnPages result;
    if (job->failure.empty())
        result.item = std::move(job->named);
    else
        result.failure = job->failure;
    scheduler_.post([job, result = std::move(result)]() mutable {
        // Cancelled after the post: the caller no longer wants it.
        if (!job->cancelled->load()) job->done(std::move(result));
    });
}

MediaItem QtSlidePages::update(const MediaItem& item, const ShowPackage& package,
                               const SharedList<MediaItem>& library) {
    return SlideMaker::update(item, package, library);
}

void QtSlidePages::prunePages(const ShowPackage& package, const SharedList<MediaItem>& library) {
    SlideMaker::prunePages(package, library);
}

} // namespace velarion
