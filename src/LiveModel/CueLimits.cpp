#include "LiveModel/CueLimits.h"

#include <algorithm>
#include <cmath>

namespace velarion::cueLimits {

namespace {

double within(double value, double low, double high) { return std::isfinite(value) ? std::clamp(value, low, high) : low; }
double atLeastZero(double value) { return std::isfinite(value) ? std::max(value, 0.0) : 0.0; }
void atLeastZero(std::optional<double>& value) {
    if (value) value = atLeastZero(*value);
}

struct Limit {
    void operator()(SlidesCue& cue) const {
        cue.startSlide = std::max(cue.startSlide, 0);
        if (cue.dissolve) cue.dissolve = within(*cue.dissolve, 0, longestSlideDissolveSeconds);
    }
    void operator()(VideoCue& cue) const {
        cue.inPoint = atLeastZero(cue.inPoint);
        atLeastZero(cue.outPoint);
        cue.fadeIn = atLeastZero(cue.fadeIn);
        cue.fadeOut = atLeastZero(cue.fadeOut);
        cue.level = within(cue.level, 0, 1);
    }
    void operator()(ImageCue& cue) const { cue.fadeIn = atLeastZero(cue.fadeIn); }
    void operator()(AudioCue& cue) const {
        cue.inPoint = atLeastZero(cue.inPoint);
        atLeastZero(cue.outPoint);
        cue.fadeIn = atLeastZero(cue.fadeIn);
        cue.fadeOut = atLeastZero(cue.fadeOut);
        cue.level = within(cue.level, 0, 1);
    }
    void operator()(PlaylistCue& cue) const {
        cue.crossfade = within(cue.crossfade, 0, longestPlaylistCrossfadeSeconds);
        cue.fadeIn = atLeastZero(cue.fadeIn);
        cue.level = within(cue.level, 0, 1);
    }
    void operator()(StreamTrackCue& cue) const {
        cue.startAt = atLeastZero(cue.startAt);
        cue.fadeIn = atLeastZero(cue.fadeIn);
        atLeastZero(cue.playFor);
        cue.fadeOut = atLeastZero(cue.fadeOut);
        cue.level = std::clamp(cue.level, 0, 100);
    }
    void operator()(StreamPlaylistCue& cue) const {
        cue.fadeIn = atLeastZero(cue.fadeIn);
        cue.level = std::clamp(cue.level, 0, 100);
    }
    void operator()(TimerCue& cue) const {
        cue.warnAt = atLeastZero(cue.warnAt);
        if (auto* countdown = std::get_if<CountdownMode>(&cue.mode)) countdown->seconds = atLeastZero(countdown->seconds);
        if (auto* countTo = std::get_if<CountToMode>(&cue.mode))
            countTo->minuteOfDay = std::clamp(countTo->minuteOfDay, 0, 24 * 60 - 1);
    }
    void operator()(MessageCue& cue) const { atLeastZero(cue.duration); }
    void operator()(GraphicCue& cue) const { atLeastZero(cue.duration); }
    void operator()(ClearCue& cue) const { cue.fade = atLeastZero(cue.fade); }
};

} // namespace

Cue limited(Cue cue) {
    std::visit(Limit{}, cue.kind);
    cue.preWait = atLeastZero(cue.preWait);
    if (cue.geometry) {
        const CueGeometry& g = *cue.geometry;
        cue.geometry = CueGeometry::make(g.scale, g.x, g.y, std::isfinite(g.rotation) ? g.rotation : 0, g.opacity);
    }
    return cue;
}

} // namespace velarion::cueLimits
