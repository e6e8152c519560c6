#pragma once
// MusicLibrary: searches the operator's music folder (XDG music directory)
// for songs to put in a `music` cue, by their tags (title, artist, album)
// and by file name. The folder is walked and the tags read on a worker
// thread; the tags are cached by path and modification time, so a rescan
// costs a walk of the folder and reads only the files that changed. The
// folder is walked again when its listing is older than `rescanSeconds`,
// so the searches of one query being typed share one walk.
//
// Contract.
// - `searchMusicLibrary` is called on the main thread and never blocks it;
//   `done` runs once on the main loop with at most 25 songs, references as
//   file URIs, in the order of artist, album and title.
// - Destruction stops a walk in progress at its next file and waits for
//   it; no `done` runs after it.
// - `tagReads` may be read from any thread.

#include "LiveEngine/StreamRemote.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/StreamTasks.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace velarion {

// One song of the library as the search sees it.
struct LibrarySong {
    StreamTrackResult song; // title and artist from the tags, else from the file's name and folder
    std::string album;
    std::string fileName;
};

class MusicLibrary {
public:
    static constexpr std::size_t resultLimit = 25;
    static constexpr double rescanSeconds = 10;

    MusicLibrary(Scheduler& scheduler, std::filesystem::path folder = standardFolder());
    ~MusicLibrary();
    MusicLibrary(const MusicLibrary&) = delete;
    MusicLibrary& operator=(const MusicLibrary&) = delete;

    // $XDG_MUSIC_DIR as the user's dirs file says, else ~/Music.
    static std::filesystem::path standardFolder();
    void searchMusicLibrary(const std::string& query, std::function<void(std::vector<StreamTrackResult>)> done);
    // The songs whose title, artist, album or file name hold every word of
    // the query, in any case; none for a blank query.
    static std::vector<StreamTrackResult> matching(const std::vector<LibrarySong>& songs, const std::string& query);
    // Files whose tags were read since the library was made.
    std::size_t tagReads() const { return tagReads_.load(); }

private:
    struct Cached {
        std::filesystem::file_time_type modified;
        LibrarySong song;
    };
    // Walks the folder, reading the tags of new and changed files; false
    // when cancelled part way (the cache keeps what was read).
    bool rescan(const StreamCancel& cancel);

    Scheduler& scheduler_;
    std::filesystem::path folder_;
    std::mutex lock_; // the cache and the listing; held by one walk or search at a time
    std::map<std::filesystem::path, Cached> cache_;
    std::vector<LibrarySong> songs_;
    double listedAt_ = -1e9;
    std::atomic<std::size_t> tagReads_{0};
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    ThreadStreamTasks workers_; // last: joined before the rest goes
};

} // namespace velarion
