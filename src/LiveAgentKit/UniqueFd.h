#pragma once
// Sole owner of one POSIX file descriptor: closes it when destroyed or reset.
// Movable, not copyable; -1 means it holds nothing.
//
// Thread: a plain value; one thread at a time. Closing never retries on EINTR,
// as Linux has already freed the number by then.

#include <unistd.h>
#include <utility>

namespace velarion {

class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) noexcept : fd_(fd) {}
    ~UniqueFd() { reset(); }

    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    int get() const noexcept { return fd_; }
    bool isOpen() const noexcept { return fd_ >= 0; }

    // Hands the descriptor over without closing it.
    int release() noexcept { return std::exchange(fd_, -1); }

    void reset(int fd = -1) noexcept {
        const int old = std::exchange(fd_, fd);
        if (old >= 0)
            ::close(old);
    }

private:
    int fd_ = -1;
};

} // namespace velarion
