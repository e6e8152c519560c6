#include "LiveAgentKit/MCPBridge.h"

#include "LiveAgentKit/AgentSocketError.h"
#include "LiveAgentKit/DetachedLaunch.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <istream>
#include <ostream>
#include <system_error>
#include <thread>
#include <utility>

namespace velarion {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view launchTool = "launch_app";
constexpr std::string_view restartTool = "restart_app";

// Tools that copy files or decks into a show, or write a whole package.
constexpr std::array<std::string_view, 4> slowTools = {"import_media", "new_show", "open_show",
                                                       "save_show"};

std::string secondsText(double seconds) {
    return JSONValue(seconds).stringValue().value_or("?") + (seconds == 1 ? " second" : " seconds");
}

Clock::time_point after(double seconds) {
    return Clock::now() +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

AgentResponse failed(std::string words) { return AgentResponse::failure(0, std::move(words)); }

AgentResponse unreadable(const AgentDecodeError& error) {
    return failed(std::string("Velarion's answer couldn't be read (") + error.what() +
                  "). The action may have happened; read get_show before retrying it.");
}

} // namespace

std::string mcpBridge::applicationBesideBridge() {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || self.empty())
        return {};
    return (self.parent_path() / "velarion").string();
}

MCPBridge::MCPBridge(MCPBridgeSettings settings)
    : settings_(std::move(settings)), client_(settings_.socketPath),
      server_([this](const std::string& tool, const JSONValue& arguments) {
          return call(tool, arguments);
      }) {}

std::optional<std::string> MCPBridge::handle(std::string_view line) { return server_.handle(line); }

bool MCPBridge::serve(std::istream& input, std::ostream& output) {
    std::string line;
    while (std::getline(input, line)) {
        if (const std::optional<std::string> reply = handle(line)) {
            output << *reply << '\n';
            output.flush();
            if (!output)
                return false;
        }
    }
    return true;
}

AgentResponse MCPBridge::call(const std::string& tool, const JSONValue& arguments) {
    try {
        if (tool == launchTool)
            return launch(arguments);
        if (tool == restartTool)
            return restart(arguments);
        return forward(tool, arguments, timeoutFor(tool));
    } catch (const std::exception& error) {
        return failed(error.what());
    }
}

int MCPBridge::timeoutFor(std::string_view tool) const {
    const bool slow = std::find(slowTools.begin(), slowTools.end(), tool) != slowTools.end();
    return slow ? settings_.slowCallTimeoutSeconds : settings_.callTimeoutSeconds;
}

AgentResponse MCPBridge::forward(const std::string& tool, const JSONValue& arguments,
                                 int timeoutSeconds) {
    try {
        return client_.call(tool, arguments, timeoutSeconds);
    } catch (const AgentSocketError& error) {
        return failed(error.errorDescription());
    } catch (const AgentDecodeError& error) {
        return unreadable(error);
    }
}

AgentResponse MCPBridge::launch(const JSONValue& arguments) {
    // Only "nothing listens" is cured by opening the application: a bad path
    // stays bad, and an application that doesn't answer is already open.
    try {
        return client_.call(launchTool, arguments, settings_.callTimeoutSeconds);
    } catch (const AgentSocketError& error) {
        if (!error.is<agentSocketError::NotRunning>())
            return failed(error.errorDescription());
    } catch (const AgentDecodeError& error) {
        return unreadable(error);
    }

    const std::string& program = settings_.applicationPath;
    if (program.empty()) {
        return failed("Couldn't find the velarion program beside velarion-mcp. Open Velarion "
                      "yourself, then call launch_app again.");
    }
    std::optional<DetachedProcess> opened;
    try {
        // The application listens where this bridge calls, whichever way the
        // bridge found its path.
        opened = launchDetached(
            program, environmentWith(agentSocketPath::environmentVariable, settings_.socketPath));
    } catch (const std::system_error& error) {
        return failed("Couldn't open Velarion (" + program + "): " +
                      std::strerror(error.code().value()) +
                      ". Open it yourself, then call launch_app again.");
    }

    Wait outcome = waitUntilAnswering(settings_.launchWaitSeconds, arguments, &*opened);
    if (AgentResponse* answer = std::get_if<AgentResponse>(&outcome))
        return std::move(*answer);
    if (std::holds_alternative<Ended>(outcome)) {
        return failed("Velarion closed while it was starting. Open it yourself to see what went "
                      "wrong, then call launch_app again.");
    }
    return failed("Velarion was opened but its agent control didn't answer within " +
                  secondsText(settings_.launchWaitSeconds) +
                  ". Check Settings → Agent control for connection errors, then call launch_app "
                  "again.");
}

AgentResponse MCPBridge::restart(const JSONValue& arguments) {
    AgentResponse agreed = forward(std::string(restartTool), arguments, settings_.callTimeoutSeconds);
    if (!agreed.ok)
        return agreed;

    // The application answers first and quits a moment later, so until the
    // connection closes a call would still reach the old one.
    if (!client_.waitForHangUp(settings_.quitWaitSeconds)) {
        client_.disconnect();
        return failed("Velarion agreed to restart but hadn't closed after " +
                      secondsText(settings_.quitWaitSeconds) +
                      ". Call get_state to see whether it is still running before trying again.");
    }
    if (std::holds_alternative<AgentResponse>(
            waitUntilAnswering(settings_.restartWaitSeconds, JSONValue::Object{}, nullptr)))
        return agreed;
    return failed("Velarion closed to restart but didn't answer again within " +
                  secondsText(settings_.restartWaitSeconds) + ". Call launch_app to open it.");
}

MCPBridge::Wait MCPBridge::waitUntilAnswering(double seconds, const JSONValue& arguments,
                                              const DetachedProcess* opened) {
    const Clock::time_point deadline = after(seconds);
    std::optional<Clock::time_point> endedGiveUp;
    for (;;) {
        try {
            return client_.call(launchTool, arguments, settings_.probeTimeoutSeconds);
        } catch (const AgentSocketError&) {
            // Not listening yet, or listening but not yet answering.
        } catch (const AgentDecodeError&) {
        }
        // A program that hands over to another process and exits (a wrapper
        // script) ends too, so the socket gets a moment before that counts.
        if (opened != nullptr && !endedGiveUp && opened->hasEnded())
            endedGiveUp = after(settings_.endedGraceSeconds);
        const Clock::time_point now = Clock::now();
        if (endedGiveUp && now >= *endedGiveUp)
            return Ended{};
        if (now >= deadline)
            return GaveUp{};
        std::this_thread::sleep_for(
            std::min<Clock::duration>(deadline - now, std::chrono::duration_cast<Clock::duration>(
                                                          std::chrono::duration<double>(
                                                              settings_.pollIntervalSeconds))));
    }
}

} // namespace velarion
