#include "Live/AgentControl.h"

#include "LiveAgentKit/AgentSocketPath.h"

namespace velarion {

// The server runs its tools on the application's main loop.
class AgentControl::MainLoop final : public AgentMainLoop {
public:
    explicit MainLoop(Scheduler& scheduler) : scheduler_(scheduler) {}
    void post(Task task) override { scheduler_.post(std::move(task)); }

private:
    Scheduler& scheduler_;
};

AgentControl::AgentControl(AppModel& model, Scheduler& scheduler, std::shared_ptr<AgentHost> host)
    : model_(model), scheduler_(scheduler), host_(std::move(host)),
      mainLoop_(std::make_unique<MainLoop>(scheduler)) {}

AgentControl::~AgentControl() {
    if (server_) server_->stop();
}

void AgentControl::start() {
    if (server_) return;
    auto service = std::make_shared<AgentService>(host_, scheduler_);
    try {
        auto server = std::make_unique<AgentSocketServer>(
            agentSocketPath::standard(), *mainLoop_,
            [service](AgentRequest request, AgentSocketServer::Reply reply) {
                service->handle(request, std::move(reply));
            });
        std::weak_ptr<int> life = life_;
        server->setOnConnectionCount([this, life](std::size_t count) {
            // From the server's own thread to the main loop.
            scheduler_.post([this, life, count] {
                if (!life.expired() && model_.agentConnections() != static_cast<int>(count))
                    model_.setAgentConnections(static_cast<int>(count));
            });
        });
        server->start();
        service_ = std::move(service);
        server_ = std::move(server);
        model_.setAgentError(std::nullopt);
    } catch (const std::exception& error) {
        model_.setAgentError(std::string(error.what()));
    }
}

void AgentControl::stop() {
    if (server_) server_->stop();
    server_.reset();
    service_.reset();
    model_.setAgentConnections(0);
}

std::optional<std::string> AgentControl::socketPath() const {
    if (!server_) return std::nullopt;
    return server_->path();
}

} // namespace velarion
