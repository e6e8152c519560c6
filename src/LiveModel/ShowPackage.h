#pragma once
// ShowPackage: the handle to a show's package folder on disk,
//
//   Name.velarion/
//     show.json          the whole Show, pretty-printed with sorted keys
//     Media/             every media file, by kind in Video/, Images/, Audio/,
//                        Decks/ and Slides/
//
// Contract. A plain value holding a location; it owns nothing else, caches
// nothing, and every operation goes straight to the file system. No mutable
// state and no locks: `save`, `open`, `saveCopy`, `tidy` and `removeOldFiles`
// run on the main thread, `importFile` and `writeMedia` on background tasks;
// the atomic write is what keeps a reader of show.json safe. Failures throw
// ShowPackageError where a case below fits, otherwise the file system's own
// std::filesystem::filesystem_error, and leave the document on disk whole.
//
// Stored names of media ("Video/Opening.mov") are relative to Media/ with '/'
// as separator. "made" is reserved for decks of made slides (no file). Names
// come from documents, which are outside input: nothing is written or removed
// for a name that would leave Media/ (absolute, or with "." or ".." parts).

#include "LiveModel/MediaItem.h"
#include "LiveModel/Show.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace velarion {

class ShowPackageError : public std::exception {
public:
    struct NewerFormat {
        int formatFound = 0;
        friend bool operator==(const NewerFormat&, const NewerFormat&) = default;
    };
    struct Unreadable {
        std::string description;
        friend bool operator==(const Unreadable&, const Unreadable&) = default;
    };
    struct UnsupportedFile {
        std::string fileName;
        friend bool operator==(const UnsupportedFile&, const UnsupportedFile&) = default;
    };
    struct NotAShowFile {
        friend bool operator==(const NotAShowFile&, const NotAShowFile&) = default;
    };
    using Case = std::variant<NewerFormat, Unreadable, UnsupportedFile, NotAShowFile>;

    explicit ShowPackageError(Case error);
    const Case& error() const { return error_; }
    // The sentence the operator reads.
    const std::string& message() const { return message_; }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    Case error_;
    std::string message_;
};

struct UsedFiles {
    int count = 0;          // stored names, a name used twice counted twice
    std::int64_t bytes = 0; // their sizes; a file whose size can't be read adds 0
    friend bool operator==(const UsedFiles&, const UsedFiles&) = default;
};

struct TidyResult {
    Show show;
    std::vector<std::string> oldFiles; // copied away; remove after the save
};

class ShowPackage {
public:
    static constexpr std::string_view fileExtension = "velarion";
    static constexpr std::string_view documentName = "show.json";

    explicit ShowPackage(std::filesystem::path url) : url_(std::move(url)) {}
    const std::filesystem::path& url() const { return url_; }

    // Creates Media/ and saves the show there.
    static ShowPackage create(const std::filesystem::path& at, const Show& show);
    // A new package in the scratch area, named by the show's id.
    static ShowPackage scratch(const Show& show);

    // Encodes first, makes sure Media/ exists, then replaces show.json
    // atomically: a crash at any moment leaves the old or the new document.
    void save(const Show& show) const;
    // Reads show.json, refusing documents of a newer format.
    Show open() const;
    // Replaces whatever is at `to` with a copy of this package, media
    // included, then saves `show` into the copy. This package is left alone:
    // `to` naming this package just saves into it, and a `to` inside this
    // package or holding it is refused before anything is removed, and so is
    // a `to` that another process has open (ShowPackageInUse).
    ShowPackage saveCopy(const std::filesystem::path& to, const Show& show) const;

    // True when the path holds "/Velarion/Unsaved/": a plain text test.
    bool isScratch() const;

    // "Velarion Shows" in the documents folder (home when there is none);
    // not created here.
    static std::filesystem::path showsFolder();
    // "Velarion/Unsaved" under the data folder; created by scratch().
    static std::filesystem::path scratchFolder();

    std::filesystem::path mediaFolder() const;
    // The stored name under Media/; never checks that it exists.
    std::filesystem::path mediaURL(std::string_view storedName) const;

    // The media folder name of a kind: "Video", "Images", "Audio", "Decks".
    static std::string folder(MediaKind kind);
    // The kind of a file by its extension, or none for files Velarion can't play.
    static std::optional<MediaKind> mediaKind(const std::filesystem::path& file);

    // Copies a file into Media/ (or Media/<into>/) under a free name,
    // "Intro 2.mov" after "Intro.mov", and returns the stored name.
    std::string importFile(const std::filesystem::path& source,
                           const std::optional<std::string>& into = std::nullopt) const;
    // Writes bytes under a stored name atomically, replacing what is there.
    void writeMedia(std::string_view bytes, std::string_view storedName) const;

    // Moves stored names of older, flat layouts into the folders above. Only
    // copies: the caller removes `oldFiles` after saving the tidied show.
    TidyResult tidy(const Show& show) const;
    // Removes the files, and each one's folder when it is left empty.
    void removeOldFiles(const std::vector<std::string>& storedNames) const;

    UsedFiles usedFiles(const Show& show) const;
    // Library items whose file (or any deck page) isn't in the package.
    std::vector<MediaItem> missingMedia(const Show& show) const;

    friend bool operator==(const ShowPackage&, const ShowPackage&) = default;

private:
    std::filesystem::path url_;
};

} // namespace velarion
