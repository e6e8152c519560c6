#include "LiveEngine/LiveEngine.h"

#include "LiveModel/CueGroups.h"
#include "LiveModel/LiveCheck.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {

template <class... Ts> struct Overloaded : Ts... { using Ts::operator()...; };
template <class... Ts> Overloaded(Ts...) -> Overloaded<Ts...>;

// Cancelled tasks are forgotten in batches, so the registry stays small over
// a long show without a sweep on every task.
constexpr std::size_t taskSweepThreshold = 256;

} // namespace

LiveEngine::LiveEngine(Show show, ShowPackage package, EnginePorts ports, bool controlsMusicApps)
    : ports_(ports),
      show_(std::move(show)),
      package_(std::move(package)),
      index_(show_),
      controlsMusicApps_(controlsMusicApps) {
    nextCueID_ = firstManualCue(std::nullopt);
    masterLevel_ = show_.audio.houseLevel;
    std::weak_ptr<int> life = life_;
    ports_.outputs.setOnHealthChange([this, life](const std::vector<OutputHealth>& health) {
        if (life.expired()) return;
        outputHealth_ = health;
        refresh();
    });
    outputHealth_ = ports_.outputs.health();
    ports_.outputs.configure(show_.outputs);
    publish();
    scheduleTick();
}

LiveEngine::~LiveEngine() {
    if (!isShutDown_) {
        ports_.outputs.setOnHealthChange({});
        for (auto& [serial, task] : tasks_) task.cancel();
    }
}

void LiveEngine::shutdown() {
    if (isShutDown_) return;
    tickTask_.cancel();
    panicTask_.cancel();
    stopEverything(0);
    publish();
    isShutDown_ = true;
    for (auto& [serial, task] : tasks_) task.cancel();
    tasks_.clear();
    ports_.outputs.setOnHealthChange({});
    ports_.outputs.closeAll();
}

// MARK: Commands

void LiveEngine::perform(const EngineCommand& command) {
    if (isShutDown_) return;
    std::visit(
        Overloaded{
            [&](const command::Fire& c) { fireCommand(c.cueID); },
            [&](const command::SetNext& c) { setNextCommand(c.cueID); },
            [&](const command::Stop& c) {
                if (findRun(c.runID)) stop(c.runID, 0.5);
            },
            [&](const command::SetMasterLevel& c) { setMasterLevel(c.level); },
            [&](const command::SetMuted& c) { setMuted(c.muted); },
            [&](const command::SetTalkOver& c) { setTalkOver(c.on); },
            [&](const command::AdjustTimer& c) {
                if (timer_) timer_->adjust(c.seconds);
            },
            [&](const command::ToggleTimerPause&) {
                if (!timer_) return;
                if (Run* run = findRun(timer_->runID()))
                    run->isPaused() ? resume(run->id) : pause(run->id);
                else
                    timer_->togglePause(ports_.scheduler.now(), ports_.scheduler.wallNow());
            },
            [&](const command::ResetTimer&) {
                if (timer_)
                    timer_->reset(ports_.scheduler.now(), ports_.scheduler.wallNow(),
                                  ports_.scheduler.calendar());
            },
            [&](const command::SendMessage& c) {
                sendMessage(c.text, c.target, std::nullopt, std::nullopt);
            },
            [&](const command::SelectProgramOutput& c) {
                ports_.outputs.selectProgramOutput(c.destination);
            },
            [&](const command::Clear& c) { clear(c.target, c.fadeSeconds, false); },
            [&](const command::ClearMessage& c) { clearMessage(c.target); },
            [&](const command::Go&) { go(); },
            [&](const command::ToggleHold&) {
                isHeld_ = !isHeld_;
                log(HistoryEntry::Kind::mode, isHeld_ ? "Follows paused" : "Follows resumed");
            },
            [&](const command::Pause& c) { pause(c.runID); },
            [&](const command::Resume& c) { resume(c.runID); },
            [&](const command::Seek& c) { seek(c.runID, c.seconds); },
            [&](const command::SetHolding& c) { setHolding(c.on); },
            [&](const command::PauseAll&) { pauseAll(); },
            [&](const command::ResumeAll&) { resumeAll(); },
            [&](const command::Panic&) { panic(); },
            [&](const command::GoToSlide& c) { goToSlide(c.index); },
            [&](const command::GoToDeckSlide& c) { showDeckSlide(c.cueID, c.index); },
            [&](const command::ShowDeckBackground& c) { showDeckBackground(c.cueID); },
            [&](const command::NextSlide&) { moveSlide(1); },
            [&](const command::PreviousSlide&) { moveSlide(-1); },
            [&](const command::SkipTrack&) { skipTrack(); },
        },
        command);
    publish();
}

void LiveEngine::fireCommand(const Uuid& cueID) {
    const Cue* cue = index_.cue(cueID);
    if (cue == nullptr || !cue->isEnabled) return;
    cancelPlaybackGroup();
    discardHeldFollowers("chose " + cue->name);
    fire(*cue);
}

