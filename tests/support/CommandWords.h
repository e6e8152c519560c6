#pragma once
// An engine command in a few words, so tests can compare lists of the
// commands that controls sent: "go", "panic", "pauseAll", "resumeAll",
// "clear everything 1.0"; "other" for the rest.

#include "LiveEngine/EngineCommand.h"

#include <cstdio>
#include <string>

namespace velarion::testing {

inline std::string commandWords(const EngineCommand& command) {
    if (std::holds_alternative<command::Go>(command)) return "go";
    if (std::holds_alternative<command::Panic>(command)) return "panic";
    if (std::holds_alternative<command::PauseAll>(command)) return "pauseAll";
    if (std::holds_alternative<command::ResumeAll>(command)) return "resumeAll";
    if (const auto* clear = std::get_if<command::Clear>(&command)) {
        char fade[32];
        std::snprintf(fade, sizeof fade, "%.1f", clear->fadeSeconds);
        return "clear " + std::string(toString(clear->target)) + " " + fade;
    }
    return "other";
}

} // namespace velarion::testing
