#pragma once
// MediaImportQueue: runs imports on one worker thread, one batch after the
// other, and brings their progress and results back to the main loop.
//
// Contract.
// - `start`, `cancel` and the handlers run on the main thread; the copying
//   runs on the queue's thread. `start` returns at once.
// - Progress reaches the main loop at most once per main-loop turn: a new
//   report is posted only after the previous one has been handled, so a
//   long import never floods the loop. The last report of a batch may be
//   skipped; `done` always runs, once, with the result (cancelled or not).
// - `cancel` stops the running batch between two chunks of a copy; its
//   `done` still runs with the files that made it in.
// - The tools and the scheduler must outlive the queue. Destruction cancels
//   every batch, waits for the thread, and runs no handler afterwards.

#include "LiveEngine/MediaImporter.h"
#include "LiveEngine/ports/Scheduler.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace velarion {

class MediaImportQueue {
public:
    struct Handlers {
        std::function<void(const ImportProgress&)> progress;
        std::function<void(ImportResult)> done;
    };

    MediaImportQueue(Scheduler& scheduler, MediaImportTools tools);
    ~MediaImportQueue();
    MediaImportQueue(const MediaImportQueue&) = delete;
    MediaImportQueue& operator=(const MediaImportQueue&) = delete;

    // Queues a batch; the handle cancels it.
    TaskHandle start(std::vector<std::filesystem::path> files, ShowPackage into, Handlers handlers);

private:
    struct Batch;
    void loop();
    void run(const std::shared_ptr<Batch>& batch);

    Scheduler& scheduler_;
    MediaImportTools tools_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    std::mutex lock_;
    std::condition_variable wake_;
    std::deque<std::shared_ptr<Batch>> queue_;
    std::shared_ptr<Batch> running_;
    bool stopping_ = false;
    std::thread thread_; // last: starts once the rest is ready
};

} // namespace velarion
