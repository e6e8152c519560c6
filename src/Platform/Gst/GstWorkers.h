#pragma once
// GstWorkers: the two background threads every GStreamer adapter shares.
//
// - The bus thread runs a GLib main context that serves the buses of players
//   and device monitors. A loop's seam, an end or a meter reading is handled
//   there at once, however busy the main loop is, and never on a streaming
//   thread (a seek from a streaming thread can deadlock).
// - The reaper thread takes pipelines down. Going to NULL waits on the sound
//   server and on streaming threads, which the main loop must never do.
//
// Contract.
// - `shared()` is made on first use and lives until the process exits.
// - `watch` may be called from any thread. The callback runs on the bus
//   thread; `notify` runs once the watch is removed and no dispatch is left
//   running, so the data it frees is never used after.
// - `retire` keeps a pipeline playing for `afterSeconds` (so a fade already
//   heading to silence is heard to its end) and then sets it to NULL and
//   lets it go. Any thread.

#include "Platform/Gst/GstHandles.h"

#include <condition_variable>
#include <chrono>
#include <deque>
#include <mutex>
#include <thread>

namespace velarion::gst {

class BusWatch {
public:
    BusWatch() = default;
    explicit BusWatch(GSource* source) : source_(source) {}
    BusWatch(BusWatch&& other) noexcept : source_(std::exchange(other.source_, nullptr)) {}
    BusWatch& operator=(BusWatch&& other) noexcept {
        std::swap(source_, other.source_);
        return *this;
    }
    BusWatch(const BusWatch&) = delete;
    BusWatch& operator=(const BusWatch&) = delete;
    ~BusWatch() { remove(); }
    void remove();

private:
    GSource* source_ = nullptr;
};

class GstWorkers {
public:
    static GstWorkers& shared();
    ~GstWorkers();
    GstWorkers(const GstWorkers&) = delete;
    GstWorkers& operator=(const GstWorkers&) = delete;

    BusWatch watch(GstBus* bus, GstBusFunc callback, gpointer data, GDestroyNotify notify);
    void retire(Element pipeline, double afterSeconds);

private:
    GstWorkers();
    void reap();

    GMainContext* context_ = nullptr;
    GMainLoop* loop_ = nullptr;
    std::thread busThread_;

    struct Retired {
        std::chrono::steady_clock::time_point due;
        Element pipeline;
    };
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Retired> retired_;
    bool stopping_ = false;
    std::thread reaperThread_;
};

} // namespace velarion::gst
