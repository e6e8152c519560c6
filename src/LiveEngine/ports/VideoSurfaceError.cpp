#include "LiveEngine/ports/VideoSurface.h"

namespace velarion {

std::string VideoSurfaceError::text() const {
    switch (error) {
    case Case::loadFailed: return reason.empty() ? "The video failed to load" : reason;
    case Case::noPlayableDuration: return "The video has no playable length";
    case Case::noVideoTrack: return "The file has no video picture";
    case Case::notReadyInTime: return "The video wasn't ready in time";
    }
    return "The video failed to load";
}

} // namespace velarion
