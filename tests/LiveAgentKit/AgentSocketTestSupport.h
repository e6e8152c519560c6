#pragma once
// What the socket tests share: a private folder, a main loop run by a thread
// of its own, a raw peer that speaks bytes rather than records, and handlers.

#include "ChildProcess.h"
#include "TempFolder.h"

#include "LiveAgentKit/AgentMainLoop.h"
#include "LiveAgentKit/AgentSocketServer.h"
#include "LiveAgentKit/UniqueFd.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velarion::socketTest {

// Long enough never to cut a slow run short; only a hang reaches it.
inline constexpr auto hangGuard = std::chrono::seconds(20);

// Short, for socket paths.
struct TempFolder : testing::TempFolder {
    TempFolder() : testing::TempFolder("vsock") {}
};

// The main loop: tasks run in order on one thread until the loop is destroyed.
class ThreadMainLoop : public AgentMainLoop {
public:
    ThreadMainLoop() : thread_([this] { run(); }) {}
    ~ThreadMainLoop() override {
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }

    void post(Task task) override {
        {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        wake_.notify_one();
    }

private:
    void run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            wake_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
            if (stopping_)
                return;
            Task task = std::move(tasks_.front());
            tasks_.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Task> tasks_;
    bool stopping_ = false;
    std::thread thread_;
};

// A main loop and a private folder for each test.
struct SocketFixture : ::testing::Test {
    ThreadMainLoop loop;
    TempFolder temp;
};

// Answers every request at once with its own arguments.
inline AgentSocketServer::Handler echoHandler() {
    return [](const AgentRequest& request, const AgentSocketServer::Reply& reply) {
        reply(AgentResponse::success(request.id, request.arguments));
    };
}

// Keeps each request and its reply for the test to answer when it likes.
class HeldRequests {
public:
    AgentSocketServer::Handler handler() {
        return [this](AgentRequest request, AgentSocketServer::Reply reply) {
            // Told under the lock: a test that sees the request may end and
            // destroy this at once, so nothing may touch it after the unlock.
            const std::lock_guard lock(mutex_);
            held_.push_back({std::move(request), std::move(reply)});
            changed_.notify_all();
        };
    }

    // Waits until `count` requests have arrived in all; false on a hang.
    bool waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, hangGuard, [&] { return held_.size() >= count; });
    }
    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return held_.size();
    }
    AgentRequest request(std::size_t index) {
        const std::lock_guard lock(mutex_);
        return held_.at(index).request;
    }
    // Answers the index-th request with its arguments.
    void answer(std::size_t index) {
        std::unique_lock lock(mutex_);
        const JSONValue arguments = held_.at(index).request.arguments;
        lock.unlock();
        answer(index, arguments);
    }
    // Answers the index-th request with `result`.
    void answer(std::size_t index, JSONValue result) {
        std::unique_lock lock(mutex_);
        Held& held = held_.at(index);
        AgentResponse response = AgentResponse::success(held.request.id, std::move(result));
        AgentSocketServer::Reply reply = held.reply;
        lock.unlock();
        reply(std::move(response));
    }

private:
    struct Held {
        AgentRequest request;
        AgentSocketServer::Reply reply;
    };
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Held> held_;
};

// A client that writes and reads raw bytes, to put on the wire what the
// real client never would.
class RawPeer {
public:
    explicit RawPeer(const std::string& path)
        : RawPeer(UniqueFd(::socket(AF_UNIX, SOCK_STREAM, 0)), path) {}
    // Connects a socket made earlier.
    RawPeer(UniqueFd fd, const std::string& path) : fd_(std::move(fd)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (::connect(fd_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("connect failed");
    }

    void send(const std::string& bytes) {
        std::size_t offset = 0;
        while (offset < bytes.size()) {
            const ssize_t sent =
                ::send(fd_.get(), bytes.data() + offset, bytes.size() - offset, MSG_NOSIGNAL);
            if (sent <= 0)
                throw std::runtime_error("send failed");
            offset += static_cast<std::size_t>(sent);
        }
    }

    // The next line without its line feed; absent when none comes within
    // `waitSeconds` or the server hung up.
    std::optional<std::string> readLine(double waitSeconds = 20) {
        return testing::readLineFrom(fd_.get(), buffer_, waitSeconds);
    }

private:
    UniqueFd fd_;
    std::string buffer_;
};

} // namespace velarion::socketTest
