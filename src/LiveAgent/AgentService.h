#pragma once
// AgentService: turns one agent request into one response. It checks the
// tool and its arguments, the operator's tier switches and that a show is
// open, then reads the show or the engine's state, sends engine commands, or
// builds show edits, all through the AgentHost. Every action an agent takes
// is noted in the live history ("Agent: fired Walk in").
//
// Contract.
// - Main thread only: the socket server posts each request to the main loop
//   and `handle` answers it there. `handle` never throws; a refusal is a
//   response with `ok` false and one sentence that says what to do next.
// - The host is held weakly; the scheduler must outlive the service. The
//   one task the service leaves behind (the delayed quit of quit_app and
//   restart_app) holds only the host, weakly.
// - A tool runs to its end before `handle` returns; a tool that changes the
//   show in several steps keeps the steps that went in when a later one is
//   refused.

#include "LiveAgent/AgentHost.h"
#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/JSONValue.h"
#include "LiveEngine/ports/Scheduler.h"

#include <memory>
#include <string_view>

namespace velarion {

class AgentService {
public:
    // The time between answering quit_app or restart_app and quitting, so
    // that the answer reaches the agent first.
    static constexpr double quitDelaySeconds = 0.4;

    AgentService(std::weak_ptr<AgentHost> host, Scheduler& scheduler);

    // The response to one request, echoing its id.
    AgentResponse handle(const AgentRequest& request);

    // The tool's result. Throws AgentFailure, or InvalidArguments when the
    // arguments don't fit the tool's schema.
    JSONValue run(std::string_view tool, const JSONValue& arguments);

private:
    std::weak_ptr<AgentHost> host_;
    Scheduler& scheduler_;
};

} // namespace velarion
