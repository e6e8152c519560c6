#pragma once
// The operator's words for failures and sizes, shared by the application
// model's status line and its alerts.
//
// Thread: pure functions; any thread.

#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>

namespace velarion {

// One short phrase for a failure: a show package's own sentence, the
// system's words for a file-system error ("Permission denied"), or the
// sentence a file operation of ours gave; otherwise `what()`.
std::string errorText(const std::exception& error);

// A size as a file manager shows it, in powers of 1000: "Zero KB",
// "1 byte", "940 bytes", "12 KB", "3.4 MB", "1.25 GB".
std::string fileByteCountText(std::int64_t bytes);

// The file name without its extension: "Gala" for ".../Gala.velarion".
std::string displayName(const std::filesystem::path& location);

// The absolute path with "." and ".." resolved and no trailing separator;
// links are not followed. Locations are compared in this form.
std::filesystem::path standardized(const std::filesystem::path& location);

} // namespace velarion
