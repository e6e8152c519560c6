#include "LiveAgentKit/AgentSocketClient.h"

#include "LiveAgentKit/AgentLine.h"
#include "LiveAgentKit/AgentSocketError.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <utility>

namespace velarion {

AgentSocketClient::AgentSocketClient(std::string path) : path_(std::move(path)) {}

AgentResponse AgentSocketClient::call(std::string_view tool, const JSONValue& arguments,
                                      int timeoutSeconds) {
    try {
        try {
            return send(tool, arguments, timeoutSeconds);
        } catch (const AgentSocketError& error) {
            if (!error.is<agentSocketError::Closed>())
                throw;
        }
        // The connection died before the request went out, so it never ran.
        disconnect();
        return send(tool, arguments, timeoutSeconds);
    } catch (...) {
        disconnect();
        throw;
    }
}

void AgentSocketClient::disconnect() {
    fd_.reset();
    buffer_.clear();
}

bool AgentSocketClient::waitForHangUp(double timeoutSeconds) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(
                           std::chrono::duration<double>(std::max(timeoutSeconds, 0.0)));
    while (fd_.isOpen()) {
        char chunk[agentLine::readChunkBytes];
        const ssize_t count = ::recv(fd_.get(), chunk, sizeof chunk, MSG_DONTWAIT);
        if (count > 0 || (count < 0 && errno == EINTR))
            continue;
        if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            disconnect();
            return true;
        }
        const double leftMilliseconds =
            std::chrono::duration<double, std::milli>(deadline - Clock::now()).count();
        if (leftMilliseconds <= 0)
            return false;
        pollfd polled{fd_.get(), POLLIN, 0};
        ::poll(&polled, 1, static_cast<int>(std::ceil(std::min(leftMilliseconds, 60000.0))));
    }
    return true;
}

AgentResponse AgentSocketClient::send(std::string_view tool, const JSONValue& arguments,
                                      int timeoutSeconds) {
    connectIfNeeded();
    const timeval timeout{std::max(timeoutSeconds, 1), 0};
    ::setsockopt(fd_.get(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    ::setsockopt(fd_.get(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);

    const std::int64_t id = nextID_++;
    const std::optional<std::string> line =
        agentLine::encode(AgentRequest{id, std::string(tool), arguments});
    if (!line) {
        throw AgentSocketError(
            agentSocketError::System{"The request's arguments couldn't be written as JSON."});
    }
    writeAll(*line);

    for (;;) {
        while (std::optional<std::string> received = agentLine::takeLine(buffer_)) {
            AgentResponse response = agentLine::decodeResponse(*received);
            if (response.id == id)
                return response;
        }
        char chunk[agentLine::readChunkBytes];
        const ssize_t count = ::recv(fd_.get(), chunk, sizeof chunk, 0);
        if (count > 0) {
            buffer_.append(chunk, static_cast<std::size_t>(count));
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            throw AgentSocketError(agentSocketError::TimedOut{});
        } else {
            throw AgentSocketError(agentSocketError::ResponseLost{});
        }
    }
}

void AgentSocketClient::writeAll(const std::string& bytes) {
    std::size_t offset = 0;
    while (offset < bytes.size()) {
        const ssize_t sent =
            ::send(fd_.get(), bytes.data() + offset, bytes.size() - offset, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 1)
            throw AgentSocketError(agentSocketError::Closed{});
        offset += static_cast<std::size_t>(sent);
    }
}

void AgentSocketClient::connectIfNeeded() {
    if (fd_.isOpen())
        return;
    const agentSocketPath::Address address = agentSocketPath::makeAddress(path_);
    UniqueFd fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd.isOpen()) {
        throw AgentSocketError(agentSocketError::System{std::string("Couldn't open a socket: ") +
                                                        std::strerror(errno)});
    }
    if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(&address.address), address.length) !=
        0) {
        throw AgentSocketError(agentSocketError::NotRunning{});
    }
    fd_ = std::move(fd);
    buffer_.clear();
}

} // namespace velarion
