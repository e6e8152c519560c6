#include "Platform/Gst/GstHandles.h"

#include <mutex>

namespace velarion::gst {

void ensureInitialized() {
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

Element makeElement(const char* factory, const char* name) {
    ensureInitialized();
    return Element::adopt(gst_element_factory_make(factory, name));
}

std::string text(const gchar* value) { return value != nullptr ? std::string(value) : std::string(); }

void pointSinkAt(GstElement* sink, const std::optional<std::string>& device,
                 const std::optional<std::string>& systemOutput) {
    if (sink == nullptr || g_object_class_find_property(G_OBJECT_GET_CLASS(sink), "device") == nullptr) return;
    const std::optional<std::string> target = device ? device : systemOutput;
    gchar* raw = nullptr;
    g_object_get(sink, "device", &raw, nullptr);
    const std::optional<std::string> current = raw != nullptr ? std::optional<std::string>(raw) : std::nullopt;
    g_free(raw);
    if (current == target) return;
    GstState state = GST_STATE_NULL;
    gst_element_get_state(sink, &state, nullptr, 0);
    if (!target && state >= GST_STATE_PAUSED) return;
    g_object_set(sink, "device", target ? target->c_str() : nullptr, nullptr);
}

} // namespace velarion::gst
