#include "FakePlayers.h"

#include <algorithm>
#include <cmath>

namespace velarion::testing {

namespace {

constexpr double silenceDecibels = -160;

double clampedLevel(double level) {
    return std::clamp(level, 0.0, 1.0);
}

} // namespace

// ------------------------------------------------- FakeSoundFilePlayer

FakeSoundFilePlayer::FakeSoundFilePlayer(Scheduler& scheduler, double durationSeconds,
                                         std::shared_ptr<const DeviceUIDs> missingDevices)
    : scheduler_(scheduler), durationSeconds_(std::max(durationSeconds, 0.0)),
      missingDevices_(std::move(missingDevices)) {}

FakeSoundFilePlayer::Progress FakeSoundFilePlayer::progress() const {
    if (!playing_) return {anchorPositionSeconds_, loopsLeft_, false};
    const double playedSeconds = anchorPositionSeconds_ + (scheduler_.now() - anchorTimeSeconds_);
    if (durationSeconds_ <= 0) return {0, loopsLeft_, loopsLeft_ >= 0};
    const double wraps = std::floor(playedSeconds / durationSeconds_);
    if (loopsLeft_ < 0) return {playedSeconds - wraps * durationSeconds_, loopsLeft_, false};
    if (wraps > loopsLeft_) return {durationSeconds_, 0, true};
    const int wrapCount = static_cast<int>(wraps);
    return {playedSeconds - wraps * durationSeconds_, loopsLeft_ - wrapCount, false};
}

void FakeSoundFilePlayer::settle() {
    const Progress now = progress();
    anchorPositionSeconds_ = now.positionSeconds;
    anchorTimeSeconds_ = scheduler_.now();
    // A run that played out starts its loops afresh if played again.
    loopsLeft_ = now.ended ? loopCount_ : now.loopsLeft;
    if (now.ended) playing_ = false;
}

double FakeSoundFilePlayer::currentSeconds() const {
    return progress().positionSeconds;
}

void FakeSoundFilePlayer::setCurrentSeconds(double seconds) {
    settle();
    anchorPositionSeconds_ = std::clamp(seconds, 0.0, durationSeconds_);
}

void FakeSoundFilePlayer::play() {
    if (stopped_) return;
    settle();
    playing_ = true;
}

void FakeSoundFilePlayer::pause() {
    settle();
    playing_ = false;
}

void FakeSoundFilePlayer::stop() {
    settle();
    playing_ = false;
    stopped_ = true;
}

bool FakeSoundFilePlayer::isPlaying() const {
    return playing_ && !progress().ended;
}

double FakeSoundFilePlayer::volume() const {
    const double elapsed = scheduler_.now() - fadeStartSeconds_;
    if (fadeSeconds_ <= 0 || elapsed >= fadeSeconds_) return fadeToLevel_;
    return fadeFromLevel_ + (fadeToLevel_ - fadeFromLevel_) * (elapsed / fadeSeconds_);
}

void FakeSoundFilePlayer::setVolume(double level, double fadeSeconds) {
    fadeFromLevel_ = volume();
    fadeToLevel_ = clampedLevel(level);
    fadeStartSeconds_ = scheduler_.now();
    fadeSeconds_ = std::max(fadeSeconds, 0.0);
}

void FakeSoundFilePlayer::setLoopCount(int count) {
    settle();
    loopCount_ = count;
    loopsLeft_ = count;
}

bool FakeSoundFilePlayer::setDevice(const std::optional<std::string>& deviceUID) {
    device_ = deviceUID;
    return !deviceUID || !missingDevices_ || !missingDevices_->contains(*deviceUID);
}

void FakeSoundFilePlayer::updateMeters() {
    meteredDecibels_ = isPlaying() ? levelDecibels : silenceDecibels;
}

double FakeSoundFilePlayer::averagePowerDecibels(int /*channel*/) const {
    return meteredDecibels_;
}

// ---------------------------------------------------- FakeVideoSurface

FakeVideoSurface::FakeVideoSurface(Scheduler& scheduler, SceneID id, std::filesystem::path path,
                                   FakeVideoBehaviour behaviour)
    : scheduler_(scheduler), id_(id), path_(std::move(path)), behaviour_(std::move(behaviour)) {
    behaviour_.durationSeconds = std::max(behaviour_.durationSeconds, 0.0);
}

FakeVideoSurface::~FakeVideoSurface() {
    endTask_.cancel();
    for (const TaskHandle& task : prepareTasks_) task.cancel();
}

Scheduler::Task FakeVideoSurface::guarded(Scheduler::Task task) const {
    return [alive = std::weak_ptr<char>(lifetime_), task = std::move(task)] {
        if (alive.lock()) task();
    };
}

void FakeVideoSurface::prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) {
    const bool timesOut = behaviour_.prepareSeconds > timeoutSeconds;
    const double delaySeconds = timesOut ? timeoutSeconds : behaviour_.prepareSeconds;
    auto answer = [this, timesOut, done = std::move(done)] {
        VideoPreparation preparation =
            VideoSurfaceError{VideoSurfaceError::Case::notReadyInTime, {}};
        if (!timesOut && behaviour_.failure) {
            preparation = *behaviour_.failure;
        } else if (!timesOut) {
            info_ = VideoSurfaceInfo{1920, 1080, 30, behaviour_.durationSeconds, true};
            preparation = *info_;
        }
        if (done) done(preparation);
    };
    prepareTasks_.push_back(scheduler_.after(delaySeconds, guarded(std::move(answer))));
}

