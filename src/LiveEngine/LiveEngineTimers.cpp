// Timers, messages and what the Stage Display shows.

#include "LiveEngine/LiveEngine.h"

#include "LiveModel/TimeText.h"

#include <algorithm>

namespace velarion {

void LiveEngine::beginTimer(Run& run) {
    const Uuid runID = run.id;
    // One timer at most: a new one replaces the old, whose run and card go
    // with it rather than stay up frozen.
    if (timer_ && timer_->runID() != runID) {
        stop(timer_->runID(), 0.3);
        timer_.reset();
    }
    Run* current = findRun(runID);
    if (current == nullptr) return;
    beginNewTimer(*current);
}

void LiveEngine::beginNewTimer(Run& run) {
    const auto& timer = std::get<TimerCue>(run.cue.kind);
    timer_.emplace(run.id, run.cue, timer, ports_.scheduler.now(), ports_.scheduler.wallNow(),
                   ports_.scheduler.calendar());
    lastAudienceTimerText_.clear();
    lastAudienceTimerTitle_.clear();
    if (const auto* countdown = std::get_if<CountdownMode>(&timer.mode))
        run.durationSeconds = countdown->seconds;
    const CountdownLook look = timer.effectiveLook();
    if (timer.showOnAudience && look.layout == CountdownLayout::fullScreen &&
        !std::holds_alternative<backdrop::None>(look.backdrop)) {
        const Uuid runID = run.id;
        takeLayer(LayerKind::background, run, std::nullopt);
        if (findRun(runID)) showBackdrop(look.backdrop, runID);
    }
    updateAudienceTimer();
}

void LiveEngine::tickTimer() {
    if (!timer_) return;
    if (!timer_->isCountUp()) {
        if (timer_->finishedJustNow) timer_->finishedJustNow = false;
        if (!timer_->wasFinished &&
            timer_->value(ports_.scheduler.now(), ports_.scheduler.wallNow()) <= 0) {
            timer_->finishedJustNow = true;
            timer_->wasFinished = true;
            // The countdown stays up in overrun; only what waits on it moves on.
            if (const Run* run = findRun(timer_->runID())) {
                const Run copy = *run;
                groupRunFinished(copy, true);
                if (auto follower = afterFinish_.find(copy.id); follower != afterFinish_.end()) {
                    const Uuid followerID = follower->second;
                    afterFinish_.erase(follower);
                    releaseOrHold(followerID);
                }
            }
        }
    }
    updateAudienceTimer();
}

void LiveEngine::updateAudienceTimer() {
    if (!timer_ || !timer_->timer().showOnAudience) return;
    const double value = timer_->value(ports_.scheduler.now(), ports_.scheduler.wallNow());
    const std::string text =
        TimeText::duration(TimeText::timerSeconds(value, timer_->isCountUp()));
    const TimerCue& cue = timer_->timer();
    const std::string title = cue.title.value_or(timer_->cue().name);
    const Uuid runID = timer_->runID();
    const bool hasPicture = stack_.entry(runID, LayerKind::graphics) != nullptr;
    if (text == lastAudienceTimerText_ && title == lastAudienceTimerTitle_ && hasPicture) return;

    const CountdownLook look = cue.effectiveLook();
    std::optional<StillImage> card;
    if (look.layout == CountdownLayout::fullScreen) {
        std::optional<StillImage> logo;
        if (look.logoID) logo = loadImage(*look.logoID);
        card = ports_.cards.countdownFull(title, text, logo);
    } else {
        card = ports_.cards.countdown(title, text);
    }
    // A card that can't be drawn leaves the layer alone; the timer counts on.
    if (!card) return;
    if (stack_.runID(LayerKind::graphics) == runID)
        stack_.update(SceneStillContent{std::move(*card)}, LayerKind::graphics, runID);
    else
        stack_.show(SceneStillContent{std::move(*card)}, LayerKind::graphics, runID, 0,
                    SceneScaling::fit, std::nullopt);
    lastAudienceTimerText_ = text;
    lastAudienceTimerTitle_ = title;
}

std::optional<StillImage> LiveEngine::loadImage(const Uuid& mediaID) {
    const MediaItem* item = index_.media(mediaID);
    if (item == nullptr) return std::nullopt;
    return cachedPicture(mediaPath(*item).string());
}

std::optional<StillImage> LiveEngine::cachedPicture(const std::string& path) {
    if (auto cached = imageCache_.find(path)) return cached;
    std::optional<StillImage> loaded = ports_.images.load(path);
    if (loaded) imageCache_.insert(path, *loaded);
    return loaded;
}

void LiveEngine::beginMessage(Run& run) {
    const auto& message = std::get<MessageCue>(run.cue.kind);
    const Uuid runID = run.id;
    takeLayer(LayerKind::messages, run, std::nullopt);
    sendMessage(message.text, message.target, message.duration, runID);
    // The message stays after its cue has done its work.
    finish(runID, false, 0, true);
}

void LiveEngine::sendMessage(const std::string& text, MessageTarget target,
                             std::optional<double> durationSeconds, std::optional<Uuid> runID) {
    if (text.empty()) return clearMessage(target);
    if (auto task = messageTasks_.find(target); task != messageTasks_.end()) {
        task->second.cancel();
        messageTasks_.erase(task);
    }
    if (target == MessageTarget::stage) {
        stageMessage_ = text;
    } else {
        audienceMessage_ = text;
        const auto shownBy = stack_.runID(LayerKind::messages);
        if (!stack_.layerID(LayerKind::messages) || !shownBy || shownBy != runID)
            stack_.clear(LayerKind::messages, 0.4);
        if (std::optional<StillImage> banner = ports_.cards.banner(text))
            stack_.show(SceneStillContent{std::move(*banner)}, LayerKind::messages, runID, 0.4,
                        SceneScaling::fit, CueGeometry::full());
    }
    log(HistoryEntry::Kind::message,
        std::string(target == MessageTarget::stage ? "Stage" : "Audience") + " message: " + text);
    // A duration of 0 is not the same as none: the message goes at the next turn.
    if (durationSeconds)
        messageTasks_[target] = after(std::max(0.0, *durationSeconds), [this, target] {
            messageTasks_.erase(target);
            clearMessage(target);
            publish();
        });
}

void LiveEngine::clearMessage(MessageTarget target) {
    if (auto task = messageTasks_.find(target); task != messageTasks_.end()) {
        task->second.cancel();
        messageTasks_.erase(task);
    }
    if (target == MessageTarget::stage) {
        stageMessage_.reset();
    } else {
        audienceMessage_.reset();
        stack_.clear(LayerKind::messages, 0.4);
    }
}

ConfidenceState LiveEngine::confidence() const {
    ConfidenceState digest;
    if (lastFiredCueID_)
        if (const Section* section = index_.section(*lastFiredCueID_)) digest.sectionName = section->title;
    const Run* deckRun = activeDeckRunID_ ? findRun(*activeDeckRunID_) : nullptr;
    const DeckInfo* info = deckRun ? deck(*deckRun) : nullptr;
    if (info && deckRun->slideIndex) {
        const auto index = static_cast<std::size_t>(*deckRun->slideIndex);
        digest.slideNumber = *deckRun->slideIndex + 1;
        digest.slideCount = static_cast<int>(info->pages.size());
        if (index < info->pages.size())
            digest.currentSlide = package_.mediaURL(info->pages[index]).string();
        if (index + 1 < info->pages.size())
            digest.nextSlide = package_.mediaURL(info->pages[index + 1]).string();
        if (index < info->notes.size()) digest.notes = info->notes[index];
    } else if (lastFiredCueID_) {
        if (const Cue* cue = index_.cue(*lastFiredCueID_)) digest.notes = cue->notes;
    }
    digest.stageMessage = stageMessage_;
    return digest;
}

} // namespace velarion
