#pragma once
// AgentService: turns one agent request into one response. It checks the
// tool and its arguments, the operator's tier switches and that a show is
// open, then reads the show or the engine's state, sends engine commands, or
// builds show edits, all through the AgentHost. Every action an agent takes
// is noted in the live history ("Agent: fired Walk in").
//
// Contract.
// - Main thread only: the socket server posts each request to the main loop
//   and `handle` takes it there. `handle` never throws; a refusal is a
//   response with `ok` false and one sentence that says what to do next.
// - Nothing an agent asks holds the main loop long: get_show takes a
//   snapshot of the show there and builds its answer on the service's
//   worker thread; add_song and update_song wait for their pictures, drawn
//   off the main loop by the host, and finish on the main loop.
// - The host is held weakly; the scheduler must outlive the service. The
//   one task the service leaves behind (the delayed quit of quit_app and
//   restart_app) holds only the host, weakly.
// - A tool that changes the show in several steps keeps the steps that went
//   in when a later one is refused.
// - Destruction waits for the answer the worker is building and drops those
//   queued behind it.

#include "LiveAgent/AgentHost.h"
#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/JSONValue.h"
#include "LiveEngine/ports/Scheduler.h"

#include <functional>
#include <memory>
#include <string_view>

namespace velarion {

class AgentService {
public:
    // The time between answering quit_app or restart_app and quitting, so
    // that the answer reaches the agent first.
    static constexpr double quitDelaySeconds = 0.4;

    using Reply = std::function<void(AgentResponse)>;

    AgentService(std::weak_ptr<AgentHost> host, Scheduler& scheduler);
    ~AgentService();
    AgentService(const AgentService&) = delete;
    AgentService& operator=(const AgentService&) = delete;

    // Answers one request through `reply`, once, echoing its id: at once,
    // later on the main loop, or from the worker thread.
    void handle(const AgentRequest& request, Reply reply);
    // The response, built on the calling thread. A tool that waits for
    // pictures answers here only when the host draws at once (as test hosts
    // do); otherwise this says the answer isn't ready.
    AgentResponse handle(const AgentRequest& request);

private:
    class Worker;
    struct Deferred;
    // With `inlineWork`, what would go to the worker is done here.
    void start(const AgentRequest& request, Reply reply, bool inlineWork);
    // The tool's result, or null with `deferred` set. Throws AgentFailure,
    // or InvalidArguments when the arguments don't fit the tool's schema.
    JSONValue run(std::string_view tool, const JSONValue& arguments, Deferred& deferred);

    std::weak_ptr<AgentHost> host_;
    Scheduler& scheduler_;
    std::unique_ptr<Worker> worker_;
};

} // namespace velarion