double FakeVideoSurface::currentSeconds() const {
    if (!playing_) return anchorPositionSeconds_;
    return std::min(anchorPositionSeconds_ + (scheduler_.now() - anchorTimeSeconds_),
                    behaviour_.durationSeconds);
}

void FakeVideoSurface::play() {
    anchorPositionSeconds_ = currentSeconds();
    anchorTimeSeconds_ = scheduler_.now();
    playing_ = true;
    scheduleEnd();
}

void FakeVideoSurface::pause() {
    anchorPositionSeconds_ = currentSeconds();
    anchorTimeSeconds_ = scheduler_.now();
    playing_ = false;
    cancelEnd();
}

void FakeVideoSurface::seek(double seconds, std::function<void()> done) {
    anchorPositionSeconds_ = std::clamp(seconds, 0.0, behaviour_.durationSeconds);
    anchorTimeSeconds_ = scheduler_.now();
    scheduleEnd();
    if (done) scheduler_.post(guarded(std::move(done)));
}

void FakeVideoSurface::setVolume(double level, bool muted) {
    volume_ = clampedLevel(level);
    muted_ = muted;
}

void FakeVideoSurface::setLoops(bool loops) {
    loops_ = loops;
    scheduleEnd();
}

void FakeVideoSurface::scheduleEnd() {
    cancelEnd();
    if (!playing_) return;
    // A looping empty file would end at once for ever.
    if (loops_ && behaviour_.durationSeconds <= 0) return;
    const std::uint64_t generation = endGeneration_;
    endTask_ =
        scheduler_.after(behaviour_.durationSeconds - currentSeconds(), guarded([this, generation] {
                             if (generation == endGeneration_) reachEnd();
                         }));
}

void FakeVideoSurface::cancelEnd() {
    ++endGeneration_;
    endTask_.cancel();
    endTask_ = {};
}

void FakeVideoSurface::reachEnd() {
    cancelEnd();
    anchorTimeSeconds_ = scheduler_.now();
    if (loops_ && behaviour_.durationSeconds > 0) {
        anchorPositionSeconds_ = 0;
        playing_ = true;
        scheduleEnd();
        return;
    }
    anchorPositionSeconds_ = behaviour_.durationSeconds;
    playing_ = false;
    // The callback may let go of this surface; touch nothing after it.
    const std::function<void()> onEnd = onEnd_;
    if (onEnd) onEnd();
}

// ---------------------------------------------------- FakeMediaPlayers

FakeMediaPlayers::FakeMediaPlayers(Scheduler& scheduler) : scheduler_(scheduler) {}

std::shared_ptr<SoundFilePlayer> FakeMediaPlayers::openSound(const std::filesystem::path& path) {
    soundRequests.push_back(path);
    return makeSound(path);
}

