#pragma once
// A ShowWriter for tests that writes only when told: `write` queues (a newer
// snapshot of the same package replaces a queued one, as the real writer
// does), `finishWrites` performs the queue in order with real
// ShowPackage::save calls and posts each result through the scheduler, so a
// test sees exactly when the main loop hears back. `waitUntilIdle` finishes
// the queue at once, as the real one would by waiting.
//
// `failure`, when set, fails every write with that text instead of writing.
// Test thread only.

#include "Live/ports/ShowWriter.h"
#include "LiveEngine/ports/Scheduler.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace velarion::testing {

class ManualShowWriter final : public ShowWriter {
public:
    explicit ManualShowWriter(Scheduler& scheduler) : scheduler_(scheduler) {}

    void write(ShowPackage package, Show show, Done done) override;
    void waitUntilIdle() override { finishWrites(); }

    void finishWrites();
    std::size_t queuedCount() const { return queue_.size(); }

    std::optional<std::string> failure;
    // Every write performed, in order, failed ones included.
    std::vector<Show> written;

private:
    struct Job {
        ShowPackage package;
        Show show;
        Done done;
    };
    Scheduler& scheduler_;
    std::deque<Job> queue_;
};

} // namespace velarion::testing
