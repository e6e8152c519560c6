#include "Platform/Music/MusicLibrary.h"

#include <QStandardPaths>
#include <QString>
#include <QUrl>

#include <taglib/fileref.h>
#include <taglib/tag.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <tuple>

namespace velarion {

namespace {

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool isSong(const std::filesystem::path& file) {
    static const std::set<std::string> kinds = {".mp3", ".ogg", ".oga", ".opus", ".flac", ".wav",
                                                ".m4a", ".aac", ".wma", ".aiff", ".aif"};
    return kinds.contains(lowered(file.extension().string()));
}

// Tags become one line each in the results; a line end or tab in one would
// break the row it is shown in.
std::string oneLine(const TagLib::String& text) {
    std::string line = text.to8Bit(true);
    std::replace_if(line.begin(), line.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
    const auto blank = [](unsigned char c) { return std::isspace(c) != 0; };
    line.erase(line.begin(), std::find_if_not(line.begin(), line.end(), blank));
    line.erase(std::find_if_not(line.rbegin(), line.rend(), blank).base(), line.end());
    return line;
}

// What the file's tags say, with its name and folders where they say
// nothing: music folders are laid out Artist/Album/Song.
LibrarySong describe(const std::filesystem::path& folder, const std::filesystem::path& file) {
    LibrarySong found;
    found.song.reference = QUrl::fromLocalFile(QString::fromStdString(file.string()))
                                .toString(QUrl::FullyEncoded)
                                .toStdString();
    found.fileName = file.filename().string();
    const TagLib::FileRef tags(file.c_str(), false);
    if (!tags.isNull() && tags.tag() != nullptr) {
        found.song.title = oneLine(tags.tag()->title());
        found.song.artist = oneLine(tags.tag()->artist());
        found.album = oneLine(tags.tag()->album());
    }
    const std::filesystem::path relative = file.lexically_relative(folder);
    const auto depth = std::distance(relative.begin(), relative.end());
    if (found.song.title.empty()) found.song.title = file.stem().string();
    if (found.song.artist.empty() && depth >= 2) found.song.artist = relative.begin()->string();
    if (found.album.empty() && depth >= 3) found.album = std::next(relative.begin())->string();
    return found;
}

} // namespace

std::filesystem::path MusicLibrary::standardFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::MusicLocation).toStdString();
}

MusicLibrary::MusicLibrary(Scheduler& scheduler, std::filesystem::path folder)
    : scheduler_(scheduler), folder_(std::move(folder)) {}

MusicLibrary::~MusicLibrary() = default;

std::vector<StreamTrackResult> MusicLibrary::matching(const std::vector<LibrarySong>& songs,
                                                      const std::string& query) {
    std::vector<std::string> words;
    std::string word;
    for (char c : lowered(query) + " ") {
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (!word.empty()) words.push_back(word);
            word.clear();
        } else {
            word.push_back(c);
        }
    }
    std::vector<StreamTrackResult> found;
    if (words.empty()) return found;
    for (const LibrarySong& entry : songs) {
        const std::string text =
            lowered(entry.song.title + "\n" + entry.song.artist + "\n" + entry.album + "\n" + entry.fileName);
        if (std::all_of(words.begin(), words.end(), [&](const std::string& w) { return text.find(w) != std::string::npos; }))
            found.push_back(entry.song);
        if (found.size() == resultLimit) break;
    }
    return found;
}

bool MusicLibrary::rescan(const StreamCancel& cancel) {
    std::map<std::filesystem::path, Cached> kept;
    std::error_code error;
    const auto options = std::filesystem::directory_options::skip_permission_denied;
    for (auto entry = std::filesystem::recursive_directory_iterator(folder_, options, error);
         !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        if (cancel.isCancelled()) return false;
        std::error_code fileError;
        if (!entry->is_regular_file(fileError) || !isSong(entry->path())) continue;
        const auto modified = entry->last_write_time(fileError);
        if (fileError) continue;
        auto known = cache_.find(entry->path());
        if (known != cache_.end() && known->second.modified == modified) {
            kept.insert(cache_.extract(known));
            continue;
        }
        kept.insert_or_assign(entry->path(), Cached{modified, describe(folder_, entry->path())});
        ++tagReads_;
    }
    cache_ = std::move(kept);
    songs_.clear();
    for (const auto& [path, cached] : cache_) songs_.push_back(cached.song);
    const auto order = [](const LibrarySong& s) {
        return std::tuple(lowered(s.song.artist), lowered(s.album), lowered(s.song.title), s.song.reference);
    };
    std::sort(songs_.begin(), songs_.end(), [&](const auto& a, const auto& b) { return order(a) < order(b); });
    return true;
}

void MusicLibrary::searchMusicLibrary(const std::string& query,
                                      std::function<void(std::vector<StreamTrackResult>)> done) {
    const double now = scheduler_.now();
    workers_.launch(
        [this, query, now, done = std::move(done), life = std::weak_ptr<int>(life_)](const StreamCancel& cancel) {
            std::vector<StreamTrackResult> found;
            {
                std::lock_guard guard(lock_);
                if (now - listedAt_ > rescanSeconds) {
                    if (!rescan(cancel)) return;
                    listedAt_ = now;
                }
                found = matching(songs_, query);
            }
            scheduler_.post([life, done, found = std::move(found)] {
                if (!life.expired()) done(found);
            });
        },
        StreamCancel{});
}

} // namespace velarion
