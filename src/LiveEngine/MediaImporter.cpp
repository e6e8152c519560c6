// Copying files into a package, one at a time, whole or not at all.

#include "LiveEngine/MediaImporter.h"

#include "Identity/Uuid.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>
#include <unistd.h>

namespace velarion {

namespace fs = std::filesystem;

double ImportProgress::fraction() const {
    if (fileCount <= 0) return 1;
    if (byteCount > 0) return std::clamp(static_cast<double>(bytesDone) / static_cast<double>(byteCount), 0.0, 1.0);
    return std::clamp(static_cast<double>(filesDone) / fileCount, 0.0, 1.0);
}

namespace mediaImporter {

namespace {

constexpr std::string_view temporarySuffix = ".importing";
// Large enough for full speed, small enough that a cancel is felt at once.
constexpr std::size_t chunkBytes = 8 << 20;

[[noreturn]] void fail(const char* what, const fs::path& path, int error) {
    throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

// One POSIX descriptor, closed once.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int get() const { return fd_; }
    int close() { return ::close(std::exchange(fd_, -1)); }

private:
    int fd_;
};

// A hidden file in the destination folder that goes unless kept.
class TemporaryFile {
public:
    explicit TemporaryFile(fs::path path) : path_(std::move(path)) {}
    ~TemporaryFile() {
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

// Writes everything from `in` to `out`; the kernel copies where it can.
void copyContent(int in, int out, const fs::path& source, const std::atomic<bool>& cancelled,
                 const std::function<void(std::int64_t)>& copied) {
    std::int64_t total = 0;
    bool kernelCopy = true;
    std::vector<char> buffer;
    while (true) {
        if (cancelled.load()) throw ImportCancelled();
        ssize_t moved = -1;
        if (kernelCopy) {
            moved = ::copy_file_range(in, nullptr, out, nullptr, chunkBytes, 0);
            if (moved < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)) {
                kernelCopy = false;
                continue;
            }
        } else {
            if (buffer.empty()) buffer.resize(1 << 20);
            const ssize_t read = ::read(in, buffer.data(), buffer.size());
            if (read < 0 && errno == EINTR) continue;
            moved = read;
            for (ssize_t written = 0; read > 0 && written < read;) {
                const ssize_t step = ::write(out, buffer.data() + written, static_cast<std::size_t>(read - written));
                if (step < 0 && errno == EINTR) continue;
                if (step < 0) fail("the file couldn't be written", source, errno);
                written += step;
            }
        }
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) fail("the file couldn't be copied", source, errno);
        if (moved == 0) return;
        total += moved;
        if (copied) copied(total);
    }
}

std::string storedName(const std::string& folder, const std::string& fileName, long counter) {
    if (counter == 1) return folder + "/" + fileName;
    const std::size_t dot = fileName.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0 && dot + 1 < fileName.size();
    const std::string base = hasExtension ? fileName.substr(0, dot) : fileName;
    const std::string extension = hasExtension ? fileName.substr(dot) : std::string();
    return folder + "/" + base + " " + std::to_string(counter) + extension;
}

std::int64_t sizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : static_cast<std::int64_t>(size);
}

} // namespace

std::string itemName(const fs::path& file, MediaKind kind) {
    const std::string stem = file.stem().string();
    return MediaItem::isMachineName(stem) ? std::string(displayName(kind)) : stem;
}

std::string copyIn(const fs::path& source, const ShowPackage& package, const std::string& folder,
                   const std::atomic<bool>& cancelled, const std::function<void(std::int64_t)>& copied) {
    const std::string fileName = source.filename().string();
    if (fileName.empty() || fileName == "." || fileName == "..") fail("only a file can be imported", source, EISDIR);

    FileDescriptor in(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (in.get() < 0) fail("the file couldn't be opened", source, errno);
    struct stat status {};
    if (::fstat(in.get(), &status) != 0) fail("the file couldn't be read", source, errno);
    if (S_ISDIR(status.st_mode)) fail("only a file can be imported", source, EISDIR);
    if (!S_ISREG(status.st_mode)) fail("only a file can be imported", source, ENOTSUP);
    ::fcntl(in.get(), F_SETFL, ::fcntl(in.get(), F_GETFL) & ~O_NONBLOCK);

    const fs::path destination = package.mediaURL(folder);
    fs::create_directories(destination);
    TemporaryFile temporary(destination / ("." + Uuid::random().text() + std::string(temporarySuffix)));
    FileDescriptor out(::open(temporary.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (out.get() < 0) fail("the copy couldn't be made", destination, errno);

    copyContent(in.get(), out.get(), source, cancelled, copied);
    if (out.close() != 0) fail("the copy couldn't be written", destination, errno);

    for (long counter = 1;; ++counter) {
        const std::string name = storedName(folder, fileName, counter);
        // A hard link never replaces: another import taking the name first
        // makes this one try the next.
        if (::link(temporary.path().c_str(), package.mediaURL(name).c_str()) == 0) return name;
        if (errno != EEXIST) fail("the copy couldn't be named", package.mediaURL(name), errno);
    }
}

std::string reason(const std::exception& error) {
    const auto* system = dynamic_cast<const fs::filesystem_error*>(&error);
    if (!system) return error.what();
    switch (system->code().value()) {
    case ENOENT: return "The file isn't there any more.";
    case EACCES:
    case EPERM: return "Velarion isn't allowed to read this file.";
    case EISDIR: return "Only files can be imported, not folders.";
    case ENOTSUP: return "Only ordinary files can be imported.";
    case ENOSPC:
    case EDQUOT: return "There isn't enough disk space to copy this file into the show.";
    case EIO: return "The file couldn't be read: the disk reported an error.";
    case EROFS: return "The show's folder can't be written to.";
    default: return "The file couldn't be copied into the show: " + system->code().message() + ".";
    }
}

void removeLeftovers(const ShowPackage& package) {
    std::error_code error;
    for (auto entry = fs::recursive_directory_iterator(package.mediaFolder(), error);
         !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(".") && name.ends_with(temporarySuffix)) {
            std::error_code ignored;
            fs::remove(entry->path(), ignored);
        }
    }
}

ImportResult importFiles(const std::vector<fs::path>& files, const ShowPackage& into,
                         const MediaImportTools& tools, const std::atomic<bool>& cancelled,
                         const Progress& progress) {
    ImportResult result;
    ImportProgress state;
    state.fileCount = static_cast<int>(files.size());
    for (const fs::path& file : files) state.byteCount += sizeOf(file);
    const auto report = [&] {
        if (progress) progress(state);
    };

    for (const fs::path& file : files) {
        if (cancelled.load()) {
            result.cancelled = true;
            break;
        }
        const std::string fileName = file.filename().string();
        const std::int64_t before = state.bytesDone;
        state.currentFile = fileName;
        report();
        try {
            const std::optional<MediaKind> kind = ShowPackage::mediaKind(file);
            if (!kind) throw ShowPackageError(ShowPackageError::UnsupportedFile{fileName});
            if (*kind == MediaKind::deck) {
                if (!tools.decks) throw std::runtime_error(MediaImportTools::decksUnavailable);
                result.items.push_back(tools.decks->importDeck(file, into, cancelled));
            } else {
                const std::string stored =
                    copyIn(file, into, ShowPackage::folder(*kind), cancelled, [&](std::int64_t copied) {
                        state.bytesDone = before + copied;
                        report();
                    });
                MediaItem item;
                item.id = Uuid::random();
                item.kind = *kind;
                item.name = itemName(file, *kind);
                item.fileName = stored;
                if (*kind != MediaKind::image && tools.durations) {
                    item.duration = tools.durations->durationSeconds(into.mediaURL(stored));
                }
                // A source taken away while it was being read may have given
                // a copy that is not the file the operator meant.
                std::error_code missing;
                if (!fs::exists(file, missing)) {
                    fs::remove(into.mediaURL(stored), missing);
                    throw std::runtime_error("The file was moved or deleted while it was being imported.");
                }
                result.items.push_back(std::move(item));
            }
        } catch (const ImportCancelled&) {
            result.cancelled = true;
            break;
        } catch (const std::exception& error) {
            result.failures.push_back({fileName, reason(error)});
        }
        ++state.filesDone;
        state.bytesDone = before + sizeOf(file);
        report();
    }
    // One flush for the batch, before the show can name any of the copies:
    // after a power cut the document never refers to a file still in the
    // cache. (A flush per file made imports four times slower.)
    if (!result.items.empty()) {
        const FileDescriptor media(::open(into.mediaFolder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (media.get() >= 0) ::syncfs(media.get());
    }
    return result;
}

} // namespace mediaImporter
} // namespace velarion
