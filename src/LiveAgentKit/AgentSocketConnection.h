#pragma once
// One accepted client of the agent socket server; internal to the server.
//
// It cuts what it reads into lines and keeps the requests of its client
// strictly serial: a request is handed to `startRequest` only once the one
// before it has been answered through `finish`, so responses leave in
// request order. A line that isn't a request is answered at once (it may
// overtake a request still running) and the connection stays open. Output
// that the socket won't take yet is kept and sent when the socket is
// writable again; the descriptor is non-blocking, so nothing here waits.
//
// Thread: the server's I/O thread only. Lifetime: open until `close`, then
// closed for good; after that every call does nothing, and a response that
// arrives through `finish` is dropped. `onClose` runs once, inside `close`,
// and must not destroy the connection (the server sweeps closed ones later).

#include "LiveAgentKit/AgentMessages.h"
#include "LiveAgentKit/UniqueFd.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

namespace velarion {

class AgentSocketConnection {
public:
    using StartRequest = std::function<void(AgentRequest)>;
    using OnClose = std::function<void()>;

    AgentSocketConnection(UniqueFd fd, StartRequest startRequest, OnClose onClose);

    int fd() const { return fd_.get(); }
    bool isClosed() const { return isClosed_; }
    // What to wait for in poll: reading always, writing while output is held
    // back; nothing once closed.
    short pollEvents() const;

    // The socket is readable (or hung up): one read, then its whole lines.
    void read();
    // The socket is writable again.
    void flushOutput();
    // The answer to the request handed out last.
    void finish(const AgentResponse& response);
    void close();

private:
    void next();
    void write(const AgentResponse& response);

    UniqueFd fd_;
    StartRequest startRequest_;
    OnClose onClose_;
    std::string buffer_; // read, not yet a whole line
    std::string output_;
    std::size_t outputOffset_ = 0; // how much of output_ has gone
    bool waitingToWrite_ = false;
    std::deque<AgentRequest> pending_;
    bool busy_ = false; // a request is with the handler
    bool isClosed_ = false;
};

} // namespace velarion
