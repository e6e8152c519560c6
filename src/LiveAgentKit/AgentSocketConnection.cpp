#include "LiveAgentKit/AgentSocketConnection.h"

#include "LiveAgentKit/AgentLine.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <utility>
#include <variant>

namespace velarion {

AgentSocketConnection::AgentSocketConnection(UniqueFd fd, StartRequest startRequest,
                                             OnClose onClose)
    : fd_(std::move(fd)), startRequest_(std::move(startRequest)), onClose_(std::move(onClose)) {}

short AgentSocketConnection::pollEvents() const {
    if (isClosed_)
        return 0;
    return static_cast<short>(waitingToWrite_ ? POLLIN | POLLOUT : POLLIN);
}

void AgentSocketConnection::read() {
    if (isClosed_)
        return;
    char chunk[agentLine::readChunkBytes];
    const ssize_t count = ::recv(fd_.get(), chunk, sizeof chunk, 0);
    if (count < 0) {
        if (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK)
            return;
        close();
        return;
    }
    if (count == 0) {
        close();
        return;
    }
    buffer_.append(chunk, static_cast<std::size_t>(count));
    while (std::optional<std::string> line = agentLine::takeLine(buffer_)) {
        if (line->empty())
            continue;
        auto decoded = agentLine::decodeRequest(*line);
        if (auto* request = std::get_if<AgentRequest>(&decoded)) {
            pending_.push_back(std::move(*request));
        } else {
            write(std::get<AgentResponse>(decoded));
            // A failed write closes the connection and empties the buffer.
            if (isClosed_)
                return;
        }
    }
    next();
}

void AgentSocketConnection::next() {
    if (isClosed_ || busy_ || pending_.empty())
        return;
    busy_ = true;
    AgentRequest request = std::move(pending_.front());
    pending_.pop_front();
    startRequest_(std::move(request));
}

void AgentSocketConnection::finish(const AgentResponse& response) {
    if (!isClosed_)
        write(response);
    busy_ = false;
    next();
}

void AgentSocketConnection::write(const AgentResponse& response) {
    if (isClosed_)
        return;
    const std::optional<std::string> line = agentLine::encode(response);
    if (!line)
        return;
    output_ += *line;
    flushOutput();
}

void AgentSocketConnection::flushOutput() {
    if (isClosed_)
        return;
    while (outputOffset_ < output_.size()) {
        const ssize_t sent = ::send(fd_.get(), output_.data() + outputOffset_,
                                    output_.size() - outputOffset_, MSG_NOSIGNAL);
        if (sent > 0) {
            outputOffset_ += static_cast<std::size_t>(sent);
        } else if (sent < 0 && errno == EINTR) {
            continue;
        } else if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            waitingToWrite_ = true;
            return;
        } else {
            close();
            return;
        }
    }
    output_.clear();
    outputOffset_ = 0;
    waitingToWrite_ = false;
}

void AgentSocketConnection::close() {
    if (isClosed_)
        return;
    isClosed_ = true;
    waitingToWrite_ = false;
    pending_.clear();
    buffer_.clear();
    output_.clear();
    outputOffset_ = 0;
    fd_.reset();
    if (onClose_)
        onClose_();
}

} // namespace velarion
