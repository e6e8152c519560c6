#include "LiveModel/FileAccess.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velarion::fileAccess {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const char* what, const fs::path& path, int error) {
    throw fs::filesystem_error(what, path, std::error_code(error, std::generic_category()));
}

// Owns one file descriptor and closes it when it goes.
class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1) : fd_(fd) {}
    ~FileDescriptor() {
        if (fd_ >= 0) ::close(fd_);
    }
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }

    int get() const { return fd_; }
    bool isOpen() const { return fd_ >= 0; }
    // Closes now; 0, or the error close() reports (a late write error on
    // network file systems). Never retried: on Linux the descriptor is gone.
    int close() {
        if (fd_ < 0) return 0;
        return ::close(std::exchange(fd_, -1)) == 0 ? 0 : errno;
    }

private:
    int fd_;
};

// Opens a file for reading without blocking on FIFOs or devices, and refuses
// anything but a regular file.
FileDescriptor openRegularFile(const fs::path& file, struct stat& info) {
    FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!fd.isOpen()) fail("couldn't open the file", file, errno);
    if (::fstat(fd.get(), &info) != 0) fail("couldn't read the file's size", file, errno);
    if (S_ISDIR(info.st_mode)) fail("couldn't read the file", file, EISDIR);
    if (!S_ISREG(info.st_mode)) fail("couldn't read the file", file, ENOTSUP);
    return fd;
}

// Reads some bytes, retrying interruptions; 0 at the end of the file.
std::size_t readSome(const FileDescriptor& fd, char* into, std::size_t count,
                     const fs::path& file) {
    for (;;) {
        const ssize_t read = ::read(fd.get(), into, count);
        if (read >= 0) return static_cast<std::size_t>(read);
        if (errno != EINTR) fail("couldn't read the file", file, errno);
    }
}

void writeAll(const FileDescriptor& fd, std::string_view bytes, const fs::path& file) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd.get(), bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            fail("couldn't write the file", file, errno);
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// A hidden file beside the target, made by mkstemp. It is removed when the
// object goes unless `replace` has moved it over the target.
class TemporaryFile {
public:
    explicit TemporaryFile(const fs::path& target) : target_(target) {
        // Keep the name within the usual 255-byte limit however long the target's is.
        std::string name = "." + target.filename().string().substr(0, 200) + ".XXXXXX";
        std::string pattern = (target.parent_path() / name).string();
        fd_ = FileDescriptor(::mkostemp(pattern.data(), O_CLOEXEC));
        if (!fd_.isOpen()) {
            const int error = errno;
            fail("couldn't create a temporary file", target.parent_path(), error);
        }
        path_ = pattern;
    }
    ~TemporaryFile() {
        fd_.close();
        if (!path_.empty()) ::unlink(path_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const FileDescriptor& fd() const { return fd_; }
    const fs::path& path() const { return path_; }

    // Flushes the content to the disk, moves it over the target and makes
    // the rename itself durable.
    void replaceTarget() {
        // mkstemp makes 0600; a replaced file keeps its mode, a new one is 0644.
        struct stat existing {};
        const mode_t mode =
            ::stat(target_.c_str(), &existing) == 0 ? existing.st_mode & 07777 : mode_t{0644};
        if (::fchmod(fd_.get(), mode) != 0) fail("couldn't set the file's mode", path_, errno);
        if (::fsync(fd_.get()) != 0) fail("couldn't write the file to the disk", path_, errno);
        if (const int error = fd_.close(); error != 0) {
            fail("couldn't write the file to the disk", path_, error);
        }
        if (::rename(path_.c_str(), target_.c_str()) != 0) {
            fail("couldn't replace the file", target_, errno);
        }
        path_.clear();
        syncFolder(target_.parent_path());
    }

private:
    static void syncFolder(const fs::path& folder) {
        const fs::path open = folder.empty() ? fs::path(".") : folder;
        FileDescriptor fd(::open(open.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!fd.isOpen()) fail("couldn't open the folder", open, errno);
        // Some file systems can't sync a folder; their renames are as safe as they get.
        if (::fsync(fd.get()) != 0 && errno != EINVAL && errno != ENOTSUP) {
            fail("couldn't write the folder to the disk", open, errno);
        }
    }

    fs::path target_;
    fs::path path_;
    FileDescriptor fd_;
};

} // namespace

std::variant<std::string, TooLarge> readRegularFile(const fs::path& file, std::size_t maxBytes) {
    struct stat info {};
    const FileDescriptor fd = openRegularFile(file, info);
    const auto sizeBytes = static_cast<std::uintmax_t>(info.st_size);
    if (sizeBytes > maxBytes) return TooLarge{sizeBytes};

    // One spare byte notices a file that grew since fstat.
    std::string content(static_cast<std::size_t>(sizeBytes) + 1, '\0');
    std::size_t filled = 0;
    for (;;) {
        if (filled == content.size()) {
            if (content.size() > maxBytes) return TooLarge{filled};
            content.resize(std::min(content.size() * 2, maxBytes + 1));
        }
        const std::size_t read =
            readSome(fd, content.data() + filled, content.size() - filled, file);
        if (read == 0) break;
        filled += read;
    }
    content.resize(filled);
    return content;
}

void writeAtomically(const fs::path& target, std::string_view bytes) {
    TemporaryFile temporary(target);
    writeAll(temporary.fd(), bytes, temporary.path());
    temporary.replaceTarget();
}

void copyAtomically(const fs::path& source, const fs::path& target) {
    struct stat info {};
    const FileDescriptor from = openRegularFile(source, info);
    TemporaryFile temporary(target);
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const std::size_t read = readSome(from, buffer.data(), buffer.size(), source);
        if (read == 0) break;
        writeAll(temporary.fd(), std::string_view(buffer.data(), read), temporary.path());
    }
    temporary.replaceTarget();
}

} // namespace velarion::fileAccess
