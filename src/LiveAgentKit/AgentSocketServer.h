#pragma once
// The application's end of the agent socket: listens on a Unix stream socket
// whose file only its owner may open, reads one request per line from each
// client, runs each through the handler on the main loop and writes the
// response back as one line.
//
// Contract.
// - Threads: `start`, `stop` and the destructor belong to one owning thread
//   (normally the main thread) and never to the server's I/O thread. All
//   socket work happens on that one I/O thread, which waits in poll and never
//   blocks on a client or on the handler.
// - The handler runs on the main loop, one request at a time per connection;
//   different connections run side by side. It must call `reply` once, from
//   any thread, now or later; further calls are ignored. An exception that
//   escapes it answers the request with ok false and the exception's text.
// - `onConnectionCount` (set before `start`) runs on the I/O thread with the
//   number of open connections whenever it changes, and with 0 at `stop`. It
//   must not call `stop`.
// - Ownership: the server owns the listener and its connections. The handler
//   is shared with the tasks posted to the main loop and so may outlive the
//   server; `mainLoop` must outlive the server.
// - After `stop` (synchronous; the destructor stops too) every connection is
//   closed, the socket file is gone, and a reply still to come is dropped: the
//   tool's effect stands, its answer goes nowhere. The server may be started
//   again.

#include "LiveAgentKit/AgentMainLoop.h"
#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/UniqueFd.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace velarion {

class AgentSocketConnection;

class AgentSocketServer {
public:
    using Reply = std::function<void(AgentResponse)>;
    using Handler = std::function<void(AgentRequest request, Reply reply)>;
    using ConnectionCount = std::function<void(std::size_t openConnections)>;

    AgentSocketServer(std::string path, AgentMainLoop& mainLoop, Handler handler);
    ~AgentSocketServer();
    AgentSocketServer(const AgentSocketServer&) = delete;
    AgentSocketServer& operator=(const AgentSocketServer&) = delete;

    const std::string& path() const { return path_; }
    bool isListening() const { return thread_.joinable(); }

    void setOnConnectionCount(ConnectionCount onConnectionCount);

    // Creates the socket's folder (mode 0700, intermediate ones included),
    // replaces any stale file at the path, and listens with mode 0600. Throws
    // AgentSocketError (a bad path, or the socket calls' failures in words)
    // or std::filesystem::filesystem_error (the folder). After a failure
    // nothing is held; a file may be left at the path for the next start.
    // Does nothing while listening.
    void start();
    // Closes the listener and every connection, then removes the socket file.
    // Returns once the I/O thread has ended. Does nothing when not listening.
    void stop();

private:
    struct Inbox;
    using ConnectionID = std::uint64_t;

    void run();
    void acceptClient();
    void startRequest(ConnectionID connection, AgentRequest request);
    void deliverReplies();
    void sweepClosedConnections();
    void shutDown();

    const std::string path_;
    AgentMainLoop& mainLoop_;
    const std::shared_ptr<const Handler> handler_;
    ConnectionCount onConnectionCount_;

    // Owned by the I/O thread while it runs, by the owning thread otherwise.
    UniqueFd listener_;
    std::shared_ptr<Inbox> inbox_;
    std::map<ConnectionID, std::unique_ptr<AgentSocketConnection>> connections_;
    ConnectionID nextConnectionID_ = 1;
    std::size_t openConnections_ = 0;
    bool acceptPaused_ = false; // out of descriptors

    std::thread thread_;
};

} // namespace velarion
