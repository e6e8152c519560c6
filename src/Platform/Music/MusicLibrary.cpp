#include "Platform/Music/MusicLibrary.h"

#include <QStandardPaths>
#include <QString>
#include <QUrl>

#include <algorithm>
#include <cctype>
#include <set>

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

std::vector<StreamTrackResult> list(const std::filesystem::path& folder) {
    std::vector<StreamTrackResult> songs;
    std::error_code error;
    const auto options = std::filesystem::directory_options::skip_permission_denied;
    for (auto entry = std::filesystem::recursive_directory_iterator(folder, options, error);
         !error && entry != std::filesystem::recursive_directory_iterator(); entry.increment(error)) {
        if (!entry->is_regular_file(error) || !isSong(entry->path())) continue;
        const std::filesystem::path& file = entry->path();
        StreamTrackResult song;
        song.reference = QUrl::fromLocalFile(QString::fromStdString(file.string())).toString().toStdString();
        song.title = file.stem().string();
        // Music folders are laid out Artist/Album/Song: the artist is two up
        // when the song is that deep, else the folder it is in.
        const std::filesystem::path relative = file.lexically_relative(folder);
        auto parts = std::distance(relative.begin(), relative.end());
        if (parts >= 3) song.artist = relative.begin()->string();
        else if (parts == 2) song.artist = relative.begin()->string();
        songs.push_back(std::move(song));
    }
    std::sort(songs.begin(), songs.end(), [](const auto& a, const auto& b) { return a.reference < b.reference; });
    return songs;
}

} // namespace

std::filesystem::path MusicLibrary::standardFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::MusicLocation).toStdString();
}

MusicLibrary::MusicLibrary(Scheduler& scheduler, std::filesystem::path folder)
    : scheduler_(scheduler), folder_(std::move(folder)) {}

MusicLibrary::~MusicLibrary() = default;

std::vector<StreamTrackResult> MusicLibrary::matching(const std::vector<StreamTrackResult>& songs,
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
    for (const StreamTrackResult& song : songs) {
        const std::string text = lowered(song.title + " " + song.artist + " " + song.reference);
        if (std::all_of(words.begin(), words.end(), [&](const std::string& w) { return text.find(w) != std::string::npos; }))
            found.push_back(song);
        if (found.size() == resultLimit) break;
    }
    return found;
}

void MusicLibrary::searchMusicLibrary(const std::string& query,
                                      std::function<void(std::vector<StreamTrackResult>)> done) {
    const double now = scheduler_.now();
    workers_.launch(
        [this, query, now, done = std::move(done), life = std::weak_ptr<int>(life_)](const StreamCancel&) {
            std::vector<StreamTrackResult> found;
            {
                std::lock_guard guard(lock_);
                if (now - listedAt_ > cacheSeconds) {
                    songs_ = list(folder_);
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
