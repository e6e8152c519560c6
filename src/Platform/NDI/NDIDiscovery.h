#pragma once
// NDIDiscovery: the NDISourceFinder over the runtime. One finder is made on
// first use and kept, so later calls see what has already been found.
//
// Contract: as NDISourceFinder. A mutex serves the calls one at a time (the
// worker's queue); the finder is destroyed with the object.

#include "LiveEngine/ports/NDISourceFinder.h"

#include <memory>
#include <mutex>

struct vela_ndi_finder;

namespace velarion {

class NDIDiscovery final : public NDISourceFinder {
public:
    static constexpr const char* couldNotStartWords = "NDI source discovery could not start.";

    NDIDiscovery() = default;
    ~NDIDiscovery() override;
    NDIDiscovery(const NDIDiscovery&) = delete;
    NDIDiscovery& operator=(const NDIDiscovery&) = delete;

    std::vector<NDISource> sources(double waitForChangesSeconds) override;
    // The wait the runtime is given, in whole milliseconds.
    static unsigned waitMilliseconds(double seconds);

private:
    std::mutex queue_;
    vela_ndi_finder* finder_ = nullptr;
};

} // namespace velarion
