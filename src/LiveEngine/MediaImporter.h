#pragma once
// MediaImporter: how files become library items. Each file is classified by
// its extension, copied into the package folder of its kind under a free
// name ("Intro 2.mov" after "Intro.mov"), and named after its file; decks go
// to the deck importer whole. A failure is one sentence for that file and
// the next one goes on.
//
// Contract.
// - Stateless; `importFiles` runs on a worker thread (never the main loop)
//   and never throws. `progress`, when given, is called on that thread after
//   each file and during long copies.
// - Nothing half-copied stays in the package: a file is filled under a hidden
//   temporary name in its folder and linked to its final name only when
//   whole, so a failure, a cancel or a crash leaves at most a hidden
//   ".importing" file, which `removeLeftovers` clears. The batch's copies
//   are flushed to the disk before `importFiles` returns, so the show never
//   names a file that a power cut could leave short.
// - `cancelled` turning true stops the batch between two chunks of a copy;
//   the items finished so far come back, the rest are left out.

#include "LiveEngine/ports/MediaImportTools.h"
#include "LiveModel/MediaItem.h"
#include "LiveModel/ShowPackage.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace velarion {

struct ImportFailure {
    std::string fileName;
    std::string reason;
    friend bool operator==(const ImportFailure&, const ImportFailure&) = default;
};

struct ImportResult {
    std::vector<MediaItem> items;
    std::vector<ImportFailure> failures;
    bool cancelled = false; // stopped before the last file
    friend bool operator==(const ImportResult&, const ImportResult&) = default;
};

struct ImportProgress {
    int filesDone = 0;
    int fileCount = 0;
    std::int64_t bytesDone = 0;
    std::int64_t byteCount = 0; // of the files that could be measured
    std::string currentFile;    // last path component
    // 0 to 1, by bytes where known, else by files.
    double fraction() const;
    friend bool operator==(const ImportProgress&, const ImportProgress&) = default;
};

namespace mediaImporter {

using Progress = std::function<void(const ImportProgress&)>;

ImportResult importFiles(const std::vector<std::filesystem::path>& files, const ShowPackage& into,
                         const MediaImportTools& tools, const std::atomic<bool>& cancelled,
                         const Progress& progress = {});

// The item's name: the file name without extension, or the kind's word
// ("Video", "Image", "Sound") when that is a machine name.
std::string itemName(const std::filesystem::path& file, MediaKind kind);

// Copies a regular file into Media/<folder>/ under a free name and returns
// the stored name. `copied` gets the bytes written so far. Throws
// std::filesystem::filesystem_error, or ImportCancelled; either way nothing
// of this copy is left behind.
std::string copyIn(const std::filesystem::path& source, const ShowPackage& package,
                   const std::string& folder, const std::atomic<bool>& cancelled,
                   const std::function<void(std::int64_t copied)>& copied = {});

// The operator's sentence for a failed copy.
std::string reason(const std::exception& error);

// Removes hidden temporary files a crashed import left in the package.
void removeLeftovers(const ShowPackage& package);

} // namespace mediaImporter
} // namespace velarion
