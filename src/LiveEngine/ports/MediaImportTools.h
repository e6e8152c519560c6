#pragma once
// MediaImportTools: what an import needs from the platform besides copying:
// a decoder that tells a stored file's length, and a deck importer that turns
// a presentation into page pictures inside the package.
//
// Contract.
// - Both are called on the import's worker thread, one file at a time, and
//   must not touch the main loop. Their owner keeps them alive for as long as
//   any MediaImportQueue that holds them.
// - `durationSeconds` answers none for a file whose length can't be loaded or
//   isn't finite; it never throws.
// - `importDeck` copies the source into the package and writes its pages, and
//   returns the whole item (kind deck, fresh id). On failure it throws a
//   std::exception whose `what()` is the operator's sentence, and leaves no
//   page or copy of that deck in the package. `cancelled` turning true asks
//   it to stop early; it then throws ImportCancelled.
// - A missing tool (null) means the platform can't do that here: videos and
//   sounds get no duration, decks fail with `decksUnavailable`.
//
// Implementations: the platform's inspection and deck import; tests pass
// small doubles or the real ones.

#include "LiveModel/MediaItem.h"
#include "LiveModel/ShowPackage.h"

#include <atomic>
#include <filesystem>
#include <optional>
#include <stdexcept>

namespace velarion {

// Thrown by the parts of an import when it was cancelled midway.
struct ImportCancelled : std::runtime_error {
    ImportCancelled() : std::runtime_error("The import was cancelled.") {}
};

class MediaDurations {
public:
    virtual ~MediaDurations() = default;
    virtual std::optional<double> durationSeconds(const std::filesystem::path& file) = 0;
};

class DeckImporting {
public:
    virtual ~DeckImporting() = default;
    virtual MediaItem importDeck(const std::filesystem::path& source, const ShowPackage& package,
                                 const std::atomic<bool>& cancelled) = 0;
};

struct MediaImportTools {
    static constexpr const char* decksUnavailable =
        "Presentations can't be imported on this computer.";
    MediaDurations* durations = nullptr;
    DeckImporting* decks = nullptr;
};

} // namespace velarion
