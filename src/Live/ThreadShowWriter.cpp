#include "Live/ThreadShowWriter.h"

#include "Live/OperatorText.h"

#include <algorithm>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace velarion {

namespace {
// Linux gives each thread its own nice value; 10 is what background
// indexers use.
constexpr int writerNiceness = 10;
} // namespace

ThreadShowWriter::ThreadShowWriter(Scheduler& scheduler)
    : scheduler_(scheduler), worker_([this] { run(); }) {}

ThreadShowWriter::~ThreadShowWriter() {
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
    }
    changed_.notify_all();
    worker_.join();
}

void ThreadShowWriter::write(ShowPackage package, Show show, Done done) {
    {
        std::lock_guard guard(lock_);
        // A newer snapshot makes a queued one of the same package pointless;
        // one already being written is not in the queue and finishes first.
        std::erase_if(queue_, [&](const Job& job) { return job.package == package; });
        queue_.push_back(Job{std::move(package), std::move(show), std::move(done)});
    }
    changed_.notify_all();
}

void ThreadShowWriter::waitUntilIdle() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return queue_.empty() && !writing_; });
}

void ThreadShowWriter::run() {
    // Encoding a large show takes tens of milliseconds of CPU; on a busy
    // machine the writer must give way to the main loop, never the reverse.
    // A failure leaves the default priority, which still works.
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), writerNiceness);
    std::unique_lock guard(lock_);
    while (true) {
        changed_.wait(guard, [this] { return stopping_ || !queue_.empty(); });
        // Stopping still writes what is queued: nothing handed over is lost.
        if (queue_.empty()) return;
        Job job = std::move(queue_.front());
        queue_.pop_front();
        writing_ = true;
        guard.unlock();

        std::optional<std::string> error;
        try {
            job.package.save(job.show);
        } catch (const std::exception& failure) {
            error = errorText(failure);
        }
        // The snapshot's lists may be the last owners of large parts of a
        // show; let them go here rather than on the main loop.
        job.show = Show{};
        if (job.done) {
            scheduler_.post([done = std::move(job.done), error = std::move(error)] { done(error); });
        }

        guard.lock();
        writing_ = false;
        changed_.notify_all();
    }
}

} // namespace velarion
