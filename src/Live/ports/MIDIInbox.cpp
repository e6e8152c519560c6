#include "Live/ports/MIDIInbox.h"

#include <array>

namespace velarion {

std::shared_ptr<MIDIInbox> MIDIInbox::make(Scheduler& scheduler, Deliver deliver,
                                           std::function<void()> onOverflow) {
    return std::shared_ptr<MIDIInbox>(new MIDIInbox(scheduler, std::move(deliver), std::move(onOverflow)));
}

MIDIInbox::MIDIInbox(Scheduler& scheduler, Deliver deliver, std::function<void()> onOverflow)
    : scheduler_(scheduler), deliver_(std::move(deliver)), onOverflow_(std::move(onOverflow)),
      ring_(capacity) {}

void MIDIInbox::receive(std::span<const std::uint8_t> bytes, std::uint32_t sourceID) {
    if (closed_.load(std::memory_order_relaxed)) return;
    bool wake = false;
    midiMessage::parse(bytes, [&](const MIDIMessage& message) {
        std::lock_guard guard(lock_);
        if (count_ == capacity) {
            ++dropped_;
            return;
        }
        ring_[(head_ + count_) % capacity] = Entry{message, sourceID};
        ++count_;
        if (!drainPosted_) drainPosted_ = wake = true;
    });
    if (wake) scheduler_.post([weak = weak_from_this()] {
        if (auto inbox = weak.lock()) inbox->drain();
    });
}

void MIDIInbox::drain() {
    std::array<Entry, batchSize> batch;
    std::size_t taken = 0;
    bool more = false;
    bool overflowed = false;
    {
        std::lock_guard guard(lock_);
        while (taken < batchSize && count_ > 0) {
            batch[taken++] = ring_[head_];
            head_ = (head_ + 1) % capacity;
            --count_;
        }
        more = count_ > 0;
        if (!more) drainPosted_ = false;
        overflowed = dropped_ > 0;
    }
    if (overflowed && !overflowReported_ && !closed_) {
        overflowReported_ = true;
        if (onOverflow_) onOverflow_();
    }
    for (std::size_t i = 0; i < taken && !closed_; ++i) deliver_(batch[i].message, batch[i].sourceID);
    // The rest waits for the next turn, behind whatever else the loop has.
    if (more && !closed_) scheduler_.post([weak = weak_from_this()] {
        if (auto inbox = weak.lock()) inbox->drain();
    });
}

void MIDIInbox::close() { closed_ = true; }

std::uint64_t MIDIInbox::droppedCount() const {
    std::lock_guard guard(lock_);
    return dropped_;
}

} // namespace velarion
