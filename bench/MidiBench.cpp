// From a MIDI message arriving at the input to `perform` on the main loop:
// a driver thread hands the bytes over exactly as RtMidi's receive callback
// does (parse into the inbox, post), and the Qt main loop, idle until then,
// runs the control center's matcher and its perform hook.
//
// Manual time: the span from the hand-over to the hook, taken on the
// steady clock in the two threads. A second case goes the whole way from a
// device on a private JACK server.

#include "Live/MIDIControlCenter.h"
#include "Live/ports/ManualMIDIInput.h"
#include "Platform/App/QtScheduler.h"
#include "Platform/MIDI/RtMidiInput.h"
#include "PrivateJackServer.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <RtMidi.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace velarion {
namespace {

using Clock = std::chrono::steady_clock;

// The driver's thread: sends one message each time it is asked, a little
// after the main loop has gone idle.
class Driver {
public:
    explicit Driver(ManualMIDIInput& input) : input_(input), thread_([this] { run(); }) {}
    ~Driver() {
        {
            std::lock_guard guard(lock_);
            quit_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }
    void sendSoon() {
        std::lock_guard guard(lock_);
        ++asked_;
        wake_.notify_all();
    }
    Clock::time_point sentAt() const { return sentAt_.load(); }

private:
    void run() {
        std::uint64_t done = 0;
        for (;;) {
            std::unique_lock guard(lock_);
            wake_.wait(guard, [&] { return quit_ || asked_ > done; });
            if (quit_) return;
            ++done;
            guard.unlock();
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            static constexpr std::uint8_t press[] = {0x90, 60, 100};
            sentAt_ = Clock::now();
            input_.send(press, 1);
        }
    }

    ManualMIDIInput& input_;
    std::mutex lock_;
    std::condition_variable wake_;
    std::uint64_t asked_ = 0;
    bool quit_ = false;
    std::atomic<Clock::time_point> sentAt_{};
    std::thread thread_;
};

void BM_MessageToPerform(benchmark::State& state) {
    QtScheduler scheduler;
    ManualMIDIInput* input = nullptr;
    MIDISettings settings;
    settings.bind(MIDIAction::go, midi::NoteTrigger{1, 60});
    MIDIControlCenter center(scheduler, settings, [&] {
        auto made = std::make_unique<ManualMIDIInput>(scheduler);
        input = made.get();
        return made;
    });
    QEventLoop loop;
    Clock::time_point performedAt;
    center.perform = [&](const EngineCommand&) {
        performedAt = Clock::now();
        loop.quit();
    };
    center.start();
    Driver driver(*input);
    std::vector<double> spans;
    for (auto _ : state) {
        driver.sendSoon();
        loop.exec();
        spans.push_back(std::chrono::duration<double>(performedAt - driver.sentAt()).count());
        state.SetIterationTime(spans.back());
    }
    // The figure that matters is the usual one, and how bad the bad ones are.
    std::sort(spans.begin(), spans.end());
    state.counters["median_us"] = spans[spans.size() / 2] * 1e6;
    state.counters["p99_us"] = spans[spans.size() * 99 / 100] * 1e6;
}
BENCHMARK(BM_MessageToPerform)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(3000);

// The whole way on a private JACK server (dummy driver, 128 frames at
// 48 kHz): a device's virtual port sends, the server carries it to
// RtMidiInput at its next period, and the main loop performs. The server's
// period, not Velarion, sets most of this figure.
void BM_JackDeviceToPerform(benchmark::State& state) {
    std::string whyNot;
    auto server = testing::PrivateJackServer::start(whyNot);
    if (!server) {
        state.SkipWithError(whyNot.c_str());
        return;
    }
    QtScheduler scheduler;
    MIDISettings settings;
    settings.bind(MIDIAction::go, midi::NoteTrigger{1, 60});
    MIDIControlCenter center(scheduler, settings, [&] {
        return std::make_unique<RtMidiInput>(scheduler, RtMidiInput::Options{.backend = RtMidiInput::Backend::jack,
                                                                             .rescanSeconds = 0.1});
    });
    QEventLoop loop;
    Clock::time_point performedAt;
    center.perform = [&](const EngineCommand&) {
        performedAt = Clock::now();
        loop.quit();
    };
    RtMidiOut device(RtMidi::UNIX_JACK, "Bench");
    device.openVirtualPort("Pedal");
    center.start();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (!center.sources().empty()) loop.quit();
    });
    poll.start(20);
    QTimer::singleShot(10'000, &loop, [&] { loop.quit(); });
    loop.exec();
    poll.stop();
    if (center.sources().empty()) {
        state.SkipWithError("the device never showed up");
        return;
    }
    static constexpr unsigned char press[] = {0x90, 60, 100};
    std::vector<double> spans;
    for (auto _ : state) {
        std::this_thread::sleep_for(std::chrono::microseconds(500));
        const auto sentAt = Clock::now();
        device.sendMessage(press, sizeof press);
        loop.exec();
        spans.push_back(std::chrono::duration<double>(performedAt - sentAt).count());
        state.SetIterationTime(spans.back());
    }
    std::sort(spans.begin(), spans.end());
    state.counters["median_us"] = spans[spans.size() / 2] * 1e6;
    state.counters["p99_us"] = spans[spans.size() * 99 / 100] * 1e6;
}
BENCHMARK(BM_JackDeviceToPerform)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(500);

} // namespace
} // namespace velarion

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
