// The media side of a package: classifying, importing and writing files,
// bringing old flat names into folders, and what a show uses or misses.

#include "LiveModel/FileAccess.h"
#include "LiveModel/ShowPackage.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

namespace velarion {

namespace fs = std::filesystem;

namespace {

// Presentations are decks whatever else their type says.
constexpr std::string_view deckExtensions[] = {"pdf", "key", "ppt", "pptx"};

// What GStreamer and Qt play and show on a usual Linux desktop.
constexpr std::string_view videoExtensions[] = {
    "mov",  "qt", "mp4", "m4v", "mkv", "webm", "avi", "mpg", "mpeg", "mpe", "m2v", "mts",
    "m2ts", "ts", "wmv", "asf", "flv", "f4v",  "ogv", "3gp", "3g2",  "mxf", "dv",  "vob"};
constexpr std::string_view imageExtensions[] = {"png", "jpg",  "jpeg", "jpe",  "gif",  "bmp",
                                                "tif", "tiff", "webp", "heic", "heif", "avif",
                                                "svg", "ico",  "tga",  "psd",  "jp2",  "exr"};
constexpr std::string_view soundExtensions[] = {"wav",  "wave", "aif", "aiff", "aifc", "mp3",
                                                "m4a",  "m4b",  "aac", "flac", "ogg",  "oga",
                                                "opus", "wma",  "caf", "ac3",  "amr",  "mka"};

template <std::size_t size>
bool contains(const std::string_view (&list)[size], std::string_view extension) {
    return std::find(std::begin(list), std::end(list), extension) != std::end(list);
}

std::string lowerCased(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

[[noreturn]] void invalidName(const char* what, std::string_view name) {
    throw fs::filesystem_error(what, fs::path(name),
                               std::make_error_code(std::errc::invalid_argument));
}

// A stored name that stays inside Media/: relative, with no empty, "." or
// ".." parts. Names read from a document are outside input; these checks
// keep a hostile one from making the package write or delete elsewhere.
bool staysInsideMedia(std::string_view name) {
    if (name.empty()) return false;
    for (std::size_t start = 0;;) {
        const std::size_t end = name.find('/', start);
        const std::string_view part = name.substr(start, end - start);
        if (part.empty() || part == "." || part == "..") return false;
        if (end == std::string_view::npos) return true;
        start = end + 1;
    }
}

std::string_view lastComponent(std::string_view name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string_view::npos ? name : name.substr(slash + 1);
}

std::string_view parentFolder(std::string_view name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : name.substr(0, slash);
}

bool isFlat(std::string_view name) {
    return name.find('/') == std::string_view::npos;
}

// Every stored name the library refers to, in order: a deck's pages, then
// the item's own file unless it has none.
std::vector<std::string> storedNames(const Show& show) {
    std::vector<std::string> names;
    for (const MediaItem& item : show.library) {
        if (item.deck) names.insert(names.end(), item.deck->pages.begin(), item.deck->pages.end());
        if (item.fileName != MediaItem::madeFileName && !item.ndiSource) {
            names.push_back(item.fileName);
        }
    }
    return names;
}

bool existsUnder(const ShowPackage& package, std::string_view storedName) {
    std::error_code error;
    return fs::exists(package.mediaURL(storedName), error);
}

// Moves stored names into folders for `tidy`, collecting the names it copied away from.
class Relocator {
public:
    explicit Relocator(const ShowPackage& package) : package_(package) {}

    std::string operator()(const std::string& name, std::string_view folder) {
        if (!staysInsideMedia(name) || name == MediaItem::madeFileName) return name;
        const std::string destination =
            std::string(folder) + "/" + std::string(lastComponent(name));
        if (destination == name || !staysInsideMedia(destination)) return name;

        const fs::path from = package_.mediaURL(name);
        const fs::path to = package_.mediaURL(destination);
        std::error_code error;
        if (fs::is_regular_file(from, error)) {
            // A destination already there is kept: it may be a copy an
            // interrupted tidy finished, or another item's file.
            if (!fs::exists(fs::symlink_status(to, error))) {
                fs::create_directories(to.parent_path());
                // Whole or not at all: a half copy would pass for a finished one later.
                fileAccess::copyAtomically(from, to);
            }
            oldFiles_.push_back(name);
            return destination;
        }
        // Only the copy is there: a tidy stopped before its old files went.
        if (fs::exists(fs::symlink_status(to, error))) return destination;
        // Neither: the gap stays reported under the name the operator knows.
        return name;
    }

    std::vector<std::string> takeOldFiles() { return std::move(oldFiles_); }

private:
    const ShowPackage& package_;
    std::vector<std::string> oldFiles_;
};

} // namespace

std::optional<MediaKind> ShowPackage::mediaKind(const fs::path& file) {
    std::string extension = file.extension().string();
    if (extension.empty()) return std::nullopt;
    extension = lowerCased(extension.substr(1));
    if (contains(deckExtensions, extension)) return MediaKind::deck;
    if (contains(videoExtensions, extension)) return MediaKind::video;
    if (contains(imageExtensions, extension)) return MediaKind::image;
    if (contains(soundExtensions, extension)) return MediaKind::audio;
    return std::nullopt;
}

std::string ShowPackage::importFile(const fs::path& source,
                                    const std::optional<std::string>& into) const {
    const std::string folderName = into.value_or("");
    if (!folderName.empty() && !staysInsideMedia(folderName)) {
        invalidName("a media folder must lie inside the package", folderName);
    }
    const std::string fileName = source.filename().string();
    if (fileName.empty() || fileName == "." || fileName == "..") {
        invalidName("only a file can be imported", source.string());
    }
    // Checked here so that a failed copy below can only have failed on a file it made.
    if (!fs::is_regular_file(source)) {
        throw fs::filesystem_error("only a file can be imported", source,
                                   std::make_error_code(std::errc::not_supported));
    }

    const std::string prefix = folderName.empty() ? std::string() : folderName + "/";
    fs::create_directories(folderName.empty() ? mediaFolder() : mediaURL(folderName));

    // "Intro.mov", then "Intro 2.mov"; a name without extension gets no trailing point.
    const std::size_t dot = fileName.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0 && dot + 1 < fileName.size();
    const std::string base = hasExtension ? fileName.substr(0, dot) : fileName;
    const std::string extension = hasExtension ? fileName.substr(dot) : std::string();

    for (long counter = 1;; ++counter) {
        const std::string candidate =
            prefix + (counter == 1 ? fileName : base + " " + std::to_string(counter) + extension);
        const fs::path target = mediaURL(candidate);
        if (fs::exists(fs::symlink_status(target))) continue;
        std::error_code error;
        // Never overwrites: another importer taking the name first makes this fail.
        if (fs::copy_file(source, target, fs::copy_options::none, error)) return candidate;
        if (error == std::errc::file_exists) continue;
        std::error_code ignored;
        fs::remove(target, ignored);
        throw fs::filesystem_error("the file couldn't be copied in", source, target, error);
    }
}

void ShowPackage::writeMedia(std::string_view bytes, std::string_view storedName) const {
    if (!staysInsideMedia(storedName)) {
        invalidName("a media file must lie inside the package", storedName);
    }
    const fs::path target = mediaURL(storedName);
    fs::create_directories(target.parent_path());
    fileAccess::writeAtomically(target, bytes);
}

TidyResult ShowPackage::tidy(const Show& show) const {
    TidyResult result{show, {}};
    Relocator relocate(*this);
    for (Shared<MediaItem>& entry : result.show.library.items()) {
        const MediaItem& item = entry;
        if (item.deck) {
            const DeckInfo& deck = *item.deck;
            if (deck.made || deck.pages.empty() || deck.pages.front().starts_with("Decks/")) {
                continue;
            }
            std::string deckFolder(parentFolder(deck.pages.front()));
            if (deckFolder.empty()) deckFolder = "Deck " + item.id.text().substr(0, 8);
            const std::string target = "Decks/" + deckFolder;

            std::vector<std::string> pages;
            pages.reserve(deck.pages.size());
            for (const std::string& page : deck.pages) pages.push_back(relocate(page, target));
            const std::string fileName =
                isFlat(item.fileName) ? relocate(item.fileName, "Decks") : item.fileName;

            if (pages != deck.pages || fileName != item.fileName) {
                MediaItem& changed = entry.edit();
                changed.deck->pages = std::move(pages);
                changed.fileName = fileName;
            }
        } else if (isFlat(item.fileName)) {
            std::string fileName = relocate(item.fileName, folder(item.kind));
            if (fileName != item.fileName) entry.edit().fileName = std::move(fileName);
        }
    }

    // A name the tidied show still uses is never handed out for removal,
    // however the old layout was tangled.
    const std::vector<std::string> stillUsed = storedNames(result.show);
    const std::set<std::string_view> used(stillUsed.begin(), stillUsed.end());
    for (std::string& name : relocate.takeOldFiles()) {
        if (!used.contains(name)) result.oldFiles.push_back(std::move(name));
    }
    return result;
}

void ShowPackage::removeOldFiles(const std::vector<std::string>& storedNames) const {
    for (const std::string& name : storedNames) {
        if (!staysInsideMedia(name)) continue;
        std::error_code ignored;
        fs::remove(mediaURL(name), ignored);

        // Only the file's own folder, and only when this left it empty.
        const std::string_view parent = parentFolder(name);
        if (parent.empty()) continue;
        const fs::path folder = mediaURL(parent);
        std::error_code listError;
        const fs::directory_iterator listing(folder, listError);
        if (listError) continue;
        if (listing == fs::directory_iterator()) fs::remove(folder, ignored);
    }
}

UsedFiles ShowPackage::usedFiles(const Show& show) const {
    const std::vector<std::string> names = storedNames(show);
    UsedFiles used;
    used.count = static_cast<int>(names.size());
    for (const std::string& name : names) {
        std::error_code error;
        const std::uintmax_t sizeBytes = fs::file_size(mediaURL(name), error);
        if (!error) used.bytes += static_cast<std::int64_t>(sizeBytes);
    }
    return used;
}

std::vector<MediaItem> ShowPackage::missingMedia(const Show& show) const {
    std::vector<MediaItem> missing;
    for (const MediaItem& item : show.library) {
        // Only the deck is looked at for a deck; a live network input is not
        // exempt, the ready check decides what its gap means.
        const bool isMissing =
            item.deck
                ? std::any_of(item.deck->pages.begin(), item.deck->pages.end(),
                              [&](const std::string& page) { return !existsUnder(*this, page); })
                : !existsUnder(*this, item.fileName);
        if (isMissing) missing.push_back(item);
    }
    return missing;
}

} // namespace velarion
