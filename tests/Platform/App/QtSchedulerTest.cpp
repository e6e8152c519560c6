// The Scheduler on Qt's event loop keeps the order the engine relies on.

#include "Platform/App/QtScheduler.h"

#include "Live/OperatorKeyboard.h"
#include "Platform/App/QtKeyCodes.h"
#include "ScopedEnvironment.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace velarion {
namespace {

void spin(double seconds) {
    QEventLoop loop;
    QTimer::singleShot(static_cast<int>(seconds * 1000), &loop, &QEventLoop::quit);
    loop.exec();
}

TEST(QtSchedulerTest, RunsByDueTimeThenByOrderAndNeverEarly) {
    QtScheduler scheduler;
    std::vector<std::string> ran;
    std::vector<double> lateness;
    const double start = scheduler.now();
    scheduler.after(0.03, [&] {
        ran.push_back("c");
        lateness.push_back(scheduler.now() - start - 0.03);
    });
    scheduler.after(0.01, [&] {
        ran.push_back("a");
        lateness.push_back(scheduler.now() - start - 0.01);
        // Scheduled by a task for the same moment as a later one: it runs
        // first, being due first.
        scheduler.after(0.01, [&] { ran.push_back("b"); });
    });
    const TaskHandle cancelled = scheduler.after(0.015, [&] { ran.push_back("never"); });
    cancelled.cancel();
    scheduler.after(0, [&] { ran.push_back("now-1"); });
    scheduler.post([&] { ran.push_back("now-2"); });
    spin(0.08);
    EXPECT_EQ(ran, (std::vector<std::string>{"now-1", "now-2", "a", "b", "c"}));
    for (double late : lateness) EXPECT_GE(late, 0) << "a task never runs before it is due";
}

TEST(QtSchedulerTest, PostsFromOtherThreadsRunOnTheMainThreadInOrder) {
    QtScheduler scheduler;
    const auto mainThread = std::this_thread::get_id();
    std::vector<int> ran;
    bool allOnMain = true;
    std::thread poster([&] {
        for (int i = 0; i < 100; ++i)
            scheduler.post([&, i] {
                ran.push_back(i);
                allOnMain = allOnMain && std::this_thread::get_id() == mainThread;
            });
    });
    poster.join();
    spin(0.05);
    ASSERT_EQ(ran.size(), 100u);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(ran[static_cast<std::size_t>(i)], i);
    EXPECT_TRUE(allOnMain);
}

TEST(QtSchedulerTest, NothingRunsAfterDestructionAndTheCalendarIsTheSystems) {
    bool ran = false;
    {
        QtScheduler scheduler;
        scheduler.after(0.01, [&] { ran = true; });
        scheduler.post([&] { ran = true; });
    }
    spin(0.03);
    EXPECT_FALSE(ran);

    QtScheduler scheduler;
    {
        const testing::ScopedEnvironment zone("TZ", "Europe/Berlin");
        tzset();
        // 2026-07-01 12:00 UTC is summer time there; 2026-01-15 is not.
        EXPECT_EQ(scheduler.calendar().utcOffsetSeconds(1782907200), 7200);
        EXPECT_EQ(scheduler.calendar().utcOffsetSeconds(1768478400), 3600);
    }
    tzset();
}

// Qt's key events through the one mapping into the operator's key table:
// the keys an operator presses on a Linux keyboard land on their actions.
using enum OperatorKeyAction;

TEST(QtKeyCodes, OperatorKeysOnALinuxKeyboard) {
    struct Row {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        std::optional<OperatorKeyAction> action;
    };
    const Qt::KeyboardModifiers none;
    const Row rows[] = {
        {Qt::Key_Space, none, go},
        {Qt::Key_Escape, none, panic},
        {Qt::Key_Return, none, armNext},
        {Qt::Key_Enter, Qt::KeypadModifier, armNext},
        {Qt::Key_Right, none, nextSlide},
        {Qt::Key_PageDown, none, nextSlide},
        {Qt::Key_Left, Qt::KeypadModifier, previousSlide},
        {Qt::Key_PageUp, none, previousSlide},
        {Qt::Key_Period, none, toggleSafeSlide},
        {Qt::Key_S, Qt::ShiftModifier, toggleSafeSlide},
        {Qt::Key_Period, Qt::KeypadModifier, sectionShortcut},
        {Qt::Key_Down, none, selectNext},
        {Qt::Key_Up, none, selectPrevious},
        {Qt::Key_V, none, sectionShortcut},
        {Qt::Key_F5, none, sectionShortcut},
        {Qt::Key_Space, Qt::ControlModifier, std::nullopt},
        {Qt::Key_Escape, Qt::ControlModifier, std::nullopt},
        {Qt::Key_Space, Qt::AltModifier, go},
    };
    for (const Row& row : rows) {
        const OperatorKeyContext context{.hasShow = true, .isMainWindow = true,
                                         .hasCommandModifier = hasCommandModifier(row.modifiers)};
        EXPECT_EQ(OperatorKeyboard::action(keyCodeFromQt(row.key, row.modifiers), context), row.action)
            << "Qt key " << std::hex << row.key;
    }
}

} // namespace
} // namespace velarion
