#include "LiveModel/ShowPackage.h"
#include "ShowPackageFixtures.h"
#include "TempFolder.h"

#include <array>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace velarion {
namespace {

using testing::TempFolder;

// Both ends of a pipe, closed when it goes.
struct Pipe {
    int ends[2] = {-1, -1};
    Pipe() {
        if (::pipe(ends) != 0) ends[0] = ends[1] = -1;
    }
    ~Pipe() {
        for (int& end : ends) closeEnd(end);
    }
    static void closeEnd(int& end) {
        if (end >= 0) ::close(end);
        end = -1;
    }
};

// A process killed at any moment of a save leaves a document that opens as
// the old show or the new one, never a torn or empty file.
TEST(ShowPackageCrash, AKilledSaveLeavesTheOldOrTheNewDocument) {
    TempFolder temp;
    // Different sizes too, so that a torn write can't pass for either.
    const std::array<Show, 2> shows = {testing::sampleShow("First", 250),
                                       testing::sampleShow("Second", 180)};
    const ShowPackage package = ShowPackage::create(temp / "Crash.velarion", shows[0]);

    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> delayMicroseconds(0, 20'000);
    for (int kill = 0; kill < 200; ++kill) {
        Pipe firstSave;
        ASSERT_GE(firstSave.ends[0], 0) << "pipe failed";
        const pid_t child = ::fork();
        ASSERT_GE(child, 0) << "fork failed";
        if (child == 0) {
            // Saves until it is killed, telling the parent when the first
            // save is done so that the kill lands among the later ones however
            // slow a build is. It must never return into the test framework:
            // _exit skips its teardown and the parent's buffers.
            try {
                package.save(shows[1]);
                if (::write(firstSave.ends[1], "s", 1) == 1) {
                    for (std::size_t n = 0;; ++n) package.save(shows[n % 2]);
                }
            } catch (...) {
            }
            ::_exit(1);
        }
        Pipe::closeEnd(firstSave.ends[1]);
        char signal = 0;
        const bool saved = ::read(firstSave.ends[0], &signal, 1) == 1;
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(saved && WIFSIGNALED(status)) << "the saving child stopped by itself";

        Show opened;
        ASSERT_NO_THROW(opened = package.open()) << "after kill " << kill;
        ASSERT_TRUE(opened == shows[0] || opened == shows[1]) << "after kill " << kill;
    }
}

} // namespace
} // namespace velarion
