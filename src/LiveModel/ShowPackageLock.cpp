#include "LiveModel/ShowPackageLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace velarion {

namespace {

// -1 when the file can't be made or opened: the package then goes unlocked.
int openLockFile(const std::filesystem::path& package) {
    const std::filesystem::path file = package / ShowPackageLock::fileName;
    return ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0644);
}

bool lockNow(int fd) {
    for (;;) {
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EINTR) return false;
    }
}

} // namespace

ShowPackageLock ShowPackageLock::acquire(const std::filesystem::path& package) {
    const int fd = openLockFile(package);
    if (fd < 0) return ShowPackageLock(-1);
    if (!lockNow(fd)) {
        const int error = errno;
        ::close(fd);
        if (error == EWOULDBLOCK) throw ShowPackageInUse();
        // A file system without locks (ENOLCK) can't tell; go on unlocked.
        return ShowPackageLock(-1);
    }
    return ShowPackageLock(fd);
}

bool ShowPackageLock::isHeldElsewhere(const std::filesystem::path& package) {
    // Only looks: a folder without the file is not made into a package.
    const std::filesystem::path file = package / fileName;
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY);
    if (fd < 0) return false;
    const bool held = !lockNow(fd) && errno == EWOULDBLOCK;
    ::close(fd); // also releases the lock just taken
    return held;
}

ShowPackageLock::ShowPackageLock(ShowPackageLock&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)) {}

ShowPackageLock& ShowPackageLock::operator=(ShowPackageLock&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
}

ShowPackageLock::~ShowPackageLock() {
    // Closing the last descriptor of the open file releases the lock.
    if (fd_ >= 0) ::close(fd_);
}

} // namespace velarion
