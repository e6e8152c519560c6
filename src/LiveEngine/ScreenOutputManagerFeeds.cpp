// The output manager's network feeds: runners kept in step with the setup,
// their pictures, their health rows and the sound of the videos they show.
#include "LiveEngine/ScreenOutputManager.h"

#include <algorithm>

namespace velarion {

namespace {

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

} // namespace

std::vector<std::string> ScreenOutputManager::runningFeedIDs() const {
    std::vector<std::string> ids;
    for (const auto& [id, runner] : feedRunners_) ids.push_back(id);
    return ids;
}

void ScreenOutputManager::rebuildFeeds() {
    if (!feedFactories_.makeFeedSender || !feedFactories_.makeFeedCompositor) return;
    const std::vector<NetworkFeed> wanted = setup_.effectiveFeeds();
    std::vector<std::string> retiring;
    for (const auto& entry : feedRunners_) {
        const NetworkFeed& running = entry.second->feed();
        const bool same = std::any_of(wanted.begin(), wanted.end(),
                                      [&](const NetworkFeed& feed) { return feed == running; });
        if (!same) retiring.push_back(entry.first);
    }
    for (const std::string& id : retiring) retireFeed(id);
    for (const NetworkFeed& feed : wanted) {
        const std::string id = feed.id.text();
        if (feedRunners_.contains(id)) continue;
        // The old sender of this name must be gone before the runtime lets a
        // new one take the name; its closing brings us back here.
        if (closingFeedTokens_.contains(trimmed(feed.name))) continue;
        try {
            auto sender = feedFactories_.makeFeedSender(feed);
            auto runner = std::make_unique<FeedRunner>(feed, std::move(sender), feedFactories_.makeFeedCompositor(feed),
                                                       feedFactories_.clock);
            feedErrors_.erase(id);
            feedRunners_.emplace(id, std::move(runner));
        } catch (const NDIError& error) {
            feedErrors_[id] = error.what();
        }
    }
    // A new feed's first picture is already of the scene, never a black one.
    applyFeeds();
    for (const auto& [id, runner] : feedRunners_) runner->start();
}

void ScreenOutputManager::applyFeeds() {
    if (feedRunners_.empty()) return;
    const SceneSurfaces surfaces = sceneSurfaces();
    const double now = scheduler_.now();
    for (const auto& [id, runner] : feedRunners_) {
        const NetworkFeed& feed = runner->feed();
        const LogicalScreen* shownOn = nullptr;
        for (const LogicalScreen& screen : screens_) {
            const auto* ndi = std::get_if<destination::Ndi>(&screen.destination);
            if (ndi && ndi->feedID == feed.id) shownOn = &screen;
        }
        // A feed behind a screen shows that screen's picture (its look,
        // identification and test pattern included).
        const OutputScene scene = shownOn ? *pictureOf(shownOn->id)
                                          : sceneShowing(routedScene(lastScene_, lastRoutes_, id), lastKinds_, feed.layers);
        runner->apply(scene, surfaces, now);
    }
}

void ScreenOutputManager::retireFeed(const std::string& feedID) {
    const auto found = feedRunners_.find(feedID);
    if (found == feedRunners_.end()) return;
    std::unique_ptr<FeedRunner> runner = std::move(found->second);
    feedRunners_.erase(found);
    runner->stop();
    const std::string name = trimmed(runner->feed().name);
    closingFeedTokens_.insert(name);
    std::weak_ptr<int> life = life_;
    Scheduler* scheduler = &scheduler_;
    runner->sender()->close([this, life, scheduler, name] {
        if (life.expired()) return;
        scheduler->post([this, life, name] {
            if (life.expired()) return;
            closingFeedTokens_.erase(name);
            if (closed_) return;
            rebuildFeeds();
            updateHealth(feedHealth());
        });
    });
}

void ScreenOutputManager::closeFeeds() {
    soundTimer_.cancel();
    for (auto& [id, surface] : tappedSurfaces_)
        if (const auto live = surface.lock()) live->setAudioSink({});
    tappedSurfaces_.clear();
    soundMix_->clear();
    std::vector<std::string> ids = runningFeedIDs();
    for (const std::string& id : ids) retireFeed(id);
}

void ScreenOutputManager::feedRow(OutputHealth& row, const Uuid& feedID) const {
    const std::string id = feedID.text();
    const auto runner = feedRunners_.find(id);
    if (runner != feedRunners_.end()) {
        row.sender = runner->second->sender()->status();
        row.isConnected = row.sender->isSending;
    }
    const auto& feeds = setup_.feeds;
    const auto feed = std::find_if(feeds.begin(), feeds.end(), [&](const NetworkFeed& f) { return f.id == feedID; });
    if (const auto error = feedErrors_.find(id); error != feedErrors_.end()) row.detail = error->second;
    else if (feed == feeds.end()) row.detail = missingFeedDetail;
    else if (!feed->hasValidFormat()) row.detail = invalidFeedFormatDetail;
    else if (row.sender) row.detail = row.sender->lastError;
    else row.detail = senderUnavailableDetail;
}

void ScreenOutputManager::updateSoundTaps() {
    std::set<SceneID> wanted;
    for (const auto& [id, runner] : feedRunners_) {
        if (!runner->feed().sendsSound.value_or(false)) continue;
        for (const SceneLayer& layer : lastScene_.layers) {
            const auto* video = std::get_if<SceneVideoContent>(&layer.content);
            if (video && lastSurfaces_.contains(video->surfaceID)) wanted.insert(video->surfaceID);
        }
    }
    for (auto tapped = tappedSurfaces_.begin(); tapped != tappedSurfaces_.end();) {
        const auto live = tapped->second.lock();
        if (live && wanted.contains(tapped->first)) {
            ++tapped;
            continue;
        }
        if (live) live->setAudioSink({});
        soundMix_->remove(tapped->first);
        tapped = tappedSurfaces_.erase(tapped);
    }
    for (const SceneID& id : wanted) {
        if (tappedSurfaces_.contains(id)) continue;
        const std::shared_ptr<VideoSurface>& surface = lastSurfaces_.at(id);
        std::weak_ptr<NDISoundMix> mix = soundMix_;
        surface->setAudioSink([mix, id](const VideoAudioBlock& block) {
            if (const auto live = mix.lock()) live->write(id, block);
        });
        tappedSurfaces_.emplace(id, surface);
    }
    if (tappedSurfaces_.empty()) {
        soundTimer_.cancel();
        soundTimer_ = {};
        soundMix_->clear();
    } else if (!soundTimer_.refersToTask() || soundTimer_.isCancelled()) {
        sendSound();
    }
}

void ScreenOutputManager::sendSound() {
    if (closed_ || tappedSurfaces_.empty()) {
        soundTimer_ = {};
        return;
    }
    if (auto frame = soundMix_->mix()) {
        for (const auto& [id, runner] : feedRunners_)
            if (runner->feed().sendsSound.value_or(false)) runner->sender()->sendAudio(*frame);
    }
    std::weak_ptr<int> life = life_;
    soundTimer_ = scheduler_.after(soundSeconds, [this, life] {
        if (!life.expired()) sendSound();
    });
}

} // namespace velarion
