#pragma once
// The application's main loop as the agent socket server sees it: somewhere
// to run a tool. The application adapts its Scheduler to this; tests use a
// queue drained by a thread of their own.
//
// Contract.
// - `post` may be called from any thread and never blocks for long; the task
//   runs later on the main loop, tasks in the order posted.
// - Ownership: the loop owns queued tasks. A loop that is torn down may drop
//   them unrun; the server copes (the request's connection then waits until
//   the client gives up).
// - Lifetime: must outlive every server given it.

#include <functional>

namespace velarion {

class AgentMainLoop {
public:
    using Task = std::function<void()>;

    virtual ~AgentMainLoop() = default;
    virtual void post(Task task) = 0;
};

} // namespace velarion
