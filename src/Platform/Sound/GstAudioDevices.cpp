#include "Platform/Sound/GstAudioDevices.h"

#include "Platform/Gst/GstWorkers.h"

#include <mutex>

namespace velarion {

using gst::GstRef;

struct GstAudioDevices::Shared {
    Scheduler& scheduler;
    GstRef<GstDeviceMonitor> monitor;
    gst::BusWatch watch;

    mutable std::mutex mutex; // the list is rebuilt on the bus thread
    std::vector<AudioDevice> outputs;

    // Main thread only.
    std::function<void()> onChange;
    bool alive = true;

    explicit Shared(Scheduler& owner) : scheduler(owner) {}
};

namespace {

using Shared = GstAudioDevices::Shared;

// The sound server's own name for the output: what pulsesink's `device` takes.
std::string internalName(GstDevice* device) {
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(device), "internal-name") == nullptr) return {};
    gchar* name = nullptr;
    g_object_get(device, "internal-name", &name, nullptr);
    gst::GCharPtr owned(name);
    return gst::text(name);
}

bool isDefault(GstDevice* device) {
    GstStructure* properties = gst_device_get_properties(device);
    gboolean value = FALSE;
    if (properties != nullptr) {
        gst_structure_get_boolean(properties, "is-default", &value);
        gst_structure_free(properties);
    }
    return value != FALSE;
}

std::vector<AudioDevice> readOutputs(GstDeviceMonitor* monitor) {
    std::vector<AudioDevice> outputs;
    GList* devices = gst_device_monitor_get_devices(monitor);
    for (GList* item = devices; item != nullptr; item = item->next) {
        auto* device = GST_DEVICE(item->data);
        AudioDevice output;
        output.id = internalName(device);
        if (output.id.empty()) continue; // not a device pulsesink can name
        gst::GCharPtr name(gst_device_get_display_name(device));
        output.name = gst::text(name.get());
        output.isDefault = isDefault(device);
        outputs.push_back(std::move(output));
    }
    g_list_free_full(devices, gst_object_unref);
    return outputs;
}

void refresh(const std::shared_ptr<Shared>& shared) {
    std::vector<AudioDevice> outputs = readOutputs(shared->monitor.get());
    {
        std::lock_guard lock(shared->mutex);
        if (outputs == shared->outputs) return;
        shared->outputs = std::move(outputs);
    }
    std::weak_ptr<Shared> weak = shared;
    shared->scheduler.post([weak] {
        auto alive = weak.lock();
        if (alive && alive->alive && alive->onChange) alive->onChange();
    });
}

gboolean onMonitorMessage(GstBus*, GstMessage* message, gpointer data) {
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_DEVICE_ADDED:
    case GST_MESSAGE_DEVICE_REMOVED:
    case GST_MESSAGE_DEVICE_CHANGED:
        refresh(*static_cast<std::shared_ptr<Shared>*>(data));
        break;
    default:
        break;
    }
    return TRUE;
}

void deleteHandle(gpointer data) { delete static_cast<std::shared_ptr<Shared>*>(data); }

} // namespace

GstAudioDevices::GstAudioDevices(Scheduler& scheduler) : shared_(std::make_shared<Shared>(scheduler)) {
    gst::ensureInitialized();
    shared_->monitor = GstRef<GstDeviceMonitor>::adopt(gst_device_monitor_new());
    gst_device_monitor_add_filter(shared_->monitor.get(), "Audio/Sink", nullptr);
    auto bus = GstRef<GstBus>::adopt(gst_device_monitor_get_bus(shared_->monitor.get()));
    shared_->watch = gst::GstWorkers::shared().watch(bus.get(), onMonitorMessage,
                                                     new std::shared_ptr<Shared>(shared_), deleteHandle);
    if (gst_device_monitor_start(shared_->monitor.get())) {
        std::lock_guard lock(shared_->mutex);
        shared_->outputs = readOutputs(shared_->monitor.get());
    }
}

GstAudioDevices::~GstAudioDevices() {
    shared_->alive = false;
    shared_->onChange = nullptr;
    shared_->watch.remove();
    gst_device_monitor_stop(shared_->monitor.get());
}

std::vector<AudioDevice> GstAudioDevices::outputs() const {
    std::lock_guard lock(shared_->mutex);
    return shared_->outputs;
}

void GstAudioDevices::setOnChange(std::function<void()> onChange) { shared_->onChange = std::move(onChange); }

} // namespace velarion
