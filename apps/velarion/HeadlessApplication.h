#pragma once
// HeadlessApplication: Velarion without a console. It builds the whole
// application on the platform's adapters, opens the show it was given or
// reopens the one a crash left open, and runs until a signal or the agent
// asks it to quit. What the operator would read on the console it writes to
// standard output, one line each: "Status: …" for the status line and
// "Log: …" for every new line of the show log.
//
// Contract: one instance, on the main thread, after the Qt application.
// `run` returns the process's exit code once the quit is done.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

namespace velarion {

class AppModel;
class Preferences;
class Scheduler;

struct AgentGrants {
    bool run = false;
    bool edit = false;
};

// The grants of "--allow-agent=" and a comma-separated list of "run",
// "edit", or "none"; no value for any other word.
std::optional<AgentGrants> parseAgentGrants(std::string_view list);

struct HeadlessOptions {
    std::optional<std::filesystem::path> show;
    // "--allow-agent=run,edit": the operator's two agent switches, set and
    // kept in the preferences as the console's Settings would; none leaves
    // them as they are.
    std::optional<AgentGrants> agentGrants;
    // For the process tests: title edits "Burst N", eight 50 ms apart and
    // then a pause of 1.2 s, over and over; each reported on standard output
    // as "Edited N" once it went in.
    bool editBurst = false;
    // The console, when there is one: made once the model exists, before a
    // show opens; kept until the main loop has ended.
    std::function<std::shared_ptr<void>(AppModel&, Scheduler&, Preferences&)> console;
    // "--snapshot": a snapshot run of the model, without agent, MIDI or
    // reopening; it runs instead of the main loop and gives the exit code.
    std::function<int(AppModel&, Scheduler&)> snapshot;
};

class HeadlessApplication {
public:
    explicit HeadlessApplication(HeadlessOptions options);
    ~HeadlessApplication();
    HeadlessApplication(const HeadlessApplication&) = delete;
    HeadlessApplication& operator=(const HeadlessApplication&) = delete;

    int run();

    struct Parts;

private:
    HeadlessOptions options_;
    std::unique_ptr<Parts> parts_;
};

} // namespace velarion
