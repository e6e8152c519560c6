#include "LiveEngine/ports/StreamTasks.h"

namespace velarion {

ThreadStreamTasks::~ThreadStreamTasks() {
    for (Task& task : tasks_) task.cancel.cancel();
    for (Task& task : tasks_)
        if (task.thread.joinable()) task.thread.join();
}

void ThreadStreamTasks::reapFinished() {
    for (auto task = tasks_.begin(); task != tasks_.end();) {
        if (!task->done->load()) {
            ++task;
            continue;
        }
        if (task->thread.joinable()) task->thread.join();
        task = tasks_.erase(task);
    }
}

void ThreadStreamTasks::launch(Work work, StreamCancel cancel) {
    reapFinished();
    Task& task = tasks_.emplace_back();
    task.cancel = cancel;
    task.thread = std::thread([work = std::move(work), cancel, done = task.done] {
        work(cancel);
        done->store(true);
    });
}

struct StreamQueue::Job {
    std::function<StreamReply()> call;
    StreamCancel cancel;
    StreamReply reply;
    bool done = false;
};

StreamQueue::StreamQueue() : worker_([this] { serve(); }) {}

StreamQueue::~StreamQueue() {
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
        for (auto& job : jobs_) job->cancel.cancel();
    }
    wake_.notify_all();
    worker_.join();
}

void StreamQueue::serve() {
    std::unique_lock guard(lock_);
    for (;;) {
        wake_.wait(guard, [this] { return stopping_ || !jobs_.empty(); });
        if (jobs_.empty()) return;
        std::shared_ptr<Job> job = jobs_.front();
        jobs_.pop_front();
        if (job->cancel.isCancelled()) {
            job->reply = {{}, streamCancelled()};
        } else {
            guard.unlock();
            StreamReply reply = job->call();
            guard.lock();
            job->reply = std::move(reply);
        }
        job->done = true;
        wake_.notify_all();
    }
}

StreamReply StreamQueue::run(std::function<StreamReply()> call, const StreamCancel& cancel) {
    auto job = std::make_shared<Job>();
    job->call = std::move(call);
    job->cancel = cancel;
    std::unique_lock guard(lock_);
    if (stopping_) return {{}, streamCancelled()};
    jobs_.push_back(job);
    wake_.notify_all();
    // A cancelled waiter is woken by the queue's next change at the latest;
    // the job left behind is dropped at its turn.
    wake_.wait(guard, [&] { return job->done || cancel.isCancelled(); });
    if (!job->done) return {{}, streamCancelled()};
    return job->reply;
}

StreamRemote StreamQueue::serial(StreamRemote remote) {
    StreamRemote::Send direct = std::move(remote.send);
    remote.send = [this, direct](StreamApp app, const StreamCommand& command) {
        return run([&direct, app, command] { return direct(app, command); });
    };
    return remote;
}

} // namespace velarion
