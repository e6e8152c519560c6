#include "QuitSignals.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace velarion {

namespace {

int signalPipe[2] = {-1, -1};

void onSignal(int signal) {
    const auto byte = static_cast<char>(signal);
    [[maybe_unused]] const auto written = write(signalPipe[1], &byte, 1);
}

} // namespace

QuitSignals::QuitSignals(std::function<void(int)> onQuit) : onQuit_(std::move(onQuit)) {
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    notifier_ = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] {
        char byte = 0;
        while (read(signalPipe[0], &byte, 1) == 1) {
        }
        if (onQuit_) onQuit_(static_cast<unsigned char>(byte));
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

QuitSignals::~QuitSignals() {
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    notifier_.reset();
    for (int& fd : signalPipe) {
        if (fd >= 0) close(fd);
        fd = -1;
    }
}

} // namespace velarion
