#include "LiveEngine/MediaPreviewPlayer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velarion {

std::optional<PreviewSeekQueue::Request> PreviewSeekQueue::request(Request wish) {
    if (isSeeking) {
        pending = wish;
        return std::nullopt;
    }
    isSeeking = true;
    return wish;
}

std::optional<PreviewSeekQueue::Request> PreviewSeekQueue::finished() {
    if (!pending) {
        isSeeking = false;
        return std::nullopt;
    }
    return std::exchange(pending, std::nullopt);
}

MediaPreviewPlayer::MediaPreviewPlayer(MediaPlayers& players, Scheduler& scheduler, const AudioDevices* devices)
    : players_(players), scheduler_(scheduler), devices_(devices) {}

MediaPreviewPlayer::~MediaPreviewPlayer() {
    if (player_) player_->stop();
}

void MediaPreviewPlayer::changed() {
    if (onChange) onChange();
}

void MediaPreviewPlayer::fail(std::string text) {
    error_ = std::move(text);
    isPlaying_ = false;
    if (player_) player_->pause();
    changed();
}

void MediaPreviewPlayer::load(const std::filesystem::path& file, std::optional<double> knownDuration) {
    generation_ = Uuid::random();
    if (player_) player_->stop();
    player_.reset();
    seeks_ = {};
    playAfterSeek_ = false;
    isPlaying_ = false;
    position_ = 0;
    duration_ = knownDuration.value_or(0);
    error_.reset();
    if (!players_.fileExists(file)) {
        isLoading_ = false;
        return fail(missingFile);
    }
    isLoading_ = true;
    changed();
    const std::weak_ptr<int> alive = life_;
    players_.openSoundOffMainLoop(file, [this, alive, generation = generation_, scheduler = &scheduler_](
                                            std::shared_ptr<SoundFilePlayer> player) {
        scheduler->post([this, alive, generation, player = std::move(player)]() mutable {
            if (alive.expired()) {
                if (player) player->stop();
                return;
            }
            opened(generation, std::move(player));
        });
    });
}

void MediaPreviewPlayer::opened(const Uuid& generation, std::shared_ptr<SoundFilePlayer> player) {
    if (generation != generation_) {
        if (player) player->stop();
        return;
    }
    isLoading_ = false;
    if (!player) return fail("Couldn’t preview this file: it can't be played.");
    player_ = std::move(player);
    if (const double length = player_->durationSeconds(); std::isfinite(length) && length > 0) duration_ = length;
    applySound();
    changed();
}

void MediaPreviewPlayer::applySound() {
    if (!player_) return;
    if (!device_) {
        player_->setVolume(0);
        return;
    }
    bool present = !devices_;
    if (devices_) {
        const std::vector<AudioDevice> outputs = devices_->outputs();
        present = std::any_of(outputs.begin(), outputs.end(), [&](const AudioDevice& device) { return device.id == *device_; });
    }
    if (!present) {
        player_->setVolume(0);
        return fail(headphonesGone);
    }
    player_->setDevice(device_);
    player_->setVolume(volume_);
}

void MediaPreviewPlayer::setSound(const std::optional<std::string>& deviceUID, double volume) {
    device_ = deviceUID;
    volume_ = std::clamp(volume, 0.0, 1.0);
    applySound();
    changed();
}

void MediaPreviewPlayer::play() {
    if (!player_ || isPlaying_) return;
    if (duration_ > 0 && position_ >= duration_ - 0.01) player_->setCurrentSeconds(0);
    error_.reset();
    player_->play();
    isPlaying_ = true;
    changed();
}

void MediaPreviewPlayer::pause() {
    playAfterSeek_ = false;
    if (!player_ || !isPlaying_) return;
    player_->pause();
    position_ = player_->currentSeconds();
    isPlaying_ = false;
    changed();
}

void MediaPreviewPlayer::stop() {
    playAfterSeek_ = false;
    if (!player_) return;
    player_->pause();
    player_->setCurrentSeconds(0);
    position_ = 0;
    isPlaying_ = false;
    changed();
}

void MediaPreviewPlayer::seek(double seconds, bool precise) {
    if (!player_) return;
    if (isPlaying_) {
        playAfterSeek_ = true;
        player_->pause();
        isPlaying_ = false;
    }
    const double clamped = std::clamp(std::isfinite(seconds) ? seconds : 0.0, 0.0, duration_ > 0 ? duration_ : 0.0);
    if (const auto now = seeks_.request({clamped, precise})) runSeek(*now);
    changed();
}

void MediaPreviewPlayer::runSeek(PreviewSeekQueue::Request request) {
    // The player's seek tolerance is its own; a precise wish lands exactly
    // where it was asked.
    player_->setCurrentSeconds(request.seconds);
    position_ = request.seconds;
    // The seek ends on a later turn of the main loop, so that a drag's many
    // wishes in between collapse into the newest.
    scheduler_.post([this, alive = std::weak_ptr<int>(life_), generation = generation_] {
        if (alive.expired() || generation != generation_ || !player_) return;
        if (const auto next = seeks_.finished()) return runSeek(*next);
        if (std::exchange(playAfterSeek_, false)) play();
        changed();
    });
}

void MediaPreviewPlayer::tick() {
    if (!player_ || !isPlaying_) return;
    position_ = player_->currentSeconds();
    if (!player_->failure().empty()) return fail(stoppedEarly);
    if (!player_->isPlaying()) {
        // The end: playing stops and the position stays there.
        isPlaying_ = false;
        position_ = duration_;
    }
    changed();
}

} // namespace velarion
