#pragma once
// NDILibrary: finds and loads the NDI runtime once per process and reports
// what it found. Without a runtime nothing else changes: feeds and NDI
// inputs report it, local playback goes on.
//
// Contract.
// - `status` is safe from any thread; the first call searches (beside the
//   program, then NDI_RUNTIME_DIR_V6, then the usual library folders) and
//   the answer is kept: a runtime installed later needs a restart.
// - `search` runs one search over the given files, without keeping the
//   answer; the bridge keeps the first runtime that loads.

#include "LiveEngine/ports/NetworkFeeds.h"

#include <filesystem>
#include <vector>

namespace velarion::NDILibrary {

inline constexpr const char* fileName = "libndi.so.6";
inline constexpr const char* availableWords = "NDI send and receive are available.";
inline constexpr const char* notInstalledWords =
    "The NDI runtime is not installed. Local show playback is still available.";
inline constexpr const char* couldNotLoadWords = "NDI could not load: ";

NDIRuntimeStatus status();
std::vector<std::filesystem::path> candidates();
NDIRuntimeStatus search(const std::vector<std::filesystem::path>& candidates);

} // namespace velarion::NDILibrary
