#include "LiveModel/ShowPackage.h"
#include "LiveModel/ShowPackageLock.h"

#include "LiveModel/FileAccess.h"
#include "LiveModel/ShowJson.h"

#include <cstdlib>
#include <new>
#include <pwd.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace velarion {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view mediaFolderName = "Media";

std::string messageFor(const ShowPackageError::Case& error) {
    struct Message {
        std::string operator()(const ShowPackageError::NewerFormat& e) const {
            return "This show was saved by a newer Velarion (format " +
                   std::to_string(e.formatFound) + "). Update Velarion to open it.";
        }
        std::string operator()(const ShowPackageError::Unreadable& e) const {
            return "The show couldn't be read: " + e.description;
        }
        std::string operator()(const ShowPackageError::UnsupportedFile& e) const {
            return e.fileName + " isn't a file Velarion can play.";
        }
        std::string operator()(const ShowPackageError::NotAShowFile&) const {
            return "That isn't a Velarion show.";
        }
    };
    return std::visit(Message{}, error);
}

[[noreturn]] void unreadable(std::string description) {
    throw ShowPackageError(ShowPackageError::Unreadable{std::move(description)});
}

// ---- The user's folders, by the freedesktop conventions ----

// An environment variable holding an absolute path; relative ones are
// invalid by the XDG rules and ignored.
std::optional<fs::path> absoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (value == nullptr || value[0] != '/') return std::nullopt;
    return fs::path(value);
}

fs::path homeFolder() {
    if (auto home = absoluteFromEnvironment("HOME")) return *home;
    // Without $HOME (a service, a stripped environment) the account database knows.
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') {
        return fs::path(found->pw_dir);
    }
    throw fs::filesystem_error("the home folder is unknown",
                               std::make_error_code(std::errc::no_such_file_or_directory));
}

// The value of a user-dirs.dirs line such as XDG_DOCUMENTS_DIR="$HOME/Documents",
// unquoted and with $HOME expanded; none for a line about another folder or
// a value that is neither under $HOME nor absolute.
std::optional<fs::path> documentsEntry(std::string_view line, const fs::path& home) {
    constexpr std::string_view key = "XDG_DOCUMENTS_DIR";
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
    if (!line.starts_with(key)) return std::nullopt;
    line.remove_prefix(key.size());
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
    if (!line.starts_with('=')) return std::nullopt;
    line.remove_prefix(1);

    std::string value;
    if (line.starts_with('"')) {
        // Shell quoting as the xdg-user-dirs tools write it: backslash escapes.
        for (std::size_t i = 1; i < line.size() && line[i] != '"'; ++i) {
            if (line[i] == '\\' && i + 1 < line.size()) ++i;
            value += line[i];
        }
    } else {
        value = line.substr(0, line.find_first_of(" \t#"));
    }

    constexpr std::string_view homeVariable = "$HOME";
    if (value.starts_with(homeVariable)) {
        std::string_view rest = std::string_view(value).substr(homeVariable.size());
        if (!rest.empty() && rest.front() != '/')
            return std::nullopt; // "$HOMEWORK"
        while (rest.starts_with('/')) rest.remove_prefix(1);
        return rest.empty() ? home : home / rest;
    }
    if (value.starts_with('/')) return fs::path(value);
    return std::nullopt;
}

fs::path documentsFolder() {
    if (auto documents = absoluteFromEnvironment("XDG_DOCUMENTS_DIR")) return *documents;
    const fs::path home = homeFolder();
    const fs::path config = absoluteFromEnvironment("XDG_CONFIG_HOME").value_or(home / ".config");

    // The file is small; anything odd about it (too large, unreadable, not a
    // regular file) leaves the home folder standing in.
    std::optional<fs::path> documents;
    try {
        auto content = fileAccess::readRegularFile(config / "user-dirs.dirs", 64 * 1024);
        if (const auto* text = std::get_if<std::string>(&content)) {
            std::string_view rest = *text;
            while (!rest.empty()) {
                const std::size_t end = rest.find('\n');
                // The last assignment wins, as when the shell reads the file.
                if (auto entry = documentsEntry(rest.substr(0, end), home)) documents = entry;
                rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
            }
        }
    } catch (const fs::filesystem_error&) {
    }
    return documents.value_or(home);
}

// True when `inner` is `outer` or lies somewhere inside it.
bool isWithin(const fs::path& inner, const fs::path& outer) {
    const fs::path relative = inner.lexically_relative(outer);
    return !relative.empty() && *relative.begin() != "..";
}

} // namespace

ShowPackageError::ShowPackageError(Case error)
    : error_(std::move(error)), message_(messageFor(error_)) {}

ShowPackage ShowPackage::create(const fs::path& at, const Show& show) {
    fs::create_directories(at / mediaFolderName);
    ShowPackage package(at);
    package.save(show);
    return package;
}

ShowPackage ShowPackage::scratch(const Show& show) {
    const fs::path folder = scratchFolder();
    fs::create_directories(folder);
    return create(folder / (show.id.text() + "." + std::string(fileExtension)), show);
}

