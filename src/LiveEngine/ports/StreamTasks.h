#pragma once
// StreamTasks: where the engine's music-app work runs (starts, fades,
// status polls), off the main thread. StreamQueue: the one serial worker
// every call to a music app passes through, so that the apps are asked one
// thing at a time.
//
// Contract.
// - `launch` may be called from the main thread only; the work runs later
//   or at once, on a thread of the implementation's choosing, and reaches
//   the main loop again only through Scheduler::post. The work gets the
//   StreamCancel it was launched with and must end soon after it is set.
// - ThreadStreamTasks runs each work on a thread of its own; its destructor
//   cancels what still runs and joins it, so no work outlives it.
//   InlineStreamTasks runs the work inside `launch` (tests, and previews
//   that touch no app).
// - StreamQueue::run may be called from any thread and blocks its caller
//   until the call ran or the caller's cancellation was set; a call that
//   was cancelled before its turn never runs. A call that has begun runs to
//   its end: the platform remote bounds each call (6 seconds), so the queue
//   goes on after an app that hangs. Destruction waits for the running call
//   and drops the waiting ones.

#include "LiveEngine/StreamRemote.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace velarion {

class StreamTasks {
public:
    using Work = std::function<void(const StreamCancel&)>;
    virtual ~StreamTasks() = default;
    virtual void launch(Work work, StreamCancel cancel) = 0;
};

class InlineStreamTasks final : public StreamTasks {
public:
    void launch(Work work, StreamCancel cancel) override { work(cancel); }
};

class ThreadStreamTasks final : public StreamTasks {
public:
    ThreadStreamTasks() = default;
    ~ThreadStreamTasks() override;
    ThreadStreamTasks(const ThreadStreamTasks&) = delete;
    ThreadStreamTasks& operator=(const ThreadStreamTasks&) = delete;
    void launch(Work work, StreamCancel cancel) override;

private:
    struct Task {
        std::thread thread;
        StreamCancel cancel;
        std::shared_ptr<std::atomic<bool>> done = std::make_shared<std::atomic<bool>>(false);
    };
    void reapFinished();
    std::list<Task> tasks_;
};

class StreamQueue {
public:
    StreamQueue();
    ~StreamQueue();
    StreamQueue(const StreamQueue&) = delete;
    StreamQueue& operator=(const StreamQueue&) = delete;

    // Runs `call` on the worker; cancellation while waiting answers with
    // `streamCancelled()`.
    StreamReply run(std::function<StreamReply()> call, const StreamCancel& cancel = {});
    // `remote` with its `send` passed through this queue.
    StreamRemote serial(StreamRemote remote);

private:
    struct Job;
    void serve();
    std::mutex lock_;
    std::condition_variable wake_;
    std::deque<std::shared_ptr<Job>> jobs_;
    bool stopping_ = false;
    std::thread worker_;
};

} // namespace velarion
