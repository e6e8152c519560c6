#pragma once
// AgentControl: the application's end of agent control. It opens the agent
// socket at the standard path and answers each request with the agent
// service over the application model, on the main loop.
//
// Contract.
// - Main thread. `start` does nothing while a server exists; on failure it
//   sets the model's `agentError` to the reason and holds nothing, and the
//   application runs on without agent control. `stop` closes the socket,
//   drops the service and sets `agentConnections` to 0.
// - The model, the scheduler and the host must outlive this object;
//   destruction stops the server.

#include "Live/AppModel.h"
#include "LiveAgent/AgentHost.h"
#include "LiveAgent/AgentService.h"
#include "LiveAgentKit/AgentSocketServer.h"

#include <memory>

namespace velarion {

class AgentControl {
public:
    AgentControl(AppModel& model, Scheduler& scheduler, std::shared_ptr<AgentHost> host);
    ~AgentControl();
    AgentControl(const AgentControl&) = delete;
    AgentControl& operator=(const AgentControl&) = delete;

    void start();
    void stop();
    // The socket's path while listening.
    std::optional<std::string> socketPath() const;

private:
    class MainLoop;

    AppModel& model_;
    Scheduler& scheduler_;
    std::shared_ptr<AgentHost> host_;
    std::unique_ptr<MainLoop> mainLoop_;
    std::shared_ptr<AgentService> service_;
    std::unique_ptr<AgentSocketServer> server_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
