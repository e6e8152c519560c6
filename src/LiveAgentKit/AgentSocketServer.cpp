#include "LiveAgentKit/AgentSocketServer.h"

#include "LiveAgentKit/AgentSocketConnection.h"
#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/AgentSocketPath.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velarion {

namespace {

constexpr int listenBacklog = 8;
// Out of descriptors, a readable listener would wake poll at once, again and
// again; it waits this long, or for any other event, before the next try.
constexpr double acceptRetrySeconds = 1.0;

AgentSocketError systemError(const char* words) {
    return AgentSocketError(agentSocketError::System{words + std::string(std::strerror(errno))});
}

// The socket's folder and any missing folder above it, owner only: the
// socket's own mode is the only guard, so nobody else should even list it.
void createFolder(const std::string& folder) {
    auto isFolder = [](const std::string& path) {
        struct stat info {};
        return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    };
    if (folder.empty() || isFolder(folder))
        return;
    std::size_t end = 0;
    do {
        end = folder.find('/', end + 1);
        const std::string prefix = folder.substr(0, end);
        if (::mkdir(prefix.c_str(), 0700) == 0)
            continue;
        const int error = errno;
        if (error != EEXIST || !isFolder(prefix)) {
            throw std::filesystem::filesystem_error(
                "Couldn't create the control socket's folder", prefix,
                std::error_code(error == EEXIST ? ENOTDIR : error, std::generic_category()));
        }
    } while (end != std::string::npos);
}

} // namespace

// Where replies come back from the main loop, and the I/O thread's wake-up.
// Shared with every outstanding reply, so the eventfd stays valid (and its
// number unreused) for as long as anyone may still write to it.
struct AgentSocketServer::Inbox {
    UniqueFd wake;
    std::mutex mutex;
    std::vector<std::pair<ConnectionID, AgentResponse>> replies;
    bool stopRequested = false;
    bool closed = false; // the server stopped: replies go nowhere

    void signal() {
        const std::uint64_t one = 1;
        while (::write(wake.get(), &one, sizeof one) < 0 && errno == EINTR) {
        }
    }

    void drain() {
        std::uint64_t count = 0;
        while (::read(wake.get(), &count, sizeof count) < 0 && errno == EINTR) {
        }
    }

    void deliver(ConnectionID connection, AgentResponse response) {
        const std::lock_guard lock(mutex);
        if (closed)
            return;
        // The I/O thread drains the eventfd before it takes the list, so one
        // signal per empty-to-full change is never lost.
        const bool wasEmpty = replies.empty();
        replies.emplace_back(connection, std::move(response));
        if (wasEmpty)
            signal();
    }
};

AgentSocketServer::AgentSocketServer(std::string path, AgentMainLoop& mainLoop, Handler handler)
    : path_(std::move(path)), mainLoop_(mainLoop),
      handler_(std::make_shared<const Handler>(std::move(handler))) {}

AgentSocketServer::~AgentSocketServer() {
    stop();
}

void AgentSocketServer::setOnConnectionCount(ConnectionCount onConnectionCount) {
    onConnectionCount_ = std::move(onConnectionCount);
}

void AgentSocketServer::start() {
    if (isListening())
        return;
    const agentSocketPath::Address address = agentSocketPath::makeAddress(path_);
    createFolder(path_.substr(0, path_.rfind('/')));
    // A crashed run leaves its socket file behind, and bind won't replace it.
    ::unlink(path_.c_str());

    auto inbox = std::make_shared<Inbox>();
    inbox->wake.reset(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!inbox->wake.isOpen())
        throw systemError("Couldn't open the control socket: ");
    UniqueFd listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!listener.isOpen())
        throw systemError("Couldn't open the control socket: ");
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address.address),
               address.length) != 0 ||
        ::chmod(path_.c_str(), 0600) != 0) {
        throw systemError("Couldn't create the control socket: ");
    }
    if (::listen(listener.get(), listenBacklog) != 0) {
        throw systemError("Couldn't listen on the control socket: ");
    }
    const int flags = ::fcntl(listener.get(), F_GETFL);
    if (flags < 0 || ::fcntl(listener.get(), F_SETFL, flags | O_NONBLOCK) != 0) {
        throw systemError("Couldn't listen on the control socket: ");
    }

    listener_ = std::move(listener);
    inbox_ = std::move(inbox);
    acceptPaused_ = false;
    connections_.clear();
    openConnections_ = 0;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (...) {
        listener_.reset();
        inbox_.reset();
        throw;
    }
}

