#include "UnplayableVideo.h"

#include <algorithm>

namespace velarion {

UnplayableVideo::UnplayableVideo(Scheduler& scheduler, SceneID id, std::filesystem::path path)
    : scheduler_(scheduler), id_(id), path_(std::move(path)) {}

void UnplayableVideo::prepare(double, std::function<void(VideoPreparation)> done) {
    std::weak_ptr<int> life = life_;
    scheduler_.post([life, done = std::move(done)] {
        if (!life.expired()) done(VideoSurfaceError{VideoSurfaceError::Case::loadFailed, reason});
    });
}

void UnplayableVideo::seek(double, std::function<void()> done) {
    if (!done) return;
    std::weak_ptr<int> life = life_;
    scheduler_.post([life, done = std::move(done)] {
        if (!life.expired()) done();
    });
}

void UnplayableVideo::setVolume(double level, bool muted) {
    volume_ = std::clamp(level, 0.0, 1.0);
    muted_ = muted;
}

} // namespace velarion
