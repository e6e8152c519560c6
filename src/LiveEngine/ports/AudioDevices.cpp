#include "LiveEngine/ports/AudioDevices.h"

#include <algorithm>

namespace velarion {

bool AudioDevices::isPresent(const std::string& deviceUID) const {
    const auto list = outputs();
    return std::any_of(list.begin(), list.end(),
                       [&](const AudioDevice& device) { return device.id == deviceUID; });
}

std::optional<std::string> AudioDevices::name(const std::string& deviceUID) const {
    for (const AudioDevice& device : outputs())
        if (device.id == deviceUID) return device.name;
    return std::nullopt;
}

} // namespace velarion
