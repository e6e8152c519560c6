#include "ForkedChild.h"

#include <cerrno>
#include <csignal>
#include <exception>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velarion::testing {

std::string runInForkedChild(const std::function<std::string()>& body) {
    int pipeEnds[2];
    if (::pipe(pipeEnds) != 0) return "(no pipe)";
    const pid_t child = ::fork();
    if (child < 0) return "(no fork)";
    if (child == 0) {
        ::close(pipeEnds[0]);
        std::string text;
        try {
            text = body();
        } catch (const std::exception& error) {
            text = std::string("(threw) ") + error.what();
        }
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t wrote = ::write(pipeEnds[1], text.data() + sent, text.size() - sent);
            if (wrote <= 0) break;
            sent += static_cast<std::size_t>(wrote);
        }
        ::_exit(0);
    }
    ::close(pipeEnds[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = ::read(pipeEnds[0], buffer, sizeof buffer)) != 0;) {
        if (got < 0) {
            if (errno == EINTR) continue;
            break;
        }
        text.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(pipeEnds[0]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return "(child died) " + text;
    return text;
}

void limitFileSizeBytes(long bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace velarion::testing
