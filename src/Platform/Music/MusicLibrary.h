#pragma once
// MusicLibrary: searches the operator's music folder (XDG music directory)
// for songs to put in a `music` cue: by file name, and by the folders the
// file sits in (artist and album folders). The folder is listed on a worker
// thread and kept for a minute, so repeated searches while typing cost a
// scan of names in memory.
//
// Contract.
// - `search` is called on the main thread and never blocks it; `done` runs
//   once on the main loop with at most 25 songs, references as file URIs.
// - Destruction waits for a listing in progress; no `done` runs after it.

#include "LiveEngine/StreamRemote.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/StreamTasks.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace velarion {

class MusicLibrary {
public:
    static constexpr std::size_t resultLimit = 25;
    static constexpr double cacheSeconds = 60;

    MusicLibrary(Scheduler& scheduler, std::filesystem::path folder = standardFolder());
    ~MusicLibrary();
    MusicLibrary(const MusicLibrary&) = delete;
    MusicLibrary& operator=(const MusicLibrary&) = delete;

    // $XDG_MUSIC_DIR as the user's dirs file says, else ~/Music.
    static std::filesystem::path standardFolder();
    void searchMusicLibrary(const std::string& query, std::function<void(std::vector<StreamTrackResult>)> done);
    // The matching part, on a list already made.
    static std::vector<StreamTrackResult> matching(const std::vector<StreamTrackResult>& songs,
                                                   const std::string& query);

private:
    Scheduler& scheduler_;
    std::filesystem::path folder_;
    std::mutex lock_;
    std::vector<StreamTrackResult> songs_;
    double listedAt_ = -1e9;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    ThreadStreamTasks workers_; // last: joined before the rest goes
};

} // namespace velarion
