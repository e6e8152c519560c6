#include "Platform/Gst/GstWorkers.h"

#include <algorithm>

namespace velarion::gst {

void BusWatch::remove() {
    if (source_ == nullptr) return;
    g_source_destroy(source_);
    g_source_unref(source_);
    source_ = nullptr;
}

GstWorkers& GstWorkers::shared() {
    static GstWorkers workers;
    return workers;
}

GstWorkers::GstWorkers() {
    ensureInitialized();
    context_ = g_main_context_new();
    loop_ = g_main_loop_new(context_, FALSE);
    busThread_ = std::thread([this] {
        g_main_context_push_thread_default(context_);
        g_main_loop_run(loop_);
        g_main_context_pop_thread_default(context_);
    });
    reaperThread_ = std::thread([this] { reap(); });
}

GstWorkers::~GstWorkers() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    reaperThread_.join();
    g_main_loop_quit(loop_);
    busThread_.join();
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
}

BusWatch GstWorkers::watch(GstBus* bus, GstBusFunc callback, gpointer data, GDestroyNotify notify) {
    GSource* source = gst_bus_create_watch(bus);
    g_source_set_callback(source, reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(callback)),
                          data, notify);
    g_source_attach(source, context_);
    return BusWatch(source);
}

void GstWorkers::retire(Element pipeline, double afterSeconds) {
    const auto due = std::chrono::steady_clock::now() +
                     std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                         std::chrono::duration<double>(std::max(afterSeconds, 0.0)));
    {
        std::lock_guard lock(mutex_);
        // Kept in order of due time, so the first is always the next to go.
        auto at = std::find_if(retired_.begin(), retired_.end(),
                               [&](const Retired& other) { return other.due > due; });
        retired_.insert(at, Retired{due, std::move(pipeline)});
    }
    wake_.notify_all();
}

void GstWorkers::reap() {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (retired_.empty()) {
            if (stopping_) return;
            wake_.wait(lock);
            continue;
        }
        // At exit nothing waits for its fade any more.
        if (!stopping_ && retired_.front().due > std::chrono::steady_clock::now()) {
            wake_.wait_until(lock, retired_.front().due);
            continue;
        }
        Element pipeline = std::move(retired_.front().pipeline);
        retired_.pop_front();
        lock.unlock();
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
        pipeline = Element();
        lock.lock();
    }
}

} // namespace velarion::gst