void FakeMediaPlayers::openSoundOffMainLoop(const std::filesystem::path& path, OpenedSound done) {
    offLoopSoundRequests.push_back(path);
    if (!offLoopOpenSeconds) return done(makeSound(path));
    scheduler_.after(*offLoopOpenSeconds, [this, path, done = std::move(done)] { done(makeSound(path)); });
}

std::shared_ptr<SoundFilePlayer> FakeMediaPlayers::makeSound(const std::filesystem::path& path) {
    if (missingPaths.contains(path)) return nullptr;
    std::optional<double> seconds = defaultSoundSeconds;
    if (auto known = soundDurations.find(path); known != soundDurations.end())
        seconds = known->second;
    if (!seconds) return nullptr;
    auto player = std::make_shared<FakeSoundFilePlayer>(scheduler_, *seconds, missingDevices_);
    sounds_.emplace_back(path, player);
    return player;
}

namespace {

std::uint32_t littleEndian32(const std::vector<std::uint8_t>& bytes, std::size_t at) {
    return static_cast<std::uint32_t>(bytes[at]) | static_cast<std::uint32_t>(bytes[at + 1]) << 8 |
           static_cast<std::uint32_t>(bytes[at + 2]) << 16 | static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

// The length of a canonical WAV image: its data chunk over its byte rate.
std::optional<double> wavSeconds(const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() < 44 || std::string(bytes.begin(), bytes.begin() + 4) != "RIFF") return std::nullopt;
    const std::uint32_t byteRate = littleEndian32(bytes, 28);
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const std::uint32_t size = littleEndian32(bytes, at + 4);
        if (std::string(bytes.begin() + at, bytes.begin() + at + 4) == "data" && byteRate > 0)
            return static_cast<double>(size) / byteRate;
        at += 8 + size;
    }
    return std::nullopt;
}

} // namespace

std::shared_ptr<SoundFilePlayer> FakeMediaPlayers::openSoundData(std::vector<std::uint8_t> bytes) {
    const std::optional<double> seconds = wavSeconds(bytes);
    soundData.push_back(std::move(bytes));
    if (!seconds) return nullptr;
    auto player = std::make_shared<FakeSoundFilePlayer>(scheduler_, *seconds, missingDevices_);
    sounds_.emplace_back(std::filesystem::path(), player);
    return player;
}

std::shared_ptr<VideoSurface>
FakeMediaPlayers::makeVideoSurface(const SceneID& id, const std::filesystem::path& path) {
    auto known = videoBehaviours.find(path);
    auto surface = std::make_shared<FakeVideoSurface>(
        scheduler_, id, path,
        known != videoBehaviours.end() ? known->second : defaultVideoBehaviour);
    surfaces_.push_back(surface);
    return surface;
}

std::vector<std::shared_ptr<FakeSoundFilePlayer>> FakeMediaPlayers::sounds() const {
    std::vector<std::shared_ptr<FakeSoundFilePlayer>> living;
    for (const auto& made : sounds_) living.push_back(made.second.lock());
    return living;
}

std::vector<std::shared_ptr<FakeVideoSurface>> FakeMediaPlayers::surfaces() const {
    std::vector<std::shared_ptr<FakeVideoSurface>> living;
    for (const auto& made : surfaces_) living.push_back(made.lock());
    return living;
}

std::shared_ptr<FakeSoundFilePlayer>
FakeMediaPlayers::sound(const std::filesystem::path& path) const {
    for (auto made = sounds_.rbegin(); made != sounds_.rend(); ++made) {
        if (made->first != path) continue;
        if (auto player = made->second.lock()) return player;
    }
    return nullptr;
}

std::shared_ptr<FakeVideoSurface>
FakeMediaPlayers::surface(const std::filesystem::path& path) const {
    for (auto made = surfaces_.rbegin(); made != surfaces_.rend(); ++made) {
        auto surface = made->lock();
        if (surface && surface->path() == path) return surface;
    }
    return nullptr;
}

std::shared_ptr<FakeVideoSurface> FakeMediaPlayers::surface(const SceneID& id) const {
    for (auto made = surfaces_.rbegin(); made != surfaces_.rend(); ++made) {
        auto surface = made->lock();
        if (surface && surface->id() == id) return surface;
    }
    return nullptr;
}

} // namespace velarion::testing
