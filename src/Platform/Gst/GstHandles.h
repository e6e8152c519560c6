#pragma once
// Owning handles for GStreamer and GLib objects: each reference we hold is
// released exactly once, by a destructor, never by hand.
//
// Contract.
// - `GstRef<T>` owns one reference to a GstObject-derived T (elements, pads,
//   buses, device monitors). Construct with `adopt` for a reference we were
//   given (a "transfer full" return), with `retain` to take a new one.
//   A floating reference (a fresh element) is sunk by `adopt`, so the handle
//   always owns a real reference.
// - `GstMiniRef<T>` does the same for mini objects (messages, caps, buffers,
//   samples, queries, events).
// - `GCharPtr` and `GErrorPtr` free what GLib allocated.
// - Thread: a handle is a value; use it from one thread at a time, as the
//   object itself allows.

#include <gst/gst.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace velarion::gst {

template <typename T>
class GstRef {
public:
    GstRef() = default;
    static GstRef adopt(T* object) {
        if (object != nullptr && g_object_is_floating(object)) gst_object_ref_sink(object);
        return GstRef(object);
    }
    static GstRef retain(T* object) {
        if (object != nullptr) gst_object_ref(object);
        return GstRef(object);
    }
    GstRef(const GstRef& other) : object_(other.object_) {
        if (object_ != nullptr) gst_object_ref(object_);
    }
    GstRef(GstRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GstRef& operator=(GstRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~GstRef() {
        if (object_ != nullptr) gst_object_unref(object_);
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    GstElement* element() const { return GST_ELEMENT(object_); }
    // Gives up ownership, for calls that take a reference ("transfer full").
    T* release() { return std::exchange(object_, nullptr); }

private:
    explicit GstRef(T* object) : object_(object) {}
    T* object_ = nullptr;
};

template <typename T>
class GstMiniRef {
public:
    GstMiniRef() = default;
    static GstMiniRef adopt(T* object) { return GstMiniRef(object); }
    GstMiniRef(GstMiniRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GstMiniRef& operator=(GstMiniRef&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    GstMiniRef(const GstMiniRef&) = delete;
    GstMiniRef& operator=(const GstMiniRef&) = delete;
    ~GstMiniRef() {
        if (object_ != nullptr) gst_mini_object_unref(GST_MINI_OBJECT_CAST(object_));
    }

    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    explicit GstMiniRef(T* object) : object_(object) {}
    T* object_ = nullptr;
};

using Element = GstRef<GstElement>;
using Message = GstMiniRef<GstMessage>;

struct GFreeDeleter {
    void operator()(gchar* text) const { g_free(text); }
};
using GCharPtr = std::unique_ptr<gchar, GFreeDeleter>;

struct GErrorDeleter {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPtr = std::unique_ptr<GError, GErrorDeleter>;

// Makes an element from a factory; null when the plugin is not installed.
Element makeElement(const char* factory, const char* name = nullptr);

// GStreamer is started once per process, from whichever adapter needs it first.
void ensureInitialized();

// A GLib string as a std::string; null gives "".
std::string text(const gchar* value);

// Points a sound sink at a device by the server's name; none is the system
// output, given as `systemOutput` (the server's default) where it is known.
// A sink with an open stream can only move to a named device, so without one
// it stays where it plays (the server moves the stream off a device that
// goes). Nothing changes when the sink is already there or has no device.
void pointSinkAt(GstElement* sink, const std::optional<std::string>& device,
                 const std::optional<std::string>& systemOutput);

} // namespace velarion::gst
