// The MCP bridge's own work per line: the tool list an agent host asks for
// when it connects, and a tool call whose arguments are checked before they
// go to the application. Both sit between the agent and a live show, so they
// must stay small beside the socket round trip.

#include "LiveAgentKit/MCPServer.h"

#include <benchmark/benchmark.h>
#include <string>

namespace velarion::bench {

namespace {

MCPServer makeServer() {
    return MCPServer([](const std::string&, const JSONValue&) {
        return AgentResponse::success(1, JSONValue::Object{{"ok", true}});
    });
}

void toolsList(benchmark::State& state) {
    const MCPServer server = makeServer();
    const std::string line = R"({"jsonrpc":"2.0","id":2,"method":"tools/list","params":{}})";
    std::size_t bytes = 0;
    for (auto _ : state) {
        const auto reply = server.handle(line);
        bytes = reply->size();
        benchmark::DoNotOptimize(reply);
    }
    state.counters["reply_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(toolsList)->Unit(benchmark::kMicrosecond);

// add_cue has the largest flat schema; the geometry and the routing list
// take the checker into nested objects and arrays.
void toolsCallAddCue(benchmark::State& state) {
    const MCPServer server = makeServer();
    const std::string line =
        R"({"jsonrpc":"2.0","id":3,"method":"tools/call","params":{"name":"add_cue",)"
        R"("arguments":{"type":"video","name":"Walk-in loop","media":"Loop","layer":"background",)"
        R"("loops":true,"fade_in":2,"level":0.8,"follow":"with_previous",)"
        R"("visual_output_ids":["HDMI-1","test-window"],)"
        R"("geometry":{"scale":0.5,"x":-0.25,"y":0.25,"rotation":0,"opacity":1}}}})";
    for (auto _ : state) {
        benchmark::DoNotOptimize(server.handle(line));
    }
}
BENCHMARK(toolsCallAddCue)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace velarion::bench

BENCHMARK_MAIN();
