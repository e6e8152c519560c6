#pragma once
// ThreadShowWriter: the ShowWriter of the application, one worker thread
// that encodes and writes show documents in the order they were queued.
// See ShowWriter.h for the contract; in short: `write` returns at once,
// results come back through Scheduler::post, queued writes to the same
// package coalesce, and destruction finishes what is queued.

#include "Live/ports/ShowWriter.h"
#include "LiveEngine/ports/Scheduler.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace velarion {

class ThreadShowWriter final : public ShowWriter {
public:
    // `scheduler` must outlive the writer.
    explicit ThreadShowWriter(Scheduler& scheduler);
    ~ThreadShowWriter() override;
    ThreadShowWriter(const ThreadShowWriter&) = delete;
    ThreadShowWriter& operator=(const ThreadShowWriter&) = delete;

    void write(ShowPackage package, Show show, Done done) override;
    void waitUntilIdle() override;

private:
    struct Job {
        ShowPackage package;
        Show show;
        Done done;
    };
    void run();

    Scheduler& scheduler_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    bool writing_ = false;
    bool stopping_ = false;
    std::thread worker_; // last: it starts once the rest is ready
};

} // namespace velarion
