#pragma once
// A child process tied to the test: it gets SIGKILL when the test process
// dies (parent-death signal), and is killed and reaped when this object goes.
// Owns both pipes; its standard output is read line by line. Use from one
// thread.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace velarion::testing {

// The next line from a pipe or socket, without its line feed, keeping what
// follows it in `buffer`; absent after `timeoutSeconds` or at the end.
std::optional<std::string> readLineFrom(int fd, std::string& buffer, double timeoutSeconds);

class ChildProcess {
public:
    // Variables to set (or, with no value, to unset) over the test's own.
    using Environment = std::vector<std::pair<std::string, std::optional<std::string>>>;

    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 const Environment& changes = {});
    // Runs `body` in a forked copy of this process, which exits with its
    // result and never returns into the test framework. `body` gets the
    // descriptor of the pipe `readLine` reads.
    explicit ChildProcess(const std::function<int(int output)>& body);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    void writeLine(const std::string& line);
    void closeInput();
    // The next line without its line feed; absent after `timeoutSeconds` or
    // at the end of the output.
    std::optional<std::string> readLine(double timeoutSeconds = 20);
    // Every line read so far.
    const std::vector<std::string>& lines() const { return lines_; }
    std::string transcript() const;

    void signal(int number);
    // Closes the input, reads what is left and reaps the child: its exit
    // status, or minus the signal that ended it.
    int wait();

private:
    void start(const std::function<void()>& inChild);

    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string pending_;
    std::vector<std::string> lines_;
};

// Runs a piece of the test in a forked child and hands back the text it
// returns: for faults a test must not inflict on itself, such as a file-size
// limit (RLIMIT_FSIZE stands in for a full disk) or a lock held by another
// process. The child ends with _exit, so no test framework teardown runs
// twice. Threads other than the caller's are not in the child: use it
// before starting any.
// The text `body` returned, or a line saying how the child ended abnormally.
std::string runInForkedChild(const std::function<std::string()>& body);

// Limits the files this process may write to `bytes` each; writing past it
// fails with EFBIG instead of raising SIGXFSZ. For a forked child only.
void limitFileSizeBytes(long bytes);

// The same for this whole process while it lives (its soft limit only, put
// back at the end): for writes made on threads a forked child wouldn't have.
class ScopedFileSizeLimit {
public:
    explicit ScopedFileSizeLimit(long bytes);
    ~ScopedFileSizeLimit();
    ScopedFileSizeLimit(const ScopedFileSizeLimit&) = delete;
    ScopedFileSizeLimit& operator=(const ScopedFileSizeLimit&) = delete;

private:
    rlimit saved_{};
    void (*savedHandler_)(int) = nullptr;
};

// A server or tool run beside the test, from PATH: posix_spawn, not fork
// (GStreamer's threads may hold locks a forked child would wait on for
// ever), under `setpriv --pdeathsig KILL` so that a killed test leaves none
// behind. Input and errors are /dev/null, output goes to `output`, and
// `passedFd`, when given, is the child's descriptor 3. Its id, or -1.
pid_t spawnBeside(const std::vector<std::string>& command, const std::filesystem::path& output = "/dev/null",
                  int passedFd = -1);
// Runs a command that way to its end: its exit status, or -1.
int runToEnd(const std::vector<std::string>& command, const std::filesystem::path& output = "/dev/null");
// SIGTERM, up to two seconds to go, then SIGKILL; reaped either way.
void endProcess(pid_t process);

} // namespace velarion::testing
