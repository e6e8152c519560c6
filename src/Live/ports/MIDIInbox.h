#pragma once
// MIDIInbox: how received MIDI bytes cross from a driver's thread to the
// main loop. The driver's thread only parses and queues; the main loop takes
// the queue in batches. The queue is bounded: a device that floods it loses
// what doesn't fit (said once through `onOverflow`), and at most one drain
// task waits on the main loop at any time, so no amount of input can bury
// the loop in work.
//
// Contract.
// - `receive` may be called from any thread, concurrently; it takes one
//   short lock and never waits for the main loop. It allocates nothing
//   except the post that wakes the main loop.
// - `deliver` and `onOverflow` run on the main loop, in arrival order.
// - Held by shared pointer: queued drain tasks hold it weakly. After `close`
//   (main thread) nothing more is delivered, queued messages included.

#include "LiveEngine/ports/Scheduler.h"
#include "LiveModel/MIDIControl.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

namespace velarion {

class MIDIInbox : public std::enable_shared_from_this<MIDIInbox> {
public:
    // Far above what a person can press, well below what stalls a loop.
    static constexpr std::size_t capacity = 1024;
    // Messages handled per turn of the main loop.
    static constexpr std::size_t batchSize = 128;

    // What an input says, once, when it had to leave messages out.
    static constexpr std::string_view floodNotice =
        "A MIDI device sends more than Velarion can take; some of its messages were left out.";

    using Deliver = std::function<void(const MIDIMessage&, std::uint32_t sourceID)>;

    static std::shared_ptr<MIDIInbox> make(Scheduler& scheduler, Deliver deliver,
                                           std::function<void()> onOverflow);

    // Any thread.
    void receive(std::span<const std::uint8_t> bytes, std::uint32_t sourceID);
    // Main thread.
    void close();
    // Messages dropped so far because the queue was full.
    std::uint64_t droppedCount() const;

private:
    struct Entry {
        MIDIMessage message;
        std::uint32_t sourceID = 0;
    };

    MIDIInbox(Scheduler& scheduler, Deliver deliver, std::function<void()> onOverflow);
    void drain();

    Scheduler& scheduler_;
    Deliver deliver_;
    std::function<void()> onOverflow_;
    std::atomic<bool> closed_{false};
    bool overflowReported_ = false; // main thread

    mutable std::mutex lock_;
    std::vector<Entry> ring_; // `capacity` entries, allocated once
    std::size_t head_ = 0;
    std::size_t count_ = 0;
    std::uint64_t dropped_ = 0;
    bool drainPosted_ = false;
};

} // namespace velarion