void LiveEngine::setNextCommand(const std::optional<Uuid>& cueID) {
    if (!cueID) {
        discardHeldFollowers("set Next to the end of the show");
        cancelPlaybackGroup();
        nextCueID_.reset();
        return;
    }
    const Cue* cue = index_.cue(*cueID);
    if (cue == nullptr || !cue->isEnabled) return;
    discardHeldFollowers("set Next to " + cue->name);
    cancelPlaybackGroup();
    nextCueID_ = armTarget(show_, cue->id);
}

void LiveEngine::setMasterLevel(double level) {
    masterLevel_ = std::isnan(level) ? 0 : std::clamp(level, 0.0, 1.0);
    applyLevels();
}

void LiveEngine::setMuted(bool muted) {
    isMuted_ = muted;
    applyLevels();
    log(HistoryEntry::Kind::mode, muted ? "House muted" : "House unmuted");
}

void LiveEngine::setTalkOver(bool on) {
    if (dippers_.contains(talkOverID_) == on) return;
    const bool wasDipping = !dippers_.empty();
    if (on) dippers_.insert(talkOverID_);
    else dippers_.erase(talkOverID_);
    if (wasDipping != !dippers_.empty()) rampMusic(dipFadeSeconds);
    log(HistoryEntry::Kind::mode,
        on ? "Talk over — music dipped" : "Talk over ended — music back up");
}

void LiveEngine::applyLevels() {
    const double master = isMuted_ ? 0 : masterLevel_;
    for (Run* run : activeRuns()) {
        const bool dipped = !dippers_.empty() && index_.soundRole(run->cue) == SoundRole::music;
        for (const AudioPlayback* playback : run->allAudio()) {
            if (playback->isFadingOut) continue;
            playback->player->setVolume(master * (dipped ? dipLevel : 1.0) * playback->cueLevel);
        }
        const auto* video = std::get_if<VideoCue>(&run->cue.kind);
        if (video && run->video && !run->fadingOut) {
            if (auto ramp = videoRamps_.find(run->video->id()); ramp != videoRamps_.end()) {
                ramp->second.nextStep.cancel();
                videoRamps_.erase(ramp);
                videoRampTokens_.erase(run->video->id());
            }
            run->video->setVolume(master * (run->soundHandedOff ? 0 : video->level), false);
        }
    }
    if (master == 0) {
        for (auto& [id, ramp] : videoRamps_) ramp.nextStep.cancel();
        videoRamps_.clear();
        videoRampTokens_.clear();
        for (auto& [id, surface] : surfaceOwners_) surface->setVolume(0, false);
    }
}

// MARK: The log

void LiveEngine::log(HistoryEntry::Kind kind, const std::string& text) {
    history_.push_back(HistoryEntry{Uuid::random(), ports_.scheduler.wallNow(), kind, text});
    while (history_.size() > historyLimit) history_.pop_front();
    historyChanged_ = true;
}

void LiveEngine::note(const std::string& text) { log(HistoryEntry::Kind::mode, text); }
void LiveEngine::warn(const std::string& text) { log(HistoryEntry::Kind::warning, text); }

// MARK: Tasks

TaskHandle LiveEngine::after(double seconds, std::function<void()> task) {
    if (isShutDown_) return {};
    if (tasks_.size() >= taskSweepThreshold)
        std::erase_if(tasks_, [](const auto& item) { return item.second.isCancelled(); });
    const std::uint64_t serial = nextTaskSerial_++;
    std::weak_ptr<int> life = life_;
    TaskHandle handle =
        ports_.scheduler.after(seconds, [this, life, serial, task = std::move(task)] {
            if (life.expired()) return;
            tasks_.erase(serial);
            task();
        });
    tasks_.emplace(serial, handle);
    return handle;
}

void LiveEngine::post(std::function<void()> task) { after(0, std::move(task)); }

// MARK: Lookups

Run* LiveEngine::findRun(const Uuid& runID) {
    auto found = runs_.find(runID);
    return found == runs_.end() ? nullptr : &found->second;
}

const Run* LiveEngine::findRun(const Uuid& runID) const {
    auto found = runs_.find(runID);
    return found == runs_.end() ? nullptr : &found->second;
}

std::vector<Run*> LiveEngine::activeRuns() {
    std::vector<Run*> active;
    active.reserve(runOrder_.size());
    for (const Uuid& id : runOrder_)
        if (Run* run = findRun(id)) active.push_back(run);
    return active;
}

std::filesystem::path LiveEngine::mediaPath(const MediaItem& item) const {
    return package_.mediaURL(item.fileName);
}

std::optional<Uuid> LiveEngine::firstManualCue(const std::optional<Uuid>& after) const {
    const auto& cues = index_.cues();
    std::size_t start = 0;
    if (after)
        if (auto at = index_.position(*after)) start = *at + 1;
    for (std::size_t i = start; i < cues.size(); ++i) {
        const Cue& cue = *cues[i];
        if (!cue.isEnabled) continue;
        const bool isFirst = &cue == index_.firstEnabled();
        if (cue.follow == Follow::manual || isFirst) return cue.id;
    }
    for (std::size_t i = start; i < cues.size(); ++i)
        if (cues[i]->isEnabled) return cues[i]->id;
    return std::nullopt;
}

} // namespace velarion
