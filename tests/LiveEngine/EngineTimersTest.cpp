// Timers and messages.

#include "EngineFixture.h"
#include "VirtualScheduler.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace velarion::testing {
namespace {

using Timers = EngineFixture;

TEST_F(Timers, ACountdownRunsIntoOverrunAndReleasesItsFollowerOnce) {
    TimerCue countdown{CountdownMode{10}, "Talk", 3, true, true, std::nullopt};
    add("Speaker", countdown);
    image("Applause", Follow::afterPrevious);
    start();
    go();
    scheduler.advance(6.05);
    ASSERT_TRUE(engine->state().timer);
    EXPECT_NEAR(engine->state().timer->valueSeconds, 4, 1e-6) << "as of the last tick";
    EXPECT_FALSE(engine->state().timer->isWarning);
    scheduler.advance(1.5);
    EXPECT_TRUE(engine->state().timer->isWarning);
    EXPECT_FALSE(runOf("Applause"));
    scheduler.advance(2.6);
    EXPECT_TRUE(engine->state().timer->isOverrun);
    EXPECT_TRUE(runOf("Applause"));
    EXPECT_TRUE(runOf("Speaker")) << "a finished countdown stays, showing the overrun";
    perform(command::Stop{runOf("Applause")->id});
    scheduler.advance(5);
    EXPECT_FALSE(runOf("Applause")) << "released once only";

    const double before = engine->state().timer->valueSeconds;
    perform(command::AdjustTimer{60});
    EXPECT_NEAR(engine->state().timer->valueSeconds, before + 60, 0.11);
    perform(command::Stop{runOf("Speaker")->id});
    EXPECT_FALSE(engine->state().timer);
}

TEST_F(Timers, PausingTheTimerRunFreezesItAndResetStartsOver) {
    add("Clock", TimerCue{CountUpMode{}, std::nullopt, 0, true, false, std::nullopt});
    start();
    go();
    scheduler.advance(5);
    perform(command::ToggleTimerPause{});
    EXPECT_TRUE(runOf("Clock")->isPaused());
    scheduler.advance(5);
    EXPECT_NEAR(engine->state().timer->valueSeconds, 5, 1e-9);
    EXPECT_TRUE(engine->state().timer->isPaused);
    perform(command::ToggleTimerPause{});
    scheduler.advance(1);
    EXPECT_NEAR(engine->state().timer->valueSeconds, 6, 1e-9);
    perform(command::ResetTimer{});
    EXPECT_NEAR(engine->state().timer->valueSeconds, 0, 1e-9);
}

TEST(TimerClock, CountingToATimeCrossesMidnightInTheOperatorsZone) {
    // 23:00 in a zone five hours behind UTC is 04:00 UTC the next day.
    const FixedOffsetCalendar newYork(-5 * 3600);
    const double elevenPM = 1'773'100'800 + 4 * 3600; // 2026-03-10 04:00 UTC
    Cue cue;
    cue.name = "Midnight";
    const TimerCue toMidnight{CountToMode{0}, std::nullopt, 60, true, false, std::nullopt};
    TimerRun run(Uuid::random(), cue, toMidnight, 0, elevenPM, newYork);
    EXPECT_NEAR(run.value(0, elevenPM), 3600, 1e-6) << "midnight tomorrow, not 23 hours ago";

    // Ninety minutes past a target still counts as late, not as tomorrow.
    const TimerCue toTen{CountToMode{22 * 60}, std::nullopt, 60, true, false, std::nullopt};
    TimerRun late(Uuid::random(), cue, toTen, 0, elevenPM + 1800, newYork);
    EXPECT_NEAR(late.value(0, elevenPM + 1800), -5400, 1e-6);
    const TimerState state = late.snapshot(0, elevenPM + 1800);
    EXPECT_TRUE(state.isOverrun);
    EXPECT_FALSE(state.isWarning);
    EXPECT_EQ(state.endsAt, elevenPM - 3600);
}

// Central Europe: one hour ahead of UTC, two from 01:00 UTC on 29 March 2026.
class SummerTimeCalendar final : public Calendar {
public:
    static constexpr double change = 1'774'746'000;
    std::int64_t utcOffsetSeconds(double unixSeconds) const override {
        return unixSeconds < change ? 3600 : 7200;
    }
};

TEST(TimerClock, CountingToATimeOnTheDayTheClocksGoForwardFollowsTheWallClock) {
    const SummerTimeCalendar berlin;
    const double halfPastOne = SummerTimeCalendar::change - 1800; // 01:30 local, before the change
    Cue cue;
    const TimerCue toFour{CountToMode{4 * 60}, std::nullopt, 60, true, false, std::nullopt};
    TimerRun run(Uuid::random(), cue, toFour, 0, halfPastOne, berlin);
    // 04:00 on the clocks is 02:00 UTC: an hour and a half away, not two and a half.
    EXPECT_NEAR(run.value(0, halfPastOne), 5400, 1e-6);
}

TEST_F(Timers, ANewTimerTakesTheOldOnesRunAndCardAway) {
    add("Walk-in", TimerCue{CountdownMode{600}, std::nullopt, 0, true, true, std::nullopt});
    add("Talk", TimerCue{CountdownMode{60}, std::nullopt, 0, true, true, std::nullopt});
    start();
    go();
    goLater();
    scheduler.advance(1);
    EXPECT_EQ(runningNames(), std::vector<std::string>{"Talk"});
    EXPECT_EQ(engine->state().timer->name, "Talk");
    EXPECT_EQ(engine->stack().scene().layers.size(), 1u) << "one card, the new timer's";
    EXPECT_EQ(engine->stack().runID(LayerKind::graphics), runOf("Talk")->id);
}

TEST_F(Timers, MessagesReachTheirTargetAndExpire) {
    add("Welcome", MessageCue{"Welcome!", MessageTarget::audience, 5});
    graphic("Next", std::nullopt, Follow::afterPrevious);
    start();
    go();
    EXPECT_EQ(engine->state().audienceMessage, "Welcome!");
    EXPECT_TRUE(logged("Audience message: Welcome!"));
    EXPECT_FALSE(runOf("Welcome")) << "the cue ends at once";
    EXPECT_TRUE(runOf("Next"));
    EXPECT_TRUE(engine->stack().layerID(LayerKind::messages));
    scheduler.advance(5.1);
    EXPECT_FALSE(engine->state().audienceMessage);
    EXPECT_FALSE(engine->stack().layerID(LayerKind::messages));

    perform(command::SendMessage{"Wrap up", MessageTarget::stage});
    EXPECT_EQ(engine->state().confidence.stageMessage, "Wrap up");
    EXPECT_FALSE(engine->stack().layerID(LayerKind::messages)) << "stage messages draw nothing";
    perform(command::SendMessage{"", MessageTarget::stage});
    EXPECT_FALSE(engine->state().stageMessage);
}

TEST_F(Timers, AFullScreenCountdownBringsItsBackdropAndStandbyPicturesArrive) {
    TimerCue full{CountdownMode{60}, std::nullopt, 0, true, true, std::nullopt};
    full.look = CountdownLook{CountdownLayout::fullScreen, backdrop::Color{0x0000FF}, std::nullopt};
    add("Countdown", full);
    image("Poster");
    start();
    go();
    ASSERT_TRUE(engine->stack().layerID(LayerKind::background));
    EXPECT_EQ(engine->stack().runID(LayerKind::background), runOf("Countdown")->id);
    EXPECT_EQ(cards.calls.back().card, "countdownFull");

    std::optional<StillImage> standby;
    bool answered = false;
    engine->standbyImage(cueNamed("Poster").id, [&](std::optional<StillImage> picture) {
        answered = true;
        standby = std::move(picture);
    });
    EXPECT_FALSE(answered) << "the answer comes on the main loop, not inside the call";
    scheduler.runDue();
    EXPECT_TRUE(answered && standby);
}

// The virtual-time scheduler every engine test stands on: if it ran tasks out
// of order or at the wrong moment, every timing test above it would lie.
TEST(VirtualScheduler, RunsDueTasksInTimeOrderAtTheirOwnMoment) {
    VirtualScheduler scheduler;
    std::vector<std::string> log;
    auto note = [&](std::string what) {
        return [&, what] { log.push_back(what + "@" + std::to_string(scheduler.now())); };
    };
    scheduler.after(2, note("b"));
    scheduler.after(1, note("a"));
    scheduler.after(2, note("c")); // same moment: scheduling order
    scheduler.after(5, note("late"));
    scheduler.advance(3);
    EXPECT_EQ(log, (std::vector<std::string>{"a@1.000000", "b@2.000000", "c@2.000000"}));
    EXPECT_EQ(scheduler.now(), 3);
    EXPECT_EQ(scheduler.pendingCount(), 1u);
    scheduler.advance(2);
    EXPECT_EQ(log.back(), "late@5.000000");
}

TEST(VirtualScheduler, PostFromAnotherThreadRunsOnTheNextAdvance) {
    VirtualScheduler scheduler;
    int count = 0;
    std::thread worker([&] {
        for (int i = 0; i < 100; ++i) scheduler.post([&] { ++count; });
    });
    worker.join();
    EXPECT_EQ(count, 0);
    scheduler.runDue();
    EXPECT_EQ(count, 100);
}

} // namespace
} // namespace velarion::testing