void AgentSocketServer::stop() {
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(inbox_->mutex);
        inbox_->stopRequested = true;
    }
    inbox_->signal();
    thread_.join();
    inbox_.reset();
    ::unlink(path_.c_str());
}

void AgentSocketServer::run() {
    std::vector<pollfd> polled;
    std::vector<AgentSocketConnection*> polledConnections;
    for (;;) {
        polled.clear();
        polledConnections.clear();
        polled.push_back({inbox_->wake.get(), POLLIN, 0});
        polled.push_back({listener_.get(), static_cast<short>(acceptPaused_ ? 0 : POLLIN), 0});
        for (const auto& entry : connections_) {
            polled.push_back({entry.second->fd(), entry.second->pollEvents(), 0});
            polledConnections.push_back(entry.second.get());
        }
        const int timeoutMs = acceptPaused_ ? static_cast<int>(acceptRetrySeconds * 1000) : -1;
        acceptPaused_ = false;
        if (::poll(polled.data(), polled.size(), timeoutMs) < 0)
            continue; // EINTR

        if (polled[0].revents != 0) {
            inbox_->drain();
            bool stopping = false;
            {
                const std::lock_guard lock(inbox_->mutex);
                stopping = inbox_->stopRequested;
            }
            if (stopping) {
                shutDown();
                return;
            }
            deliverReplies();
        }
        if (polled[1].revents != 0)
            acceptClient();
        // A connection closed above keeps its slot until the sweep, and then
        // ignores what poll said about its old descriptor.
        for (std::size_t i = 0; i < polledConnections.size(); ++i) {
            const short events = polled[i + 2].revents;
            if ((events & POLLOUT) != 0)
                polledConnections[i]->flushOutput();
            if ((events & (POLLIN | POLLHUP | POLLERR | POLLNVAL)) != 0) {
                polledConnections[i]->read();
            }
        }
        sweepClosedConnections();
    }
}

void AgentSocketServer::acceptClient() {
    UniqueFd fd(::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!fd.isOpen()) {
        acceptPaused_ = errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
        return;
    }
    const ConnectionID id = nextConnectionID_++;
    connections_.emplace(
        id, std::make_unique<AgentSocketConnection>(
                std::move(fd),
                [this, id](AgentRequest request) { startRequest(id, std::move(request)); },
                [this] {
                    --openConnections_;
                    if (onConnectionCount_)
                        onConnectionCount_(openConnections_);
                }));
    ++openConnections_;
    if (onConnectionCount_)
        onConnectionCount_(openConnections_);
}

void AgentSocketServer::startRequest(ConnectionID connection, AgentRequest request) {
    struct Once {
        std::shared_ptr<Inbox> inbox;
        ConnectionID connection;
        std::atomic<bool> used{false};
    };
    auto once = std::make_shared<Once>();
    once->inbox = inbox_;
    once->connection = connection;
    Reply reply = [once](AgentResponse response) {
        if (once->used.exchange(true))
            return;
        once->inbox->deliver(once->connection, std::move(response));
    };
    mainLoop_.post(
        [handler = handler_, request = std::move(request), reply = std::move(reply)]() mutable {
            const std::int64_t id = request.id;
            try {
                (*handler)(std::move(request), reply);
            } catch (const std::exception& error) {
                reply(AgentResponse::failure(id, error.what()));
            }
        });
}

void AgentSocketServer::deliverReplies() {
    std::vector<std::pair<ConnectionID, AgentResponse>> replies;
    {
        const std::lock_guard lock(inbox_->mutex);
        replies.swap(inbox_->replies);
    }
    for (const auto& [connection, response] : replies) {
        const auto found = connections_.find(connection);
        // Its client went away while the tool ran: the answer goes nowhere.
        if (found != connections_.end())
            found->second->finish(response);
    }
}

void AgentSocketServer::sweepClosedConnections() {
    std::erase_if(connections_, [](const auto& entry) { return entry.second->isClosed(); });
}

void AgentSocketServer::shutDown() {
    listener_.reset();
    for (const auto& entry : connections_)
        entry.second->close();
    connections_.clear();
    openConnections_ = 0;
    if (onConnectionCount_)
        onConnectionCount_(0);
    const std::lock_guard lock(inbox_->mutex);
    inbox_->closed = true;
    inbox_->replies.clear();
}

} // namespace velarion
