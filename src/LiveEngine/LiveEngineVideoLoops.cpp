// Crossfading video loops: before each pass ends, a second surface of the
// same file starts at the in point under a dissolve, its sound comes up as
// the old one's goes down, and the old surface leaves when the overlap is
// over. The same cycle as crossfading sound loops, with the same constants.

#include "LiveEngine/LiveEngine.h"

#include <algorithm>

namespace velarion {

namespace {

struct LoopTiming {
    double overlapSeconds = 0;
    double triggerSeconds = 0; // into the pass
};

// None when the pass is too short to overlap: it then plays once.
std::optional<LoopTiming> loopTiming(double inPoint, double end) {
    const double length = end - inPoint;
    if (!(length > 0.6)) return std::nullopt;
    const double overlap = std::clamp(length * 0.25, 0.3, 2.0);
    return LoopTiming{overlap, length - overlap};
}

} // namespace

void LiveEngine::crossfadeVideoLoop(const Uuid& runID) {
    Run* run = findRun(runID);
    if (run == nullptr || !run->video || !run->video->info()) return;
    const auto& video = std::get<VideoCue>(run->cue.kind);
    const double duration = run->video->info()->durationSeconds;
    const auto timing = loopTiming(video.inPoint, std::min(video.outPoint.value_or(duration), duration));
    if (!timing) return;
    const double position = run->video->currentSeconds() - video.inPoint;
    const double wait = std::max(position < 0 ? timing->triggerSeconds : timing->triggerSeconds - position, 0.1);
    const double prepareAt = std::max(wait - loopPrepareLeadSeconds, 0.1);
    const double swapAt = ports_.scheduler.now() + wait;
    const double overlap = timing->overlapSeconds;
    run->loopTask = after(prepareAt, [this, runID, overlap, swapAt] {
        Run* looping = findRun(runID);
        if (looping == nullptr || looping->fadingOut || !looping->video) return;
        if (looping->isPaused()) {
            looping->loopTask = after(0.1, [this, runID] { crossfadeVideoLoop(runID); });
            return;
        }
        // This task's own handle: a stop or Panic cancels it, and the
        // preparation below must not arm a swap after that.
        const TaskHandle armed = looping->loopTask;
        const std::shared_ptr<VideoSurface> old = looping->video;
        std::shared_ptr<VideoSurface> next = ports_.players.makeVideoSurface(Uuid::random(), old->path());
        next->setLoops(false);
        next->setVolume(0, false); // silent from its preroll on; the swap ramps it up
        next->setAudioOutputDeviceUID(old->audioOutputDeviceUID());
        watchVideoEnd(next, runID);
        std::weak_ptr<int> life = life_;
        next->prepare(videoPrepareTimeoutSeconds, [this, life, runID, old, next, overlap, swapAt,
                                                   armed](VideoPreparation result) {
            if (life.expired() || isShutDown_) return;
            Run* current = findRun(runID);
            // Stopped, or moved on, while it prepared; or the file failed:
            // this pass then plays out and the run ends with it.
            if (current == nullptr || current->video != old || current->fadingOut || armed.isCancelled() ||
                std::holds_alternative<VideoSurfaceError>(result))
                return;
            current->loopTask = after(swapAt - ports_.scheduler.now(), [this, runID, old, next, overlap] {
                Run* swapping = findRun(runID);
                if (swapping == nullptr || swapping->video != old || swapping->fadingOut) return;
                // Paused at the seam: no new pass; the cycle starts again
                // from where the picture stands once it resumes.
                if (swapping->isPaused()) {
                    next->pause();
                    swapping->loopTask = after(0.1, [this, runID] { crossfadeVideoLoop(runID); });
                    return;
                }
                swapLoopSurface(runID, next, overlap);
            });
        });
    });
}

void LiveEngine::swapLoopSurface(const Uuid& runID, const std::shared_ptr<VideoSurface>& next,
                                 double overlapSeconds) {
    Run& run = *findRun(runID);
    const auto& video = std::get<VideoCue>(run.cue.kind);
    const std::shared_ptr<VideoSurface> old = run.video;
    const VisualStack::Entry* shown = stack_.entry(runID, video.layer);
    const std::optional<Uuid> oldLayer = shown ? std::optional<Uuid>(shown->layerID) : std::nullopt;

    // Published from now on: the outputs draw it as soon as it has a frame.
    surfaceOwners_[next->id()] = next;
    next->seek(video.inPoint);
    stack_.showOver(SceneVideoContent{next->id()}, video.layer, runID, overlapSeconds, SceneScaling::fit,
                    geometry(run));
    next->play();
    run.video = next;
    rampVideo(next, run.soundHandedOff ? 0 : video.level, overlapSeconds);
    rampVideo(old, 0, overlapSeconds);
    run.tasks.push_back(after(overlapSeconds, [this, old, oldLayer] {
        old->pause();
        if (oldLayer) stack_.clearLayer(*oldLayer, 0);
        surfaceOwners_.erase(old->id());
        publish();
    }));
    publish();
    crossfadeVideoLoop(runID);
}

} // namespace velarion
