#include "LiveEngine/Run.h"

#include <algorithm>

namespace velarion {

double Run::wallElapsed(double now) const {
    const double until = pausedAt.value_or(now);
    return std::max(0.0, until - started - pausedTotalSeconds - cue.preWait);
}

std::vector<const AudioPlayback*> Run::allAudio() const {
    std::vector<const AudioPlayback*> all;
    if (audio) all.push_back(&*audio);
    for (const AudioPlayback& tail : audioTails) all.push_back(&tail);
    return all;
}

void Run::cancelTasks() {
    loopTask.cancel();
    loopTask = {};
    if (streamStartup) streamStartup->cancel();
    streamStartup.reset();
    for (const TaskHandle& task : tasks) task.cancel();
    tasks.clear();
}

} // namespace velarion
