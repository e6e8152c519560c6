#pragma once
// ShowWriter: writes show documents off the main loop, for autosave. The
// main loop only hands over an immutable Show snapshot (a copy is cheap: its
// lists are shared) and goes on; encoding the JSON and the atomic write of
// show.json happen elsewhere.
//
// Contract.
// - `write` is called on the main thread and returns at once. It queues a
//   write of `show` into `package` (ShowPackage::save). Writes land in the
//   order they were queued: a later snapshot is never overtaken by an earlier
//   one. A queued write that hasn't started yet is dropped when a newer one
//   for the same package is queued; the dropped write's `done` is never
//   called.
// - `done` runs on the main loop, through Scheduler::post, once the write
//   finished: with no error on success, else with the operator's sentence
//   for what went wrong (the old document is then still whole).
// - `waitUntilIdle` blocks the calling thread until every queued write has
//   finished (their `done` tasks are posted, not yet run). Used before the
//   rare synchronous saves the operator asked for, so that they are never
//   overtaken by an older autosave.
// - Lifetime: destroying the writer finishes the queued writes first (no
//   data is lost) and posts nothing after it returns. The Scheduler must
//   outlive the writer, and `done` must hold what it captures weakly.
//
// Implementations: ThreadShowWriter (one worker thread); ManualShowWriter in
// tests, which writes when the test says so.

#include "LiveModel/Show.h"
#include "LiveModel/ShowPackage.h"

#include <functional>
#include <optional>
#include <string>

namespace velarion {

class ShowWriter {
public:
    using Done = std::function<void(const std::optional<std::string>& error)>;

    virtual ~ShowWriter() = default;

    virtual void write(ShowPackage package, Show show, Done done) = 0;
    virtual void waitUntilIdle() = 0;
};

} // namespace velarion
