#include "LiveEngine/MediaImportQueue.h"

namespace velarion {

struct MediaImportQueue::Batch {
    std::vector<std::filesystem::path> files;
    ShowPackage into;
    Handlers handlers;
    std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);
    // True while a progress report waits on the main loop.
    std::shared_ptr<std::atomic<bool>> reportQueued = std::make_shared<std::atomic<bool>>(false);
};

MediaImportQueue::MediaImportQueue(Scheduler& scheduler, MediaImportTools tools)
    : scheduler_(scheduler), tools_(tools), thread_([this] { loop(); }) {}

MediaImportQueue::~MediaImportQueue() {
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
        for (const auto& batch : queue_) batch->cancelled->store(true);
        if (running_) running_->cancelled->store(true);
        queue_.clear();
    }
    wake_.notify_all();
    thread_.join();
}

TaskHandle MediaImportQueue::start(std::vector<std::filesystem::path> files, ShowPackage into,
                                   Handlers handlers) {
    auto batch = std::make_shared<Batch>(Batch{std::move(files), std::move(into), std::move(handlers)});
    TaskHandle handle(batch->cancelled);
    {
        std::lock_guard guard(lock_);
        queue_.push_back(batch);
    }
    wake_.notify_all();
    return handle;
}

void MediaImportQueue::loop() {
    std::unique_lock guard(lock_);
    while (true) {
        wake_.wait(guard, [this] { return stopping_ || !queue_.empty(); });
        if (stopping_) return;
        running_ = std::move(queue_.front());
        queue_.pop_front();
        const std::shared_ptr<Batch> batch = running_;
        guard.unlock();
        run(batch);
        guard.lock();
        running_.reset();
    }
}

void MediaImportQueue::run(const std::shared_ptr<Batch>& batch) {
    const std::weak_ptr<int> alive = life_;
    const auto progress = [&](const ImportProgress& state) {
        if (!batch->handlers.progress || batch->reportQueued->exchange(true)) return;
        scheduler_.post([alive, state, queued = batch->reportQueued, cancelled = batch->cancelled,
                         report = batch->handlers.progress] {
            queued->store(false);
            if (alive.expired() || cancelled->load()) return;
            report(state);
        });
    };
    // Only this queue writes copies into the package, so anything hidden
    // there now is what a crashed import left.
    mediaImporter::removeLeftovers(batch->into);
    ImportResult result =
        mediaImporter::importFiles(batch->files, batch->into, tools_, *batch->cancelled, progress);
    scheduler_.post([alive, result = std::move(result), done = std::move(batch->handlers.done)]() mutable {
        if (!alive.expired() && done) done(std::move(result));
    });
}

} // namespace velarion
