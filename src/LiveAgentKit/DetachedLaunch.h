#pragma once
// Starts a program that lives on by itself: the MCP bridge opening the
// application for an agent. The program gets its own session (no terminal,
// no signals meant for the bridge's process group), standard streams on
// /dev/null (the bridge's own are the MCP pipes), no descriptor of ours,
// default signal handling, and a parent that is not the bridge, so it is
// never left a zombie of a bridge that doesn't wait for it.
//
// Contract.
// - `launchDetached` returns once the program has been executed, or throws
//   std::system_error with the reason it couldn't be (a missing or
//   non-executable file among them). Safe in a program with threads: the
//   children it forks make only async-signal-safe calls.
// - `DetachedProcess` watches the program without owning it: destroying the
//   handle leaves the program running. One thread at a time.

#include "LiveAgentKit/UniqueFd.h"

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace velarion {

class DetachedProcess {
public:
    pid_t pid() const { return pid_; }
    // True once the program has ended. Without a way to watch it (a kernel
    // without process descriptors) this stays false.
    bool hasEnded() const;

private:
    DetachedProcess(pid_t pid, UniqueFd pidFd, bool endedAlready)
        : pid_(pid), pidFd_(std::move(pidFd)), endedAlready_(endedAlready) {}

    pid_t pid_;
    UniqueFd pidFd_; // readable once the process has ended; -1 when not watched
    bool endedAlready_; // gone before it could be watched

    friend DetachedProcess launchDetached(const std::string&, const std::vector<std::string>&);
};

// Runs `program` with no arguments beyond its name and with `environment`
// ("NAME=value" entries) as its whole environment.
DetachedProcess launchDetached(const std::string& program,
                               const std::vector<std::string>& environment);

// This process's environment with `name` set to `value`.
std::vector<std::string> environmentWith(const std::string& name, const std::string& value);

} // namespace velarion
