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

} // namespace velarion::gst
