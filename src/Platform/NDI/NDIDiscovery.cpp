#include "Platform/NDI/NDIDiscovery.h"

#include "Platform/NDI/CNDIBridge.h"
#include "Platform/NDI/NDILibrary.h"

#include <algorithm>
#include <cmath>

namespace velarion {

NDIDiscovery::~NDIDiscovery() {
    std::lock_guard guard(queue_);
    vela_ndi_find_destroy(finder_);
}

unsigned NDIDiscovery::waitMilliseconds(double seconds) {
    const double limited = std::clamp(std::isfinite(seconds) ? seconds : 0.0, 0.0, longestWaitSeconds);
    return static_cast<unsigned>(std::lround(limited * 1000));
}

std::vector<NDISource> NDIDiscovery::sources(double waitForChangesSeconds) {
    if (!NDILibrary::status().isAvailable) return {};
    std::lock_guard guard(queue_);
    if (!finder_) finder_ = vela_ndi_find_create();
    if (!finder_) throw NDIError(NDIError::Case::unavailable, couldNotStartWords);
    const int count = vela_ndi_find_sources(finder_, waitMilliseconds(waitForChangesSeconds));
    std::vector<NDISource> found;
    for (int i = 0; i < count; ++i) {
        const char* name = vela_ndi_find_name(finder_, i);
        if (!name || !*name) continue;
        NDISource source{name, std::nullopt};
        if (const char* url = vela_ndi_find_url(finder_, i); url && *url) source.url = url;
        found.push_back(std::move(source));
    }
    std::sort(found.begin(), found.end(), [](const NDISource& a, const NDISource& b) { return a.name < b.name; });
    return found;
}

} // namespace velarion
