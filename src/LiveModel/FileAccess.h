#pragma once
// Careful file reading and writing for documents and media in a package.
//
// Reading never blocks on a FIFO or device and never takes more memory than
// the caller allows. Writing is atomic: a temporary file beside the target is
// filled, flushed to the disk and renamed over the target, so a crash or a
// failure at any moment leaves either the whole old file or the whole new one.
// Failures throw std::filesystem::filesystem_error carrying the system's error.
// Thread: free functions without shared state; any thread.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

namespace velarion::fileAccess {

struct TooLarge {
    std::uintmax_t sizeBytes = 0;
};

// The whole content of a regular file, or TooLarge when it holds more than
// `maxBytes` (found from its size before anything is read).
std::variant<std::string, TooLarge> readRegularFile(const std::filesystem::path& file,
                                                    std::size_t maxBytes);

// Replaces `target` with `bytes` atomically. The parent folder must exist.
void writeAtomically(const std::filesystem::path& target, std::string_view bytes);

// Replaces `target` with a copy of the regular file `source` atomically.
void copyAtomically(const std::filesystem::path& source, const std::filesystem::path& target);

} // namespace velarion::fileAccess
