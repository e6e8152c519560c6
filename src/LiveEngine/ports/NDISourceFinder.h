#pragma once
// NDISourceFinder: NDI sources found on the local network.
//
// Contract.
// - `sources` blocks for up to `waitForChangesSeconds` (limited to 0 … 5)
//   while discovery looks for changes: never call it on the main loop.
//   Any thread; calls are served one at a time.
// - The answer is sorted by name; what was found before stays known, so a
//   later short wait still lists it. Without a runtime the list is empty.
// - Throws NDIError (`unavailable`) when discovery can't start.

#include "LiveEngine/ports/NetworkFeeds.h"

#include <vector>

namespace velarion {

class NDISourceFinder {
public:
    static constexpr double longestWaitSeconds = 5;
    virtual ~NDISourceFinder() = default;
    virtual std::vector<NDISource> sources(double waitForChangesSeconds) = 0;
};

} // namespace velarion
