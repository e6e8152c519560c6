#include "Platform/App/ProcessControl.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <fcntl.h>
#include <signal.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace velarion {

ProcessControl::ProcessControl(std::vector<std::string> relaunchArguments)
    : relaunchArguments_(std::move(relaunchArguments)) {}

void ProcessControl::terminate() {
    QMetaObject::invokeMethod(QCoreApplication::instance(), [] { QCoreApplication::quit(); },
                              Qt::QueuedConnection);
}

void ProcessControl::relaunchAfterExit(const std::optional<std::filesystem::path>& package) {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) throw std::runtime_error("This program's own path can't be read.");
    // $0 is the program, the rest are its arguments.
    const std::string script = "while /bin/kill -0 " + std::to_string(getpid()) +
                               " 2>/dev/null; do sleep 0.2; done; exec \"$0\" \"$@\"";
    std::vector<std::string> arguments{"/bin/sh", "-c", script, executable.string()};
    arguments.insert(arguments.end(), relaunchArguments_.begin(), relaunchArguments_.end());
    if (package) arguments.push_back(package->string());

    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    // Two forks, so the shell belongs to nobody here and outlives us unreaped.
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("The restart couldn't be arranged.");
    if (child == 0) {
        if (fork() != 0) _exit(0);
        setsid();
        const int null = open("/dev/null", O_RDWR);
        if (null >= 0) {
            dup2(null, STDIN_FILENO);
            dup2(null, STDOUT_FILENO);
            dup2(null, STDERR_FILENO);
        }
        for (int fd = 3; fd < 1024; ++fd) close(fd);
        signal(SIGPIPE, SIG_DFL);
        execv("/bin/sh", argv.data());
        _exit(127);
    }
    waitpid(child, nullptr, 0);
}

} // namespace velarion
