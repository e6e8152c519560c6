#pragma once
// VELARION_CHECK(condition, message): the one live-safe assertion.
//
// An internal inconsistency (never bad input: that gets a sentence) is fatal
// in debug builds and whenever fatal checks are on; tests turn them on with
// the environment variable VELARION_FATAL_CHECKS=1. In a release build it is
// reported through the installed reporter (the application logs a warning)
// and the macro yields false, so the caller takes the safe path:
//
//     if (!VELARION_CHECK(run != nullptr, "finished a run that isn't there")) return;
//
// Thread: any. The reporter is installed once at start-up, before any check
// can fail, and must itself be safe to call from any thread.

#include <functional>
#include <string_view>

namespace velarion::liveCheck {

using Reporter = std::function<void(std::string_view message)>;

void setReporter(Reporter reporter);
bool isFatal();
// Reports or aborts; returns false for the caller's safe path.
bool failed(const char* expression, std::string_view message, const char* file, int line);

} // namespace velarion::liveCheck

#define VELARION_CHECK(condition, message)                                                        \
    (static_cast<bool>(condition)                                                                  \
         ? true                                                                                    \
         : ::velarion::liveCheck::failed(#condition, (message), __FILE__, __LINE__))
