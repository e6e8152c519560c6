#pragma once
// QtScheduler: the engine's Scheduler on the Qt event loop of the main
// thread. It keeps the same queue as the virtual-time scheduler of the
// tests (ScheduledTasks) and arms one precise timer for its earliest task,
// so tasks run in the same order: by due time, ties in the order scheduled,
// tasks scheduled by tasks included.
//
// Contract: as Scheduler.
// - Make it on the main thread once a QCoreApplication exists; destroy it
//   there. `post` may be called from any thread; the rest on the main thread.
// - `now` is monotonic (the steady clock); `wallNow` is the system clock;
//   `calendar` follows the system time zone.
// - After destruction nothing queued runs.

#include "LiveEngine/ports/ScheduledTasks.h"
#include "LiveEngine/ports/Scheduler.h"
#include "Platform/App/SystemCalendar.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <vector>

namespace velarion {

class QtScheduler final : public QObject, public Scheduler {
public:
    QtScheduler();
    ~QtScheduler() override;

    double now() const override;
    double wallNow() const override;
    const Calendar& calendar() const override { return calendar_; }

    void post(Task task) override;
    TaskHandle after(double seconds, Task task) override;

private:
    void takePosted();
    void runDue();
    void arm();

    std::chrono::steady_clock::time_point origin_;
    SystemCalendar calendar_;
    QTimer timer_;
    ScheduledTasks tasks_;
    bool running_ = false;

    std::mutex postedLock_;
    std::vector<Task> posted_;
    bool wakePending_ = false;
};

} // namespace velarion
