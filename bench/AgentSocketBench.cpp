// The agent socket: one small call from the bridge's client through the
// socket to a handler on the main loop and back. Every tool call an agent
// makes pays this on top of the tool itself, so it should stay well under a
// millisecond (median within 0.3 ms). Beside it, the whole bridge: an MCP
// "tools/call" line checked, sent, answered and written back as a reply line.
//
// The main loop is a thread of its own that sleeps until a task is posted, as
// the application's event loop does, so the figure includes both wake-ups.

#include "LiveAgentKit/AgentMainLoop.h"
#include "LiveAgentKit/AgentSocketClient.h"
#include "LiveAgentKit/AgentSocketServer.h"
#include "LiveAgentKit/MCPBridge.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <thread>
#include <vector>

namespace velarion::bench {

namespace {

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

// Times `call` against a server answering every tool at once, and reports
// its median and 99th percentile.
template <class Call> void timeCalls(benchmark::State& state, Call call) {
    char folder[] = "/tmp/vsock-bench-XXXXXX";
    if (::mkdtemp(folder) == nullptr)
        throw std::runtime_error("mkdtemp failed");
    {
        ThreadMainLoop loop;
        AgentSocketServer server(
            std::string(folder) + "/agent.sock", loop,
            [](const AgentRequest& request, const AgentSocketServer::Reply& reply) {
                reply(AgentResponse::success(
                    request.id, JSONValue::Object{{"locked", false}, {"tool", request.tool}}));
            });
        server.start();

        std::vector<double> roundTripSeconds;
        call(server.path(), [&](auto&& once) {
            for (auto _ : state) {
                const auto start = std::chrono::steady_clock::now();
                once();
                const auto end = std::chrono::steady_clock::now();
                roundTripSeconds.push_back(std::chrono::duration<double>(end - start).count());
                state.SetIterationTime(roundTripSeconds.back());
            }
        });
        std::sort(roundTripSeconds.begin(), roundTripSeconds.end());
        auto percentileMs = [&](double fraction) {
            const auto index = static_cast<std::size_t>(fraction * (roundTripSeconds.size() - 1));
            return roundTripSeconds[index] * 1000;
        };
        state.counters["medianMs"] = percentileMs(0.5);
        state.counters["p99Ms"] = percentileMs(0.99);
    }
    std::filesystem::remove_all(folder);
}

void roundTripBenchmark(benchmark::State& state) {
    timeCalls(state, [](const std::string& path, auto&& loop) {
        AgentSocketClient client(path);
        const JSONValue arguments = JSONValue::Object{{"detail", "summary"}};
        loop([&] {
            AgentResponse response = client.call("get_state", arguments, 5);
            benchmark::DoNotOptimize(response);
        });
    });
}

void bridgeToolCallBenchmark(benchmark::State& state) {
    timeCalls(state, [](const std::string& path, auto&& loop) {
        MCPBridgeSettings settings;
        settings.socketPath = path;
        MCPBridge bridge(settings);
        const std::string line = R"({"jsonrpc":"2.0","id":4,"method":"tools/call",)"
                                 R"("params":{"name":"fire_cue","arguments":{"cue":"4"}}})";
        loop([&] {
            std::optional<std::string> reply = bridge.handle(line);
            benchmark::DoNotOptimize(reply);
        });
    });
}

} // namespace

BENCHMARK(roundTripBenchmark)
    ->Name("AgentSocket/roundTrip")
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime()
    ->Iterations(20000);

BENCHMARK(bridgeToolCallBenchmark)
    ->Name("AgentSocket/bridgeToolCall")
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime()
    ->Iterations(20000);

} // namespace velarion::bench

BENCHMARK_MAIN();
