#pragma once
// QuitSignals: SIGINT and SIGTERM become one call on the main loop, so a
// quit by signal takes the same orderly path as any other: the last save,
// the session key removed, the engine shut down. The handler only writes a
// byte to a pipe; Qt watches the pipe's other end.
//
// Contract: one instance, made on the main thread after the Qt application.
// A second signal while the first is handled changes nothing.

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace velarion {

class QuitSignals {
public:
    explicit QuitSignals(std::function<void(int signal)> onQuit);
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    std::function<void(int)> onQuit_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace velarion
