#include "Platform/Import/LibreOfficeExporter.h"

#include "LiveModel/FileAccess.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace velarion {

namespace fs = std::filesystem;

namespace {

std::optional<fs::path> findOnPath(const char* name) {
    const char* path = std::getenv("PATH");
    std::stringstream folders(path ? path : "/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const fs::path candidate = fs::path(folder.empty() ? "." : folder) / name;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return std::nullopt;
}

// A temporary folder removed with all it holds.
class WorkFolder {
public:
    WorkFolder() {
        std::string pattern = (fs::temp_directory_path() / "vela-presentation-export-XXXXXX").string();
        if (!::mkdtemp(pattern.data())) throw std::runtime_error("A temporary folder for the export couldn't be made.");
        path_ = pattern;
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

std::string readText(const fs::path& file) {
    const auto content = fileAccess::readRegularFile(file, 64 * 1024);
    if (const auto* text = std::get_if<std::string>(&content)) return *text;
    return {};
}

std::string trimmed(std::string text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    std::size_t start = 0;
    while (start < text.size() && std::isspace(static_cast<unsigned char>(text[start]))) ++start;
    return text.substr(start);
}

struct Finished {
    bool timedOut = false;
    int status = 0;
};

// Runs the program in its own process group with output to a file, and
// waits at most `seconds`; on time-out the whole group is ended.
Finished run(const std::vector<std::string>& arguments, const fs::path& output, double seconds) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);

    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    const int spawned = ::posix_spawn(&child, argv[0], &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (spawned != 0) throw std::runtime_error("LibreOffice couldn't be started.");

    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (int status = 0;;) {
        const pid_t done = ::waitpid(child, &status, WNOHANG);
        if (done == child) {
            // LibreOffice's helpers go with it.
            ::kill(-child, SIGKILL);
            return {false, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status)};
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            ::kill(-child, SIGKILL);
            ::waitpid(child, &status, 0);
            return {true, 0};
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

} // namespace

LibreOfficeExporter::LibreOfficeExporter(std::optional<fs::path> program, double timeoutSeconds)
    : program_(program ? std::move(program) : findOnPath("soffice")), timeoutSeconds_(timeoutSeconds) {}

bool LibreOfficeExporter::applicationAvailable(PresentationKind) const {
    return program_ && ::access(program_->c_str(), X_OK) == 0 && fs::is_regular_file(*program_);
}

std::string LibreOfficeExporter::exportPDF(const fs::path& from, PresentationKind sourceKind) {
    const std::string name = applicationName(sourceKind);
    if (!applicationAvailable(sourceKind)) throw std::runtime_error(notInstalled(name));

    WorkFolder work;
    // A plain name for LibreOffice, whatever the operator's file is called.
    std::string extension = from.extension().string();
    const fs::path source = work.path() / ("Static Export" + extension);
    fs::copy_file(from, source);
    const fs::path outputFolder = work.path() / "out";
    fs::create_directories(outputFolder);
    const fs::path log = work.path() / "log.txt";

    const Finished finished =
        run({program_->string(), "-env:UserInstallation=file://" + (work.path() / "profile").string(), "--headless",
             "--invisible", "--norestore", "--nolockcheck", "--nodefault", "--convert-to", "pdf", "--outdir",
             outputFolder.string(), source.string()},
            log, timeoutSeconds_);
    if (finished.timedOut) {
        throw std::runtime_error("Static export timed out after " +
                                 std::to_string(static_cast<int>(std::lround(timeoutSeconds_))) + " seconds");
    }
    const std::string text = trimmed(readText(log));
    if (finished.status != 0) {
        throw std::runtime_error(text.empty() ? "Automation exited with status " + std::to_string(finished.status)
                                              : name + " static export failed: " + text);
    }
    const fs::path pdf = outputFolder / "Static Export.pdf";
    if (!fs::is_regular_file(pdf)) throw std::runtime_error(name + " could not export a static PDF: " + text);
    auto content = fileAccess::readRegularFile(pdf, std::size_t{2} << 30);
    auto* bytes = std::get_if<std::string>(&content);
    if (!bytes) throw std::runtime_error(name + " could not export a static PDF: the PDF is too large.");
    return std::move(*bytes);
}

} // namespace velarion