void ShowPackage::save(const Show& show) const {
    const fs::path document = url_ / documentName;
    std::string text;
    try {
        text = encodeShow(show);
    } catch (const ShowEncodeError& error) {
        // Nothing on disk has been touched yet.
        throw fs::filesystem_error(std::string("the show couldn't be encoded: ") + error.what(),
                                   document, std::make_error_code(std::errc::invalid_argument));
    }
    // Also what makes a save into a package folder somebody emptied work.
    fs::create_directories(mediaFolder());
    fileAccess::writeAtomically(document, text);
}

Show ShowPackage::open() const {
    const fs::path document = url_ / documentName;
    std::error_code statusError;
    const fs::file_status status = fs::status(document, statusError);
    if (status.type() == fs::file_type::not_found) {
        throw ShowPackageError(ShowPackageError::NotAShowFile{});
    }
    if (statusError) unreadable(statusError.message());

    std::string text;
    try {
        auto content = fileAccess::readRegularFile(document, maxShowDocumentBytes);
        if (const auto* tooLarge = std::get_if<fileAccess::TooLarge>(&content)) {
            // Refused from its size alone: a huge file is never read into memory.
            constexpr std::uintmax_t megabyte = 1u << 20;
            unreadable(std::string(documentName) + " is " +
                       std::to_string((tooLarge->sizeBytes + megabyte - 1) / megabyte) +
                       " MB, more than the " + std::to_string(maxShowDocumentBytes / megabyte) +
                       " MB a show document may hold");
        }
        text = std::move(std::get<std::string>(content));
    } catch (const fs::filesystem_error& error) {
        unreadable(error.code().message());
    } catch (const std::bad_alloc&) {
        unreadable("there isn't enough memory to read it");
    }

    try {
        // The header check runs once the text parses and before the full
        // decode, so a newer document is refused even where it would decode.
        return decodeShow(text, [](int formatVersion) {
            if (formatVersion > Show::currentFormatVersion) {
                throw ShowPackageError(ShowPackageError::NewerFormat{formatVersion});
            }
        });
    } catch (const ShowDecodeError& error) {
        unreadable(error.what());
    } catch (const std::bad_alloc&) {
        unreadable("there isn't enough memory to read it");
    }
}

ShowPackage ShowPackage::saveCopy(const fs::path& to, const Show& show) const {
    const fs::path source = fs::weakly_canonical(url_);
    const fs::path target = fs::weakly_canonical(to);
    if (target == source) {
        // Saving a package as itself: removing the target would remove the source.
        save(show);
        return *this;
    }
    if (isWithin(target, source) || isWithin(source, target)) {
        throw fs::filesystem_error("a package can't be copied into itself or over its own folder",
                                   url_, to, std::make_error_code(std::errc::invalid_argument));
    }

    // A show another Velarion process has open is not replaced under it.
    if (ShowPackageLock::isHeldElsewhere(to)) throw ShowPackageInUse();

    // Deliberately not "remove the target, then copy": the copy is made whole
    // beside the target and only then takes its place, so a failure part-way
    // (a full disk, a bad media file) leaves the package that was there
    // instead of losing it. The save panel has already asked to replace it.
    // A missing folder on the way is made.
    fs::create_directories(to.parent_path());
    const fs::path partial = to.parent_path() / ("." + to.filename().string() + ".partial-" + Uuid::random().text());
    try {
        // Links are copied as links, as the package holds them; following
        // them could copy outside files or loop.
        fs::copy(url_, partial, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        // The source's show.json may lag behind the show in memory.
        ShowPackage(partial).save(show);
        if (fs::exists(fs::symlink_status(to))) {
            const fs::path replaced = to.parent_path() / ("." + to.filename().string() + ".replaced-" + Uuid::random().text());
            fs::rename(to, replaced);
            try {
                fs::rename(partial, to);
            } catch (...) {
                // Put the old one back where it was.
                std::error_code ignored;
                fs::rename(replaced, to, ignored);
                throw;
            }
            std::error_code ignored;
            fs::remove_all(replaced, ignored);
        } else {
            fs::rename(partial, to);
        }
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(partial, ignored);
        throw;
    }
    return ShowPackage(to);
}

bool ShowPackage::isScratch() const {
    return url_.generic_string().find("/Velarion/Unsaved/") != std::string::npos;
}

fs::path ShowPackage::showsFolder() {
    return documentsFolder() / "Velarion Shows";
}

fs::path ShowPackage::scratchFolder() {
    auto data = absoluteFromEnvironment("XDG_DATA_HOME");
    return (data ? *data : homeFolder() / ".local" / "share") / "Velarion" / "Unsaved";
}

fs::path ShowPackage::mediaFolder() const {
    return url_ / mediaFolderName;
}

fs::path ShowPackage::mediaURL(std::string_view storedName) const {
    // A stored name is relative; a leading '/' must not replace the package's path.
    return mediaFolder() / fs::path(storedName).relative_path();
}

std::string ShowPackage::folder(MediaKind kind) {
    switch (kind) {
    case MediaKind::video:
        return "Video";
    case MediaKind::image:
        return "Images";
    case MediaKind::audio:
        return "Audio";
    case MediaKind::deck:
        return "Decks";
    }
    return "Video";
}

} // namespace velarion
