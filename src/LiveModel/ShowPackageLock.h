#pragma once
// ShowPackageLock: keeps a second Velarion process from opening, saving into
// or replacing a show package that one process has open. Two writers of one
// show.json would each overwrite the other's edits at every autosave.
//
// Contract. An advisory lock (flock) on a small hidden file inside the
// package, taken when a show becomes the open one and released when the
// object goes (closing the show, opening another, quitting). The kernel drops
// it when the process dies, so a crash never leaves a stale lock behind. The
// lock belongs to one open file description: a second acquire in the same
// process is refused too. A package where the lock file can't be made (a
// read-only stick) opens unlocked, since nothing can be saved there anyway.
// Movable, not copyable; main thread only. The descriptor is closed on exec,
// so a helper the application starts never holds it.

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velarion {

struct ShowPackageInUse : std::runtime_error {
    ShowPackageInUse() : std::runtime_error("This show is open in another Velarion window.") {}
};

class ShowPackageLock {
public:
    static constexpr std::string_view fileName = ".velarion-open";

    // Takes the lock of the package folder `package`; throws ShowPackageInUse
    // when another holder has it.
    static ShowPackageLock acquire(const std::filesystem::path& package);
    // True when some other holder has the package open now; makes no file.
    static bool isHeldElsewhere(const std::filesystem::path& package);

    ShowPackageLock(ShowPackageLock&& other) noexcept;
    ShowPackageLock& operator=(ShowPackageLock&& other) noexcept;
    ShowPackageLock(const ShowPackageLock&) = delete;
    ShowPackageLock& operator=(const ShowPackageLock&) = delete;
    ~ShowPackageLock();

    // False when the package couldn't hold a lock file and opened unlocked.
    bool isHeld() const { return fd_ >= 0; }

private:
    explicit ShowPackageLock(int fd) : fd_(fd) {}
    int fd_ = -1;
};

} // namespace velarion
