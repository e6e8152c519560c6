// Video cues of a live NDI source: the receiver shown as a video layer, its
// sound on the cue's device, its connection's changes in the log.
#include "LiveEngine/LiveEngine.h"

namespace velarion {

namespace {
constexpr const char* stoppedWords = "NDI input stopped.";
}

void LiveEngine::beginNetworkInput(Run& run, const NDISource& source) {
    const auto& video = std::get<VideoCue>(run.cue.kind);
    std::shared_ptr<NetworkInput> input;
    try {
        input = ports_.players.makeNetworkInput(Uuid::random(), source);
    } catch (const NDIError& error) {
        return fail(run.id, error.what());
    }
    // No duration: a live source has no natural end, the cue runs until stopped.
    run.video = input;
    run.networkInput = input;
    surfaceOwners_[input->id()] = input;
    input->setAudioOutputDeviceUID(deviceUID(AudioBus::house, run.cue));
    if (video.fadeIn > 0) {
        input->setVolume(0, false);
        rampVideo(input, video.level, video.fadeIn);
    } else {
        input->setVolume(master() * video.level, false);
    }
    const Uuid runID = run.id;
    applyMusicRule(run, video);
    Run* current = findRun(runID);
    if (current == nullptr) return;
    showPicture(*current, SceneVideoContent{input->id()}, video.layer, video.fadeIn, SceneScaling::fit);
    input->play();
}

void LiveEngine::endNetworkInput(Run& run, double fadeSeconds) {
    std::shared_ptr<NetworkInput> input = run.networkInput;
    std::weak_ptr<int> life = life_;
    auto close = [this, life, input] {
        input->pause();
        if (!life.expired() && !isShutDown_) note(stoppedWords);
    };
    if (fadeSeconds <= 0) return close();
    // The sound fades out with the picture; the surface lives until then.
    rampVideo(input, 0, fadeSeconds);
    after(fadeSeconds, close);
}

void LiveEngine::tickNetworkInput(Run& run) {
    const NDIReceiverStatus status = run.networkInput->receiverStatus();
    if (run.networkPhase == status.phase) return;
    const bool wasLost = run.networkPhase == NDIConnectionPhase::disconnected;
    run.networkPhase = status.phase;
    if (status.phase == NDIConnectionPhase::disconnected || status.phase == NDIConnectionPhase::failed)
        warn(run.cue.name + ": " + status.message);
    else if (status.phase == NDIConnectionPhase::connected && wasLost)
        note(run.cue.name + ": " + status.message);
}

} // namespace velarion
